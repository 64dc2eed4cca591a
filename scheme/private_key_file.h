#pragma once

#include <cstdint>

#include "crypto/status.h"

// Private keys lie on disk encrypted with AES-CBC, without padding, under fixed parameters of the
// program: mode 1 (AES-128) for scheme 1.1, any other mode (AES-256) for scheme 2.1.

inline constexpr std::int32_t key_file_mode_sb10 = 1;
inline constexpr std::int32_t key_file_mode_sb20 = 2;

/// Encrypts `size` bytes in place; a size that is no multiple of 16 leaves them as they were.
/// @return 0; CIPHER_ERR_SETUP; CIPHER_ERR_RUN.
Status do_PrivateKey_Encrypt(std::int32_t mode, std::uint8_t* buffer, std::uint32_t size);

/// Decrypts `size` bytes in place; after a failure they are partly decrypted.
/// @return 0; CIPHER_ERR_SETUP; CIPHER_ERR_RUN.
Status do_PrivateKey_Decrypt(std::int32_t mode, std::uint8_t* buffer, std::uint32_t size);
