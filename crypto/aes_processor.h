#pragma once

#include <cstddef>
#include <cstdint>

#include "crypto/aes.h"

// AES in CBC mode by the processor's own instructions, x86 or Arm: only where has_cipher_paths and
// crypto_paths().aes are set.

namespace sealwright {

/// Encrypts `blocks` whole blocks from `in` to `out`, which do not overlap. `chain` is the previous
/// ciphertext block (16 bytes), in and out.
void aes_cbc_encrypt_by_processor(const AesKeySchedule& encryption, std::uint8_t* chain,
                                  const std::uint8_t* in, std::uint8_t* out, std::size_t blocks);

/// Decrypts `blocks` whole blocks in place, likewise.
void aes_cbc_decrypt_by_processor(const AesKeySchedule& decryption, std::uint8_t* chain,
                                  std::uint8_t* in_out, std::size_t blocks);

}  // namespace sealwright
