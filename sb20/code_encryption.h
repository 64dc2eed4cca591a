#pragma once

#include <cstdint>

#include "crypto/aes_cbc.h"
#include "crypto/status.h"
#include "sb20/records.h"

// Stage-1 code of scheme 2.1 is AES-128-CBC encrypted without padding under parameters that only
// the fused device can derive: key = first 16 bytes of (hmac XOR eFuse data), IV = first 16 bytes
// of SHA-1 over the root public key. Decryption has no integrity check of its own.

/// Derives key and IV. `*keyLen` and `*ivLen` are 16.
/// @return 0; CIPHER_ERR_PARAMETER for a null output or another length.
Status Make_AES_Param(const std::uint8_t* eFuse, std::uint32_t eFuseLen,
                      const SB20_CONTEXT* context, std::uint8_t* keyOut,
                      const std::uint32_t* keyLen, std::uint8_t* ivOut, const std::uint32_t* ivLen);

namespace sealwright {

/// Sets up a cipher with the code's key and the IV of its first block.
/// @return 0; CIPHER_ERR_PARAMETER; CIPHER_ERR_SETUP.
[[nodiscard]] Status set_up_code_cipher(AesCbcContext& cipher, const std::uint8_t* eFuse,
                                        std::uint32_t eFuseLen, const SB20_CONTEXT* context);

}  // namespace sealwright

/// Encrypts `codeLen` bytes in place, whole blocks only, and proves the result by decrypting it.
/// On a failure the code is still plaintext.
/// @return 0; CIPHER_ERR_PARAMETER; CIPHER_ERR_SETUP; CIPHER_ERR_RUN; CIPHER_ERR_DECRYPT.
Status Encrypt_Code(const std::uint8_t* eFuse, std::uint32_t eFuseLen, const SB20_CONTEXT* context,
                    std::uint8_t* code, std::uint32_t codeLen);

/// Decrypts `codeLen` bytes in place.
/// @return 0; CIPHER_ERR_PARAMETER; CIPHER_ERR_SETUP; CIPHER_ERR_DECRYPT.
Status Decrypt_Code(const std::uint8_t* eFuse, std::uint32_t eFuseLen, const SB20_CONTEXT* context,
                    std::uint8_t* code, std::uint32_t codeLen);
