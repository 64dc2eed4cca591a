#include "crypto/bn_limbs.h"

#if defined(__SIZEOF_INT128__)
#include <algorithm>
#include <cstring>

#include "base/wipe.h"
#include "crypto/bn.h"
#include "crypto/bn_limbs_x86.h"
#include "crypto/bn_rows.h"
#include "crypto/cpu.h"

namespace sealwright {

namespace {

constexpr std::size_t max_limbs = 32;
constexpr std::size_t limbs_at_once = 4;  // in a row; each width is a multiple of it

/// A step of the reduction divides the two top limbs of what is left by the two top limbs of the
/// modulus; the quotient is the trial limb. The divisor stays the same from step to step, so each
/// division is done as a multiplication with the divisor's reciprocal, computed once (after Moeller
/// and Granlund, "Improved division by invariant integers").
struct TrialDivisor {
  DoubleLimb limit;  // a dividend below it has a quotient that fits a limb
  Limb reciprocal1;  // upper and lower limb
  Limb reciprocal0;  // of floor((2^256 - 1) / divisor) - 2^128
};

/// All that an operation computes with, in one record that is wiped once.
struct LimbNumbers {
  std::size_t n;  // limbs of the modulus
  bool rows_in_assembly;
  TrialDivisor trial;
  Limb modulus[max_limbs];
  Limb complement[max_limbs];         // 2^(64 n) - modulus
  Limb a[max_limbs + limbs_at_once];  // zero above its width, for rows that are rounded up
  Limb b[max_limbs];
  Limb product[2 * max_limbs + limbs_at_once];
};

DoubleLimb join(Limb high, Limb low) {
  return (DoubleLimb{high} << limb_bits) | low;
}

Limb high_limb(DoubleLimb x) {
  return static_cast<Limb>(x >> limb_bits);
}

Limb low_limb(DoubleLimb x) {
  return static_cast<Limb>(x);
}

/// r[0..n) += a[0..n) * d, n a multiple of four. @return the carry limb.
Limb add_multiple(const LimbNumbers& numbers, Limb* r, const Limb* a, std::size_t n, Limb d) {
  if constexpr (CRYPTO_PATHS_X86) {
    if (numbers.rows_in_assembly) return mul_add_row_x86(r, a, n, d);
  }
  return mul_add_row(r, a, n, d);
}

/// r += a over n limbs. @return the carry.
Limb add_limbs(Limb* r, const Limb* a, std::size_t n) {
  Limb carry = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const DoubleLimb sum = DoubleLimb{r[i]} + a[i] + carry;
    r[i] = low_limb(sum);
    carry = high_limb(sum);
  }
  return carry;
}

/// product = a * b.
void multiply(LimbNumbers& numbers) {
  const std::size_t n = numbers.n;
  Limb* r = numbers.product;
  std::fill_n(r, n, Limb{0});
  for (std::size_t j = 0; j < n; ++j) {
    r[j + n] = add_multiple(numbers, r + j, numbers.a, n, numbers.b[j]);
  }
}

/// product = a * a, each cross product computed once.
void square(LimbNumbers& numbers) {
  const std::size_t n = numbers.n;
  const Limb* a = numbers.a;
  Limb* r = numbers.product;
  std::fill_n(r, 2 * n + limbs_at_once, Limb{0});
  for (std::size_t i = 0; i + 1 < n; ++i) {
    // Rounded up, over zeros of a.
    const std::size_t row = (n - i - 1 + limbs_at_once - 1) / limbs_at_once * limbs_at_once;
    r[2 * i + 1 + row] = add_multiple(numbers, r + 2 * i + 1, a + i + 1, row, a[i]);
  }
  if constexpr (CRYPTO_PATHS_X86) {
    if (numbers.rows_in_assembly) return double_and_add_squares_x86(r, a, n);
  }
  double_and_add_squares(r, a, n);
}

/// One step of a long division by two limbs, the upper one normalised: divides (remainder, low),
/// remainder < divisor, and leaves the new remainder. @return the quotient limb.
Limb divide_step(DoubleLimb& remainder, Limb low, DoubleLimb divisor) {
  const Limb d1 = high_limb(divisor);
  const Limb d0 = low_limb(divisor);
  DoubleLimb quotient = remainder / d1;  // at most 2 too large
  DoubleLimb rest = remainder % d1;
  while (high_limb(rest) == 0 && quotient * d0 > join(low_limb(rest), low)) {
    --quotient;
    rest += d1;
  }
  remainder = join(low_limb(rest), low) - quotient * d0;
  return low_limb(quotient);
}

// What is added to a trial limb, in units of 2^-64 of it, so that it is never too small. It falls
// short by less than 3 because three products are cut, by less than 1 because the reciprocal is, by
// less than 2 because the limbs below the top two are left out, and by at most 4 where the top two
// are known 2 too small: below 10 in all. At most 8 was seen in 200,000 random and edge trials. The
// limb comes out too large about once in 2^60 steps, and then by 1.
constexpr Limb trial_allowance = 11;

TrialDivisor prepare_trial_divisor(const Limb* m, std::size_t n) {
  const DoubleLimb divisor = join(m[n - 1], m[n - 2]);
  TrialDivisor trial = {divisor - trial_allowance, 0, 0};
  DoubleLimb remainder = ~divisor;
  trial.reciprocal1 = divide_step(remainder, ~Limb{0}, divisor);
  trial.reciprocal0 = divide_step(remainder, ~Limb{0}, divisor);
  return trial;
}

/// Whether the quotient of `top` and the divisor might not fit a limb, so that the largest limb is
/// the one to try. That is so for a top near the divisor or above it. A top that look_ahead knows
/// up to 2 too small may be below zero, which reads as a very large number: it counts as extreme
/// too, and the next step looks at the limbs themselves.
bool is_extreme(DoubleLimb top, const TrialDivisor& trial) {
  return top >= trial.limit;
}

/// The trial limb for a segment whose two top limbs are `top`, unless that is extreme.
Limb trial_limb(DoubleLimb top, const TrialDivisor& trial) {
  const Limb high = high_limb(top);
  const DoubleLimb quotient =
      top + DoubleLimb{high} * trial.reciprocal1 + high_limb(DoubleLimb{high} * trial.reciprocal0) +
      high_limb(DoubleLimb{low_limb(top)} * trial.reciprocal1) + trial_allowance;
  return high_limb(quotient);
}

/// The trial limb for the n + 1 limbs at `segment` as they stand.
Limb trial_limb_of(const Limb* segment, const LimbNumbers& numbers) {
  const DoubleLimb top = join(segment[numbers.n], segment[numbers.n - 1]);
  return is_extreme(top, numbers.trial) ? ~Limb{0} : trial_limb(top, numbers.trial);
}

struct NextTrial {
  Limb limb;
  bool is_extreme;  // and `limb` is of no use
};

/// The trial limb for the step after this one, from the three top limbs of the row that this one
/// is going to add. Not inlined: the compiler would move it after the row, where it has to wait.
[[gnu::noinline]] NextTrial look_ahead(const Limb* segment, Limb trial,
                                       const LimbNumbers& numbers) {
  const std::size_t n = numbers.n;
  const Limb* c = numbers.complement;
  const DoubleLimb top = join(segment[n - 1], segment[n - 2]) + join(trial * c[n - 1], 0) +
                         DoubleLimb{trial} * c[n - 2] + high_limb(DoubleLimb{trial} * c[n - 3]);
  return {trial_limb(top, numbers.trial), is_extreme(top, numbers.trial)};
}

/// Adds the modulus back to a segment that a trial limb by 1 too large has made negative.
/// @return false when the segment is irregular.
bool add_back(Limb* segment, const LimbNumbers& numbers) {
  Limb& top = segment[numbers.n];
  if (top == ~Limb{0}) top += add_limbs(segment, numbers.modulus, numbers.n);
  return top == 0;
}

bool is_below_modulus(const Limb* a, const LimbNumbers& numbers) {
  std::size_t i = numbers.n - 1;
  while (i > 0 && a[i] == numbers.modulus[i]) --i;
  return a[i] < numbers.modulus[i];
}

/// Classical reduction of the product in place, one trial limb a step. A multiple of the modulus is
/// subtracted by adding that of its complement and taking the trial limb from the limb above. The
/// next trial limb is settled before the row runs, so that the processor works on both at once.
/// @return false when a step came out irregular.
bool reduce(LimbNumbers& numbers) {
  const std::size_t n = numbers.n;
  Limb* segment = numbers.product + n - 1;
  Limb trial = trial_limb_of(segment, numbers);
  for (;; --segment) {
    const NextTrial next = look_ahead(segment, trial, numbers);
    segment[n] += add_multiple(numbers, segment, numbers.complement, n, trial) - trial;
    const bool too_large = segment[n] != 0;
    if (too_large && !add_back(segment, numbers)) return false;
    if (segment == numbers.product) return is_below_modulus(segment, numbers);
    trial = too_large || next.is_extreme ? trial_limb_of(segment - 1, numbers) : next.limb;
  }
}

/// a = product mod m. @return as `reduce`.
bool store_reduced(LimbNumbers& numbers) {
  if (!reduce(numbers)) return false;
  std::copy_n(numbers.product, numbers.n, numbers.a);
  return true;
}

/// a = a * b mod m. @return as `reduce`.
bool multiply_mod(LimbNumbers& numbers) {
  multiply(numbers);
  return store_reduced(numbers);
}

/// a = a * a mod m. @return as `reduce`.
bool square_mod(LimbNumbers& numbers) {
  square(numbers);
  return store_reduced(numbers);
}

void load_modulus(LimbNumbers& numbers, const Digit* m, std::uint32_t mLen) {
  numbers.n = mLen / digits_per_limb;
  numbers.rows_in_assembly = crypto_paths().bn_rows;
  std::memcpy(numbers.modulus, m, numbers.n * sizeof(Limb));
  numbers.trial = prepare_trial_divisor(numbers.modulus, numbers.n);
  Limb carry = 1;
  for (std::size_t i = 0; i < numbers.n; ++i) {
    numbers.complement[i] = ~numbers.modulus[i] + carry;
    carry = numbers.complement[i] < carry ? 1 : 0;
  }
}

}  // namespace

bool bn_limbs_apply(const Digit* m, std::uint32_t mLen) {
  return crypto_paths().bn_limbs && mLen != 0 && mLen % (digits_per_limb * limbs_at_once) == 0 &&
         mLen <= digits_per_limb * max_limbs && (m[mLen - 1] & digit_top_bit) != 0;
}

bool bn_limbs_mod_mul(Digit* r, const Digit* a, const Digit* b, const Digit* m,
                      std::uint32_t mLen) {
  LimbNumbers numbers = {};
  const WipeOnExit numbers_guard(numbers);
  load_modulus(numbers, m, mLen);
  const std::size_t bytes = numbers.n * sizeof(Limb);
  std::memcpy(numbers.a, a, bytes);
  std::memcpy(numbers.b, b, bytes);
  if (!(a == b ? square_mod(numbers) : multiply_mod(numbers))) return false;
  std::memcpy(r, numbers.a, bytes);
  return true;
}

bool bn_limbs_power(Digit* r, const Digit* base, const Digit* m, std::uint32_t mLen, const Digit* e,
                    std::uint32_t eLen) {
  LimbNumbers numbers = {};
  const WipeOnExit numbers_guard(numbers);
  load_modulus(numbers, m, mLen);
  const std::size_t bytes = numbers.n * sizeof(Limb);
  // As the modulus is normalised, subtracting it once makes any base smaller than it.
  std::memcpy(numbers.b, base, bytes);
  const bool was_below = add_limbs(numbers.b, numbers.complement, numbers.n) == 0;
  if (was_below) std::memcpy(numbers.b, base, bytes);
  std::memcpy(numbers.a, numbers.b, bytes);
  for (std::uint32_t bit = bn_bit_length(e, eLen) - 1; bit > 0; --bit) {
    if (!square_mod(numbers)) return false;
    if (bn_bit(e, bit - 1) && !multiply_mod(numbers)) return false;
  }
  std::memcpy(r, numbers.a, bytes);
  return true;
}

}  // namespace sealwright

#endif
