#pragma once

#include <cstdint>
#include <span>

#include "base/bytes.h"
#include "crypto/rsa_key.h"
#include "crypto/status.h"

// What the key generation of both schemes shares.

inline constexpr std::int32_t root_key_mode = 1;
inline constexpr std::int32_t stage2_key_mode = 2;

/// A number of a key, as the key record holds it.
struct KeyNumber {
  const Digit* digits;
  std::uint32_t digit_count;
};

namespace sealwright {

/// Makes an RSA key of `modulus_bits` bits with the given exponent in `key` and checks it whole, so
/// that a fault of the machine never becomes a key that somebody fuses.
/// @return 0; SIGN_ERR_RSA, and the key is of no use then.
[[nodiscard]] Status make_rsa_key(ZEB_RSA_PRIVATE_KEY& key, Digit exponent,
                                  std::uint32_t modulus_bits);

/// Writes the numbers as a key item list to `list`, each at its full width whatever leading zeros
/// it has: a shorter list would be no whole number of blocks and so be stored unencrypted. The room
/// is 4 bytes for each number and 4 for each of its digits.
void write_item_list(WritableBytes list, std::span<const KeyNumber> numbers);

}  // namespace sealwright
