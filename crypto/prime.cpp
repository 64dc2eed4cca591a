#include "crypto/prime.h"

#include <iterator>
#include <tuple>

#include "base/wipe.h"
#include "crypto/bn_mod.h"
#include "crypto/prng.h"

namespace {

using sealwright::bn_significant_digits;

// Each entry was to be the product of a run of consecutive primes (2 to 41, 43 to 61, and so on up
// to 541; 101 is missing), but only its low 32 bits were kept. Four of the products fit; the other
// entries have factors of their own, which have nothing to do with those primes.
//
// Quirk: the values stay as they are, for they decide which numbers are screened and so which key a
// state of the generator gives; callers of the library that make keys again from a kept state
// depend on it.
// clang-format off
constexpr Digit SmallPrimes[] = {
    0xC8E15F2A, 0x16FA4227, 0x87B81DA9, 0xDA38C071, 0xFDB17C23, 0xFE5E796B, 0xC7E4CBF5,
    0x7EB0F0B1, 0xB72EFC93, 0xF46CEE57, 0x80B2C2BB, 0x34A77199, 0x447D1BD5, 0xEA4C7C31,
    0xF046D45B, 0xFF55A7BF, 0x9B287041, 0x85663BEF, 0x7856625B, 0,
};

struct RoundBound {
  std::uint32_t bits;    // up to this length
  std::uint32_t rounds;  // so many rounds
};
constexpr RoundBound IterNo[] = {
    {100, 35}, {150, 25}, {200, 21}, {250, 17}, {300, 13}, {500, 9},
    {600, 8}, {800, 6}, {1250, 5}, {2048, 3}, {9999, 3},
};
// clang-format on

constexpr Digit gen_prime_top_mask = 0x10000000;  // bit 28

bool shares_factor_with_small_primes(const Digit* number, std::uint32_t digit_count) {
  for (const Digit* entry = SmallPrimes; *entry != 0; ++entry) {
    if (D_Gcd(*entry, bn_ModD(number, digit_count, *entry)) != 1) return true;
  }
  return false;
}

std::uint32_t round_count(std::uint32_t bits) {
  for (const RoundBound& bound : IterNo) {
    if (bits <= bound.bits) return bound.rounds;
  }
  return std::end(IterNo)[-1].rounds;
}

/// What a primality test computes with.
struct Witness {
  Digit minus_one[bn_max_modulus_digits];  // n - 1 = odd * 2^twos
  Digit odd[bn_max_modulus_digits];
  Digit base[bn_max_modulus_digits];
  Digit y[bn_max_modulus_digits];
  std::uint32_t twos;
};

void decompose(Witness& witness, const Digit* n, std::uint32_t k) {
  zeb_bn_copy(witness.minus_one, n, k);
  witness.minus_one[0] -= 1;  // n is odd
  zeb_bn_copy(witness.odd, witness.minus_one, k);
  while ((witness.odd[0] & 1) == 0) {
    for (std::uint32_t i = 0; i < k; ++i) {
      const Digit above = i + 1 < k ? witness.odd[i + 1] : 0;
      witness.odd[i] = (witness.odd[i] >> 1) | (above << 31);
    }
    ++witness.twos;
  }
}

void draw_base(Digit* base, std::uint32_t k) {
  zeb_bn_rand(base, k);
  base[k - 1] &= ~digit_top_bit;
}

/// One Miller-Rabin base drawn at random. True when n may be prime.
bool base_passes(Witness& witness, const Digit* n, std::uint32_t k) {
  constexpr Digit one = 1;
  Digit* y = witness.y;
  draw_base(witness.base, k);
  zeb_bn_Binary(y, witness.base, n, k, witness.odd, k);
  if (zeb_bn_cmp(y, k, &one, 1) == 0 || zeb_bn_cmp(y, k, witness.minus_one, k) == 0) return true;
  // One squaring more than the textbook's never rejects a prime.
  for (std::uint32_t i = 0; i < witness.twos; ++i) {
    zeb_bn_ModMul(y, y, y, n, k);
    if (zeb_bn_cmp(y, k, &one, 1) == 0) return false;
    if (zeb_bn_cmp(y, k, witness.minus_one, k) == 0) return true;
  }
  return false;
}

}  // namespace

void zeb_bn_rand(Digit* number, std::uint32_t digit_count) {
  // Its one failure is a null pointer, of which nothing comes.
  std::ignore =
      ZEB_SHA1_PRNG_Rand(digit_bytes * digit_count, reinterpret_cast<std::uint8_t*>(number));
}

Status ZEB_MillerRabin(const Digit* number, std::uint32_t digit_count) {
  if (digit_count == 0 || digit_count > bn_max_modulus_digits) return ZEB_ERR_FAIL;
  if ((number[0] & 1) == 0) return ZEB_ERR_FAIL;
  const bool is_one = number[0] == 1 && bn_significant_digits(number, digit_count) == 1;
  if (is_one || shares_factor_with_small_primes(number, digit_count)) return ZEB_ERR_FAIL;

  Witness witness = {};
  const WipeOnExit witness_guard(witness);
  decompose(witness, number, digit_count);
  const std::uint32_t rounds = round_count(digit_bits * digit_count);
  // Quirk: one base more than the rounds say; callers of the library that make keys again from a
  // kept state of the generator depend on it.
  for (std::uint32_t round = 0; round <= rounds; ++round) {
    if (!base_passes(witness, number, digit_count)) return ZEB_ERR_FAIL;
  }
  return ZEB_SUCCESS;
}

Status ZEB_Gen_Prime(Digit* number, std::uint32_t digit_count) {
  const std::uint32_t attempts = 4 * (40 * digit_count / 3);
  for (std::uint32_t attempt = 0; attempt < attempts; ++attempt) {
    zeb_bn_rand(number, digit_count);
    // Quirk: not bit 31, so that the prime may be shorter than its digits; callers of the library
    // that multiply two of them into a fixed width depend on it.
    number[digit_count - 1] |= gen_prime_top_mask;
    number[0] |= 1;
    if (ZEB_MillerRabin(number, digit_count) == ZEB_SUCCESS) return ZEB_SUCCESS;
  }
  return ZEB_ERR_FAIL;
}

namespace sealwright {

void draw_as_for_composite(const Digit* number, std::uint32_t digit_count) {
  if (shares_factor_with_small_primes(number, digit_count)) return;
  Digit dropped[bn_max_modulus_digits];
  const WipeOnExit dropped_guard(dropped);
  draw_base(dropped, digit_count);
}

}  // namespace sealwright
