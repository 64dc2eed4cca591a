#include "crypto/bn_mod.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "base/wipe.h"
#include "crypto/bn_limbs.h"
#include "crypto/bn_rows.h"

namespace {

using sealwright::bn_bit;
using sealwright::bn_bit_length;
using sealwright::bn_limbs_apply;
using sealwright::bn_limbs_mod_mul;
using sealwright::bn_limbs_power;
using sealwright::bn_reduce_exactly;
using sealwright::bn_significant_digits;
using sealwright::subtract_multiple;

constexpr std::uint32_t euclid_digits = bn_max_modulus_digits + 1;
/// Below this quotient estimate a Euclidean step subtracts instead of dividing.
constexpr DoubleDigit division_threshold = 4;

bool is_one(const Digit* a, std::uint32_t len) {
  return len != 0 && a[0] == 1 && bn_significant_digits(a, len) == 1;
}

/// One row of the Euclidean algorithm: a remainder and the size of the coefficient that the
/// operand has in it. The signs of successive coefficients alternate.
struct EuclidRow {
  Digit remainder[euclid_digits];
  Digit coefficient[euclid_digits];
};

/// What the Euclidean algorithm computes with.
struct EuclidNumbers {
  EuclidRow rows[2];
  Digit quotient[euclid_digits];
  Digit remainder[euclid_digits];
  Digit product[2 * euclid_digits];
};

/// Lower bound of dividend / divisor from the leading digits, never above the true quotient.
DoubleDigit estimate_quotient(const Digit* dividend, std::uint32_t dividend_len,
                              const Digit* divisor, std::uint32_t divisor_len) {
  if (dividend_len < divisor_len) return 0;
  if (dividend_len > divisor_len + 1) return division_threshold;
  DoubleDigit leading = dividend[dividend_len - 1];
  if (dividend_len > divisor_len) leading = (leading << digit_bits) | dividend[dividend_len - 2];
  return leading / (DoubleDigit{divisor[divisor_len - 1]} + 1);
}

/// previous.remainder mod= current.remainder, with the coefficients following.
void euclid_step(EuclidRow& previous, const EuclidRow& current, EuclidNumbers& numbers,
                 std::uint32_t len) {
  const std::uint32_t width = len + 1;
  const std::uint32_t dividend_len = bn_significant_digits(previous.remainder, width);
  const std::uint32_t divisor_len = bn_significant_digits(current.remainder, width);
  const DoubleDigit estimate =
      estimate_quotient(previous.remainder, dividend_len, current.remainder, divisor_len);
  if (estimate < division_threshold) {
    while (zeb_bn_cmp(previous.remainder, width, current.remainder, width) >= 0) {
      zeb_bn_Sub(previous.remainder, previous.remainder, width, current.remainder, width);
      zeb_bn_Add(previous.coefficient, previous.coefficient, width, current.coefficient, width);
    }
    return;
  }
  std::fill_n(numbers.remainder, width, Digit{0});
  zeb_bn_Div(numbers.quotient, numbers.remainder, previous.remainder, dividend_len + 1,
             current.remainder, divisor_len + 1);
  zeb_bn_copy(previous.remainder, numbers.remainder, width);

  const std::uint32_t quotient_len =
      bn_significant_digits(numbers.quotient, dividend_len - divisor_len + 1);
  const std::uint32_t coefficient_len = bn_significant_digits(current.coefficient, width);
  zeb_bn_Mul(numbers.product, current.coefficient, coefficient_len, numbers.quotient, quotient_len);
  // A coefficient never exceeds the modulus, so what lies above the width is zero.
  zeb_bn_Add(previous.coefficient, previous.coefficient, width, numbers.product,
             std::min(width, coefficient_len + quotient_len));
}

}  // namespace

void zeb_bn_ClassicalRed(Digit* a, std::uint32_t aLen, const Digit* m, std::uint32_t mLen) {
  // Quirk: equal lengths reduce nothing; callers of the library that reduce a number again and
  // again depend on it.
  if (mLen == 0 || aLen <= mLen || m[mLen - 1] == 0) return;
  const Digit top = m[mLen - 1];
  for (std::uint32_t j = aLen - mLen; j > 0; --j) {
    Digit* segment = a + (j - 1);
    // Quirk: cut to 32 bits, not clamped to 0xFFFFFFFF as in zeb_bn_Div; callers of the library
    // that compare its digits with those of their device depend on it.
    const Digit trial = DD_Div_D(segment[mLen], segment[mLen - 1], top);
    subtract_multiple(segment, m, mLen, trial);
  }
}

void sealwright::bn_reduce_exactly(Digit* a, std::uint32_t aLen, const Digit* m,
                                   std::uint32_t mLen) {
  Digit untouched[bn_scratch_digits];
  const WipeOnExit untouched_guard(untouched);
  zeb_bn_copy(untouched, a, aLen);
  zeb_bn_ClassicalRed(a, aLen, m, mLen);
  // Each step changes the number by a multiple of m, and a step that wraps leaves a digit above
  // the modulus for good; so no such digit and a value below m mean the right remainder.
  const bool regular = bn_significant_digits(a, aLen) <= mLen && zeb_bn_cmp(a, mLen, m, mLen) < 0;
  if (regular) return;
  std::fill(a + mLen, a + aLen, Digit{0});
  zeb_bn_Div(nullptr, a, untouched, aLen, m, mLen);
}

void zeb_bn_ModMul(Digit* r, const Digit* a, const Digit* b, const Digit* m, std::uint32_t mLen) {
  if (mLen == 0) return;
  if constexpr (has_double_limbs) {
    if (bn_limbs_apply(m, mLen) && bn_limbs_mod_mul(r, a, b, m, mLen)) return;
  }
  Digit product[bn_scratch_digits];
  const WipeOnExit product_guard(product);
  if (a == b) {
    zeb_bn_Sqr(product, a, mLen);
  } else {
    zeb_bn_Mul(product, a, mLen, b, mLen);
  }
  bn_reduce_exactly(product, 2 * mLen, m, mLen);
  zeb_bn_copy(r, product, mLen);
}

void zeb_bn_Binary(Digit* r, const Digit* base, const Digit* m, std::uint32_t mLen, const Digit* e,
                   std::uint32_t eLen) {
  if (mLen == 0) return;
  std::fill_n(r, mLen, Digit{0});
  r[0] = 1;
  const std::uint32_t exponent_bits = bn_bit_length(e, eLen);
  if constexpr (has_double_limbs) {
    const bool taken = exponent_bits != 0 && bn_limbs_apply(m, mLen);
    if (taken && bn_limbs_power(r, base, m, mLen, e, eLen)) return;
  }
  for (std::uint32_t bit = exponent_bits; bit > 0; --bit) {
    zeb_bn_ModMul(r, r, r, m, mLen);
    if (bn_bit(e, bit - 1)) zeb_bn_ModMul(r, r, base, m, mLen);
  }
}

Status zeb_bn_Euclid(Digit* inv, const Digit* a, const Digit* m, std::uint32_t len) {
  if (len == 0 || len > bn_max_modulus_digits) return ZEB_ERR_FAIL;
  if (is_one(a, len)) {
    if (inv != nullptr) zeb_bn_copy(inv, a, len);
    return ZEB_SUCCESS;
  }
  EuclidNumbers numbers = {};
  const WipeOnExit numbers_guard(numbers);
  EuclidRow* previous = &numbers.rows[0];
  EuclidRow* current = &numbers.rows[1];
  zeb_bn_copy(previous->remainder, m, len);
  zeb_bn_copy(current->remainder, a, len);
  current->coefficient[0] = 1;
  bool negative = false;  // sign of the current coefficient
  while (!is_one(current->remainder, len)) {
    if (bn_significant_digits(current->remainder, len) == 0) return ZEB_ERR_FAIL;
    euclid_step(*previous, *current, numbers, len);
    std::swap(previous, current);
    negative = !negative;
  }
  if (inv == nullptr) return ZEB_SUCCESS;
  if (negative && bn_significant_digits(current->coefficient, len) != 0) {
    zeb_bn_Sub(inv, m, len, current->coefficient, len);
  } else {
    zeb_bn_copy(inv, current->coefficient, len);
  }
  return ZEB_SUCCESS;
}
