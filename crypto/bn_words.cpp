#include "crypto/bn_words.h"

#if defined(__SIZEOF_INT128__)
#include <algorithm>
#include <cstring>

#include "base/wipe.h"
#include "crypto/bn.h"
#include "crypto/bn_words_x86.h"
#include "crypto/cpu.h"

namespace {

constexpr std::size_t max_words = 32;
constexpr std::size_t turn = 4;  // words that a row takes at once; a width is a multiple of it

/// The division by the two top words of a modulus that gives a trial word, as a multiplication
/// with their reciprocal (after Moeller and Granlund, "Improved division by invariant integers").
struct TrialDivisor {
  DoubleWord limit;  // what lies below it can be divided so
  Word reciprocal1;  // upper and lower word
  Word reciprocal0;  // of floor((2^256 - 1) / divisor) - 2^128
};

/// All that an operation computes with, in one record that is wiped once.
struct WordNumbers {
  std::size_t n;  // words of the modulus
  bool rows_in_assembly;
  TrialDivisor trial;
  Word modulus[max_words];
  Word complement[max_words];  // 2^(64 n) - modulus
  Word a[max_words + turn];    // zero above its width, for rows that are rounded up
  Word b[max_words];
  Word product[2 * max_words + turn];
};

DoubleWord join(Word high, Word low) {
  return (DoubleWord{high} << word_bits) | low;
}

Word high_word(DoubleWord x) {
  return static_cast<Word>(x >> word_bits);
}

Word low_word(DoubleWord x) {
  return static_cast<Word>(x);
}

/// r[0..n) += a[0..n) * d, n a multiple of four. @return the carry word.
Word mul_add_row(const WordNumbers& numbers, Word* r, const Word* a, std::size_t n, Word d) {
  if constexpr (CRYPTO_PATHS_X86) {
    if (numbers.rows_in_assembly) return mul_add_row_x86(r, a, n, d);
  }
  Word carry = 0;
  const auto step = [&](std::size_t i) {
    // Compilers turn comparisons of this form into carries, and so keep 128-bit sums out of it.
    const DoubleWord product = DoubleWord{a[i]} * d;
    const Word before = r[i];
    Word low = low_word(product);
    Word high = high_word(product);
    low += before;
    high += low < before ? 1 : 0;
    low += carry;
    high += low < carry ? 1 : 0;
    r[i] = low;
    carry = high;
  };
  for (std::size_t i = 0; i < n; i += turn) {
    step(i);
    step(i + 1);
    step(i + 2);
    step(i + 3);
  }
  return carry;
}

/// r += a over n words. @return the carry.
Word add_words(Word* r, const Word* a, std::size_t n) {
  Word carry = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const DoubleWord sum = DoubleWord{r[i]} + a[i] + carry;
    r[i] = low_word(sum);
    carry = high_word(sum);
  }
  return carry;
}

/// r[0..2n) = 2 r + the squares of the words of a, each at twice its place.
void double_and_add_squares(const WordNumbers& numbers, Word* r, const Word* a) {
  if constexpr (CRYPTO_PATHS_X86) {
    if (numbers.rows_in_assembly) return double_and_add_squares_x86(r, a, numbers.n);
  }
  Word shifted_out = 0;
  DoubleWord carry = 0;
  for (std::size_t i = 0; i < numbers.n; ++i) {
    const DoubleWord square = DoubleWord{a[i]} * a[i];
    const Word low = (r[2 * i] << 1) | shifted_out;
    const Word high = (r[2 * i + 1] << 1) | (r[2 * i] >> (word_bits - 1));
    shifted_out = r[2 * i + 1] >> (word_bits - 1);
    carry += DoubleWord{low} + low_word(square);
    r[2 * i] = low_word(carry);
    carry = DoubleWord{high_word(carry)} + high + high_word(square);
    r[2 * i + 1] = low_word(carry);
    carry = high_word(carry);
  }
}

/// product = a * b.
void multiply(WordNumbers& numbers) {
  const std::size_t n = numbers.n;
  Word* r = numbers.product;
  std::fill_n(r, n, Word{0});
  for (std::size_t j = 0; j < n; ++j) {
    r[j + n] = mul_add_row(numbers, r + j, numbers.a, n, numbers.b[j]);
  }
}

/// product = a * a, each cross product computed once.
void square(WordNumbers& numbers) {
  const std::size_t n = numbers.n;
  const Word* a = numbers.a;
  Word* r = numbers.product;
  std::fill_n(r, 2 * n + turn, Word{0});
  for (std::size_t i = 0; i + 1 < n; ++i) {
    const std::size_t row = (n - i - 1 + turn - 1) / turn * turn;  // rounded up, over zeros of a
    r[2 * i + 1 + row] = mul_add_row(numbers, r + 2 * i + 1, a + i + 1, row, a[i]);
  }
  double_and_add_squares(numbers, r, a);
}

/// One step of a long division by two words, the upper one normalised: divides (remainder, low),
/// remainder < divisor, and leaves the new remainder. @return the quotient word.
Word divide_step(DoubleWord& remainder, Word low, DoubleWord divisor) {
  const Word d1 = high_word(divisor);
  const Word d0 = low_word(divisor);
  DoubleWord quotient = remainder / d1;  // at most 2 too large
  DoubleWord rest = remainder % d1;
  while (high_word(rest) == 0 && quotient * d0 > join(low_word(rest), low)) {
    --quotient;
    rest += d1;
  }
  remainder = join(low_word(rest), low) - quotient * d0;
  return low_word(quotient);
}

// The two top words of a segment may be known up to 2 too small, and a trial word leaves out the
// low halves of its products. It adds so much instead that it is never too small; it is too large
// about once in 2^60, and then by 1.
constexpr Word trial_allowance = 11;

TrialDivisor prepare_trial_divisor(const Word* m, std::size_t n) {
  const DoubleWord divisor = join(m[n - 1], m[n - 2]);
  TrialDivisor trial = {divisor - trial_allowance, 0, 0};
  DoubleWord remainder = ~divisor;
  trial.reciprocal1 = divide_step(remainder, ~Word{0}, divisor);
  trial.reciprocal0 = divide_step(remainder, ~Word{0}, divisor);
  return trial;
}

/// Whether `top` is so near to the divisor that the trial word would not fit: it is the largest
/// word then. A top that is known up to 2 too small may also have passed zero.
bool is_extreme(DoubleWord top, const TrialDivisor& trial) {
  return top >= trial.limit;
}

/// The trial word for a segment whose two top words are `top`, unless that is extreme.
Word trial_word(DoubleWord top, const TrialDivisor& trial) {
  const Word high = high_word(top);
  const DoubleWord quotient =
      top + DoubleWord{high} * trial.reciprocal1 + high_word(DoubleWord{high} * trial.reciprocal0) +
      high_word(DoubleWord{low_word(top)} * trial.reciprocal1) + trial_allowance;
  return high_word(quotient);
}

/// The trial word for the n + 1 words at `segment` as they stand.
Word trial_word_of(const Word* segment, const WordNumbers& numbers) {
  const DoubleWord top = join(segment[numbers.n], segment[numbers.n - 1]);
  return is_extreme(top, numbers.trial) ? ~Word{0} : trial_word(top, numbers.trial);
}

struct NextTrial {
  Word word;
  bool is_extreme;  // and `word` is of no use
};

/// The trial word for the step after this one, from the three top words of the row that this one
/// is going to add. Not inlined: the compiler would move it after the row, where it has to wait.
[[gnu::noinline]] NextTrial look_ahead(const Word* segment, Word trial,
                                       const WordNumbers& numbers) {
  const std::size_t n = numbers.n;
  const Word* c = numbers.complement;
  const DoubleWord top = join(segment[n - 1], segment[n - 2]) + join(trial * c[n - 1], 0) +
                         DoubleWord{trial} * c[n - 2] + high_word(DoubleWord{trial} * c[n - 3]);
  return {trial_word(top, numbers.trial), is_extreme(top, numbers.trial)};
}

/// Adds the modulus back to a segment that a trial word by 1 too large has made negative.
/// @return false when the segment is irregular.
bool add_back(Word* segment, const WordNumbers& numbers) {
  Word& top = segment[numbers.n];
  if (top == ~Word{0}) top += add_words(segment, numbers.modulus, numbers.n);
  return top == 0;
}

bool is_below_modulus(const Word* a, const WordNumbers& numbers) {
  std::size_t i = numbers.n - 1;
  while (i > 0 && a[i] == numbers.modulus[i]) --i;
  return a[i] < numbers.modulus[i];
}

/// Classical reduction of the product in place, one trial word a step. A multiple of the modulus is
/// subtracted by adding that of its complement and taking the trial word from the word above. The
/// next trial word is settled before the row runs, so that the processor works on both at once.
/// @return false when a step came out irregular.
bool reduce(WordNumbers& numbers) {
  const std::size_t n = numbers.n;
  Word* segment = numbers.product + n - 1;
  Word trial = trial_word_of(segment, numbers);
  for (;; --segment) {
    const NextTrial next = look_ahead(segment, trial, numbers);
    segment[n] += mul_add_row(numbers, segment, numbers.complement, n, trial) - trial;
    const bool too_large = segment[n] != 0;
    if (too_large && !add_back(segment, numbers)) return false;
    if (segment == numbers.product) return is_below_modulus(segment, numbers);
    trial = too_large || next.is_extreme ? trial_word_of(segment - 1, numbers) : next.word;
  }
}

/// a = product mod m. @return as `reduce`.
bool take_product(WordNumbers& numbers) {
  if (!reduce(numbers)) return false;
  std::copy_n(numbers.product, numbers.n, numbers.a);
  return true;
}

/// a = a * b mod m. @return as `reduce`.
bool multiply_mod(WordNumbers& numbers) {
  multiply(numbers);
  return take_product(numbers);
}

/// a = a * a mod m. @return as `reduce`.
bool square_mod(WordNumbers& numbers) {
  square(numbers);
  return take_product(numbers);
}

void load_modulus(WordNumbers& numbers, const Digit* m, std::uint32_t mLen) {
  numbers.n = mLen / digits_per_word;
  numbers.rows_in_assembly = crypto_paths().bn_rows;
  std::memcpy(numbers.modulus, m, numbers.n * sizeof(Word));
  numbers.trial = prepare_trial_divisor(numbers.modulus, numbers.n);
  Word carry = 1;
  for (std::size_t i = 0; i < numbers.n; ++i) {
    numbers.complement[i] = ~numbers.modulus[i] + carry;
    carry = numbers.complement[i] < carry ? 1 : 0;
  }
}

}  // namespace

bool bn_words_take(const Digit* m, std::uint32_t mLen) {
  return crypto_paths().bn_words && mLen != 0 && mLen % (digits_per_word * turn) == 0 &&
         mLen <= digits_per_word * max_words && (m[mLen - 1] & digit_top_bit) != 0;
}

bool bn_words_mod_mul(Digit* r, const Digit* a, const Digit* b, const Digit* m,
                      std::uint32_t mLen) {
  WordNumbers numbers = {};
  const WipeOnExit wipe_numbers(numbers);
  load_modulus(numbers, m, mLen);
  const std::size_t bytes = numbers.n * sizeof(Word);
  std::memcpy(numbers.a, a, bytes);
  std::memcpy(numbers.b, b, bytes);
  if (!(a == b ? square_mod(numbers) : multiply_mod(numbers))) return false;
  std::memcpy(r, numbers.a, bytes);
  return true;
}

bool bn_words_power(Digit* r, const Digit* base, const Digit* m, std::uint32_t mLen, const Digit* e,
                    std::uint32_t eLen) {
  WordNumbers numbers = {};
  const WipeOnExit wipe_numbers(numbers);
  load_modulus(numbers, m, mLen);
  const std::size_t bytes = numbers.n * sizeof(Word);
  // As the modulus is normalised, subtracting it once makes any base smaller than it.
  std::memcpy(numbers.b, base, bytes);
  const bool was_below = add_words(numbers.b, numbers.complement, numbers.n) == 0;
  if (was_below) std::memcpy(numbers.b, base, bytes);
  std::memcpy(numbers.a, numbers.b, bytes);
  for (std::uint32_t bit = bn_bit_length(e, eLen) - 1; bit > 0; --bit) {
    if (!square_mod(numbers)) return false;
    if (bn_bit(e, bit - 1) && !multiply_mod(numbers)) return false;
  }
  std::memcpy(r, numbers.a, bytes);
  return true;
}

#endif
