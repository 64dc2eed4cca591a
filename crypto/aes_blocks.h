#pragma once

#include <cstddef>
#include <cstdint>

#include "crypto/aes.h"

// Runs of whole blocks in CBC mode. `chain` is the previous ciphertext block (16 bytes), in
// and out.

/// Encrypts `blocks` blocks from `in` to `out`, which do not overlap, on the fastest path this
/// processor has; then the same in portable code and by AES-NI (only where crypto_paths() says so).
void aes_cbc_encrypt_blocks(const AesKeySchedule& encryption, std::uint8_t* chain,
                            const std::uint8_t* in, std::uint8_t* out, std::size_t blocks);
void aes_cbc_encrypt_blocks_portable(const AesKeySchedule& encryption, std::uint8_t* chain,
                                     const std::uint8_t* in, std::uint8_t* out, std::size_t blocks);
void aes_cbc_encrypt_blocks_x86(const AesKeySchedule& encryption, std::uint8_t* chain,
                                const std::uint8_t* in, std::uint8_t* out, std::size_t blocks);

/// Decrypts `blocks` blocks in place, likewise.
void aes_cbc_decrypt_blocks(const AesKeySchedule& decryption, std::uint8_t* chain,
                            std::uint8_t* in_out, std::size_t blocks);
void aes_cbc_decrypt_blocks_portable(const AesKeySchedule& decryption, std::uint8_t* chain,
                                     std::uint8_t* in_out, std::size_t blocks);
void aes_cbc_decrypt_blocks_x86(const AesKeySchedule& decryption, std::uint8_t* chain,
                                std::uint8_t* in_out, std::size_t blocks);
