#pragma once

#include <cstddef>
#include <cstdint>

#include "crypto/aes.h"

// Runs of whole blocks in CBC mode on the fastest path this processor has. `chain` is the previous
// ciphertext block, in and out.

/// Encrypts `blocks` blocks from `in` to `out`, which do not overlap.
void aes_cbc_encrypt_blocks(const AesKeySchedule& encryption, std::uint8_t* chain,
                            const std::uint8_t* in, std::uint8_t* out, std::size_t blocks);

/// Decrypts `blocks` blocks in place.
void aes_cbc_decrypt_blocks(const AesKeySchedule& decryption, std::uint8_t* chain,
                            std::uint8_t* in_out, std::size_t blocks);
