#pragma once

#include <cstdint>

#include "crypto/status.h"

// AES (FIPS 197) with 128-, 192- and 256-bit keys, one block at a time.

inline constexpr std::uint32_t aes_block_length = 16;  // bytes

/// Expanded key. The round keys lie as FIPS 197's bytes do: word i holds bytes 4i to 4i + 3 of the
/// schedule as a little-endian word.
struct AesKeySchedule {
  std::uint32_t key_words;  // key length in 32-bit words: 4, 6 or 8
  std::uint32_t round_keys[64];
};
static_assert(sizeof(AesKeySchedule) == 260);

/// Product in GF(2^8) modulo x^8 + x^4 + x^3 + x + 1.
// NOLINTNEXTLINE(clang-diagnostic-reserved-identifier): the interface gives this name
std::uint8_t _ff_mult(std::uint8_t a, std::uint8_t b);

/// Expands a key of `keyLen` bytes. `decSchedule`, which may be null when only encryption is
/// wanted, receives the round keys of the equivalent inverse cipher (FIPS 197, 5.3.5).
/// @return 0; ZEB_ERR_NULL_POINTER; ZEB_ERR_KEY_LENGTH when keyLen is not 16, 24 or 32.
// NOLINTNEXTLINE(clang-diagnostic-reserved-identifier): the interface gives this name
Status _AES_KeySchedule(const std::uint8_t* key, std::uint32_t keyLen, AesKeySchedule* encSchedule,
                        AesKeySchedule* decSchedule);

/// Encrypts the 16 bytes of `block` in place.
void zeb_AES_Encrypt(std::uint8_t* block, const AesKeySchedule* encSchedule);

/// Decrypts the 16 bytes of `block` in place under a decryption schedule.
void zeb_AES_Decrypt(std::uint8_t* block, const AesKeySchedule* decSchedule);

namespace sealwright {

/// Rounds that a key of so many words asks for: 10, 12 or 14.
constexpr std::uint32_t aes_rounds(const AesKeySchedule& schedule) {
  return schedule.key_words + 6;
}

}  // namespace sealwright
