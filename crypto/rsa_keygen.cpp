#include "crypto/rsa_keygen.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "base/wipe.h"
#include "crypto/bn_mod.h"
#include "crypto/prime.h"
#include "crypto/prime_trial.h"

using sealwright::wipe_dead_stack;

namespace {

constexpr std::uint32_t min_modulus_bits = 128;        // below it a prime has no digit left to vary
constexpr std::uint32_t prime_share = 2 * digit_bits;  // modulus bits per digit of one prime

/// What key generation computes with besides the record.
struct KeyGenNumbers {
  Digit p_minus_one[rsa_crt_capacity];
  Digit q_minus_one[rsa_crt_capacity];
  Digit phi[rsa_number_capacity];  // (p - 1)(q - 1)
  Digit exponent[rsa_number_capacity];
};

Digit draw_top_digit(Digit* prime, std::uint32_t half) {
  zeb_bn_rand(prime + half - 1, 1);
  return prime[half - 1] |= digit_top_bit;
}

/// Top digits for p and q whose product has its top bit set, so that p * q is full-length.
void draw_top_digits(ZEB_RSA_PRIVATE_KEY& key, std::uint32_t half) {
  Digit p_top = draw_top_digit(key.p, half);
  Digit q_top = draw_top_digit(key.q, half);
  for (;;) {
    DoubleDigit product = 0;
    D_Mul_D(&product, p_top, q_top);
    if ((product >> 63) != 0) break;
    if (p_top < q_top) {
      p_top = draw_top_digit(key.p, half);
    } else {
      q_top = draw_top_digit(key.q, half);
    }
  }
  if (p_top < q_top) std::swap(key.p[half - 1], key.q[half - 1]);
}

/// Whether a candidate leaves 1 modulo a one-digit exponent, which would have no inverse then.
bool is_excluded_by_exponent(const Digit* candidate, std::uint32_t half,
                             const ZEB_RSA_PRIVATE_KEY& key) {
  return key.eWords == 1 && key.e[0] != 0 && bn_ModD(candidate, half, key.e[0]) == 1;
}

/// Whether a candidate becomes a prime of the key. Trial division spares most composites their
/// exponentiation; what the generator would have given for that is drawn all the same, so that a
/// state of the generator gives one key, whatever trial division finds on this machine.
bool is_accepted(const Digit* candidate, std::uint32_t half, const ZEB_RSA_PRIVATE_KEY& key) {
  const bool composite = sealwright::has_small_factor(candidate, half);
  if (is_excluded_by_exponent(candidate, half, key)) return false;
  if (!composite) return ZEB_MillerRabin(candidate, half) == ZEB_SUCCESS;
  sealwright::draw_as_for_composite(candidate, half);
  return false;
}

/// Draws the digits below the top one until the number is prime and suits the exponent.
void find_prime(Digit* prime, std::uint32_t half, const ZEB_RSA_PRIVATE_KEY& key) {
  do {
    zeb_bn_rand(prime, half - 1);
    prime[0] |= 1;
  } while (!is_accepted(prime, half, key));
}

void settle_exponent(ZEB_RSA_PRIVATE_KEY& key, std::uint32_t digits) {
  if (key.eWords != 0) {
    for (std::uint32_t i = key.eWords; i < digits; ++i) key.e[i] = 0;
    return;
  }
  zeb_bn_rand(key.e, digits);
  key.e[digits - 1] &= ~digit_top_bit;
  key.eWords = digits;
}

/// result = d mod (prime - 1).
void reduce_private_exponent(Digit* result, const Digit* prime_minus_one, KeyGenNumbers& numbers,
                             const ZEB_RSA_PRIVATE_KEY& key, std::uint32_t half) {
  zeb_bn_copy(numbers.exponent, key.d, key.dWords);
  sealwright::bn_reduce_exactly(numbers.exponent, key.dWords, prime_minus_one, half);
  zeb_bn_copy(result, numbers.exponent, half);
}

/// d, dP and dQ from p, q and e.
void derive_exponents(ZEB_RSA_PRIVATE_KEY& key, std::uint32_t digits, std::uint32_t half) {
  KeyGenNumbers numbers = {};
  const WipeOnExit numbers_guard(numbers);
  zeb_bn_copy(numbers.p_minus_one, key.p, half);
  zeb_bn_copy(numbers.q_minus_one, key.q, half);
  numbers.p_minus_one[0] -= 1;  // both are odd
  numbers.q_minus_one[0] -= 1;
  zeb_bn_Mul(numbers.phi, numbers.p_minus_one, half, numbers.q_minus_one, half);
  key.dWords = digits;
  // Dropped: a preset prime exponent always has an inverse, and any other is not checked here.
  std::ignore = zeb_bn_Euclid(key.d, key.e, numbers.phi, digits);
  reduce_private_exponent(key.dP, numbers.p_minus_one, numbers, key, half);
  reduce_private_exponent(key.dQ, numbers.q_minus_one, numbers, key, half);
  key.dPWords = half;
  key.dQWords = half;
}

}  // namespace

Status ZEB_RSA_KeyGen(ZEB_RSA_PRIVATE_KEY* key, std::uint32_t modulus_bits) {
  if (modulus_bits % digit_bits != 0 || modulus_bits < min_modulus_bits ||
      modulus_bits > digit_bits * rsa_max_modulus_digits) {
    return ZEB_ERR_PARAMETER;
  }
  const std::uint32_t digits = modulus_bits / digit_bits;
  const std::uint32_t half = modulus_bits / prime_share;
  do {
    draw_top_digits(*key, half);
    find_prime(key->p, half, *key);
    find_prime(key->q, half, *key);
    // Equal top digits leave the order open; the operation by CRT needs the larger prime as p.
    if (zeb_bn_cmp(key->p, half, key->q, half) < 0) std::swap_ranges(key->p, key->p + half, key->q);
    key->pWords = half;
    key->qWords = half;
    settle_exponent(*key, digits);
    derive_exponents(*key, digits, half);
    key->qInvWords = half;
  } while (zeb_bn_Euclid(key->qInv, key->q, key->p, half) != ZEB_SUCCESS);
  zeb_bn_Mul(key->n, key->p, half, key->q, half);
  key->nWords = digits;
  wipe_dead_stack();
  return ZEB_SUCCESS;
}
