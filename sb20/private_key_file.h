#pragma once

#include <cstddef>
#include <cstdint>

#include "crypto/status.h"

// Private keys lie on disk encrypted with AES-CBC, without padding, under fixed parameters of the
// program: mode 1 (AES-128) for version 1.1 files, any other mode (AES-256) for version 2.1 files.

inline constexpr std::int32_t key_file_mode_v11 = 1;
inline constexpr std::int32_t key_file_mode_v21 = 2;

/// Private-key file of a 1024-bit stage-2 pair, before encryption.
struct Sb10PrivateKeyFile {
  std::uint32_t header_length;  // 28
  char text[24];                // "1.0, Priv, RSA-1024, CRT", no terminator
  std::uint32_t zero;
  std::uint32_t items_length;  // 604
  std::uint8_t items[604];     // n, d, p, q, dP, dQ, qInv, each (u32 length, bytes) at full width
};
static_assert(sizeof(Sb10PrivateKeyFile) == 640);
static_assert(offsetof(Sb10PrivateKeyFile, items) == 36);

/// Encrypts `size` bytes in place; a size that is no multiple of 16 leaves them as they were.
/// @return 0; CIPHER_ERR_SETUP; CIPHER_ERR_RUN.
Status do_PrivateKey_Encrypt(std::int32_t mode, std::uint8_t* buffer, std::uint32_t size);

/// Decrypts `size` bytes in place; after a failure they are partly decrypted.
/// @return 0; CIPHER_ERR_SETUP; CIPHER_ERR_RUN.
Status do_PrivateKey_Decrypt(std::int32_t mode, std::uint8_t* buffer, std::uint32_t size);

/// Fills the header of a 1024-bit private-key file and clears its items.
void start_sb10_private_key_file(Sb10PrivateKeyFile* file);

/// Writes the 640-byte file of a 1024-bit key, encrypted with mode 1, from the first seven items of
/// a key item list. `keyRecordLen` is not used; nothing in the tool calls this.
/// @return what do_PrivateKey_Encrypt returns; CIPHER_ERR_SETUP when an item does not fit its slot.
Status convert_To_OldPrivateKey(const std::uint8_t* keyRecord, std::uint32_t keyRecordLen,
                                std::uint8_t* out);

/// Reads a whole private-key file into `privateKey`, decrypts it and takes the `tail` bytes that
/// the protection added off `privateKeyLen`. A file above 2048 bytes aborts.
/// @return what do_PrivateKey_Decrypt returns.
Status read_private_key_file(const char* path, std::int32_t mode, std::uint32_t tail);
