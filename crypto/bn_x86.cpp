#include "crypto/bn_words.h"

#if defined(__x86_64__)
#include <algorithm>
#include <cstddef>
#include <cstring>

#include "crypto/cpu.h"

namespace {

using Word = std::uint64_t;
__extension__ using DoubleWord = unsigned __int128;

constexpr std::size_t word_bits = 64;
constexpr std::size_t digits_per_word = 2;
constexpr std::size_t max_words = 32;
constexpr std::size_t unroll = 4;  // words per turn of a row

// Four words of a row in assembly: compilers lose the carry flag between intrinsics and go through
// memory. First the product a[0..4) * d + carry, then the sum or difference, as two carry chains.
// mulx takes d from rdx and leaves the flags alone.
#define FOUR_WORD_PRODUCT           \
  "mulx   (%[a]), %[p0], %[h0]\n\t" \
  "mulx  8(%[a]), %[p1], %[h1]\n\t" \
  "mulx 16(%[a]), %[p2], %[h2]\n\t" \
  "mulx 24(%[a]), %[p3], %[h3]\n\t" \
  "addq %[carry], %[p0]\n\t"        \
  "adcq %[h0], %[p1]\n\t"           \
  "adcq %[h1], %[p2]\n\t"           \
  "adcq %[h2], %[p3]\n\t"           \
  "adcq $0, %[h3]\n\t"

/// r[0..4) += a[0..4) * d + carry. @return the carry word.
inline Word mul_add_four(Word* r, const Word* a, Word d, Word carry) {
  Word p0, p1, p2, p3, h0, h1, h2, h3;
  __asm__ volatile(FOUR_WORD_PRODUCT
                   "addq   (%[r]), %[p0]\n\t"
                   "adcq  8(%[r]), %[p1]\n\t"
                   "adcq 16(%[r]), %[p2]\n\t"
                   "adcq 24(%[r]), %[p3]\n\t"
                   "adcq $0, %[h3]\n\t"
                   "movq %[p0],   (%[r])\n\t"
                   "movq %[p1],  8(%[r])\n\t"
                   "movq %[p2], 16(%[r])\n\t"
                   "movq %[p3], 24(%[r])\n\t"
                   : [p0] "=&r"(p0), [p1] "=&r"(p1), [p2] "=&r"(p2), [p3] "=&r"(p3), [h0] "=&r"(h0),
                     [h1] "=&r"(h1), [h2] "=&r"(h2), [h3] "=&r"(h3)
                   : [a] "r"(a), [r] "r"(r), [carry] "r"(carry), "d"(d)
                   : "cc", "memory");
  return h3;
}

/// r[0..4) -= a[0..4) * d + carry. @return the borrow word.
inline Word mul_sub_four(Word* r, const Word* a, Word d, Word carry) {
  Word p0, p1, p2, p3, h0, h1, h2, h3;
  __asm__ volatile(FOUR_WORD_PRODUCT
                   "movq   (%[r]), %[h0]\n\t"
                   "movq  8(%[r]), %[h1]\n\t"
                   "movq 16(%[r]), %[h2]\n\t"
                   "subq %[p0], %[h0]\n\t"
                   "sbbq %[p1], %[h1]\n\t"
                   "movq 24(%[r]), %[p0]\n\t"
                   "sbbq %[p2], %[h2]\n\t"
                   "sbbq %[p3], %[p0]\n\t"
                   "adcq $0, %[h3]\n\t"
                   "movq %[h0],   (%[r])\n\t"
                   "movq %[h1],  8(%[r])\n\t"
                   "movq %[h2], 16(%[r])\n\t"
                   "movq %[p0], 24(%[r])\n\t"
                   : [p0] "=&r"(p0), [p1] "=&r"(p1), [p2] "=&r"(p2), [p3] "=&r"(p3), [h0] "=&r"(h0),
                     [h1] "=&r"(h1), [h2] "=&r"(h2), [h3] "=&r"(h3)
                   : [a] "r"(a), [r] "r"(r), [carry] "r"(carry), "d"(d)
                   : "cc", "memory");
  return h3;
}

/// r[0..n) += a[0..n) * d. @return the carry word.
Word mul_add_words(Word* r, const Word* a, std::size_t n, Word d) {
  Word carry = 0;
  std::size_t i = 0;
  for (; i + unroll <= n; i += unroll) carry = mul_add_four(r + i, a + i, d, carry);
  for (; i < n; ++i) {
    const DoubleWord sum = DoubleWord{a[i]} * d + r[i] + carry;
    r[i] = static_cast<Word>(sum);
    carry = static_cast<Word>(sum >> word_bits);
  }
  return carry;
}

/// r[0..n) -= a[0..n) * d, n a multiple of four. @return the borrow word.
Word mul_sub_words(Word* r, const Word* a, std::size_t n, Word d) {
  Word borrow = 0;
  for (std::size_t i = 0; i < n; i += unroll) borrow = mul_sub_four(r + i, a + i, d, borrow);
  return borrow;
}

/// r += a over n words. @return the carry.
Word add_words(Word* r, const Word* a, std::size_t n) {
  Word carry = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const DoubleWord sum = DoubleWord{r[i]} + a[i] + carry;
    r[i] = static_cast<Word>(sum);
    carry = static_cast<Word>(sum >> word_bits);
  }
  return carry;
}

void multiply(Word* r, const Word* a, const Word* b, std::size_t n) {
  std::fill_n(r, n, Word{0});
  for (std::size_t j = 0; j < n; ++j) r[j + n] = b[j] == 0 ? 0 : mul_add_words(r + j, a, n, b[j]);
}

void square(Word* r, const Word* a, std::size_t n) {
  std::fill_n(r, 2 * n, Word{0});
  for (std::size_t i = 0; i + 1 < n; ++i) {
    r[i + n] = mul_add_words(r + 2 * i + 1, a + i + 1, n - i - 1, a[i]);
  }
  // Doubles the cross products and adds the squares.
  Word shifted_out = 0;
  DoubleWord carry = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const DoubleWord a_squared = DoubleWord{a[i]} * a[i];
    const Word low = (r[2 * i] << 1) | shifted_out;
    const Word high = (r[2 * i + 1] << 1) | (r[2 * i] >> (word_bits - 1));
    shifted_out = r[2 * i + 1] >> (word_bits - 1);
    carry += DoubleWord{low} + static_cast<Word>(a_squared);
    r[2 * i] = static_cast<Word>(carry);
    carry = (carry >> word_bits) + high + (a_squared >> word_bits);
    r[2 * i + 1] = static_cast<Word>(carry);
    carry >>= word_bits;
  }
}

/// (hi * 2^64 + lo) / d for hi < d: the quotient is one word.
Word divide(Word hi, Word lo, Word d) {
  Word quotient = 0;
  Word remainder = 0;
  __asm__("divq %4" : "=a"(quotient), "=d"(remainder) : "a"(lo), "d"(hi), "r"(d) : "cc");
  return quotient;
}

/// The two top words of a normalised modulus, prepared for trial division (Moeller and Granlund,
/// "Improved division by invariant integers", 2011: three words by two, and the reciprocal for it):
/// two words of divisor make a trial word that is almost never too large, so that add-backs cost
/// nothing.
struct TrialDivisor {
  Word d1;
  Word d0;
  Word reciprocal;  // floor((2^192 - 1) / (d1 * 2^64 + d0)) - 2^64
};

TrialDivisor prepare_trial_divisor(const Word* m, std::size_t n) {
  const Word d1 = m[n - 1];
  const Word d0 = m[n - 2];
  Word v = divide(~d1, ~Word{0}, d1);
  Word p = d1 * v + d0;
  if (p < d0) {
    --v;
    if (p >= d1) {
      --v;
      p -= d1;
    }
    p -= d1;
  }
  const DoubleWord t = DoubleWord{v} * d0;
  const Word t_high = static_cast<Word>(t >> word_bits);
  p += t_high;
  if (p < t_high) {
    --v;
    const DoubleWord rest = (DoubleWord{p} << word_bits) | static_cast<Word>(t);
    if (rest >= ((DoubleWord{d1} << word_bits) | d0)) --v;
  }
  return {d1, d0, v};
}

/// (u2, u1, u0) / (d1, d0) for (u2, u1) < (d1, d0): the quotient is one word.
Word trial_word(Word u2, Word u1, Word u0, const TrialDivisor& divisor) {
  const DoubleWord d = (DoubleWord{divisor.d1} << word_bits) | divisor.d0;
  const DoubleWord estimate =
      DoubleWord{divisor.reciprocal} * u2 + ((DoubleWord{u2} << word_bits) | u1);
  Word q = static_cast<Word>(estimate >> word_bits);
  const Word r_high = u1 - q * divisor.d1;
  DoubleWord r = ((DoubleWord{r_high} << word_bits) | u0) - DoubleWord{divisor.d0} * q - d;
  ++q;
  // One correction as often as not, so without a branch; the other is rare.
  const Word too_large =
      static_cast<Word>(r >> word_bits) >= static_cast<Word>(estimate) ? ~Word{0} : 0;
  q += too_large;
  r += d & ((DoubleWord{too_large} << word_bits) | too_large);
  if (r >= d) ++q;
  return q;
}

/// Classical reduction of 2n words in place, one trial word per step, at most two add-backs.
/// @return false when a step came out irregular.
bool reduce(Word* a, const Word* m, std::size_t n) {
  const TrialDivisor divisor = prepare_trial_divisor(m, n);
  for (std::size_t j = n; j > 0; --j) {
    Word* segment = a + (j - 1);
    const Word u2 = segment[n];
    const Word u1 = segment[n - 1];
    if (u2 == 0 && u1 < divisor.d1) continue;  // the trial word is 0
    const bool regular = u2 < divisor.d1 || (u2 == divisor.d1 && u1 < divisor.d0);
    const Word trial = regular ? trial_word(u2, u1, segment[n - 2], divisor) : ~Word{0};
    const Word borrow = mul_sub_words(segment, m, n, trial);
    segment[n] = u2 - borrow;
    bool negative = u2 < borrow;
    for (int add_backs = 0; negative && add_backs < 2; ++add_backs) {
      const Word carry = add_words(segment, m, n);
      segment[n] += carry;
      negative = carry == 0 || segment[n] != 0;
    }
    if (segment[n] != 0) return false;
  }
  for (std::size_t i = n; i > 0; --i) {
    if (a[i - 1] != m[i - 1]) return a[i - 1] < m[i - 1];
  }
  return false;
}

bool mod_mul(Digit* r, const Digit* a, const Digit* b, const Digit* m, std::size_t n) {
  const std::size_t bytes = n * sizeof(Word);
  Word a_words[max_words];
  Word m_words[max_words];
  Word product[2 * max_words];
  std::memcpy(a_words, a, bytes);
  std::memcpy(m_words, m, bytes);
  if (a == b) {
    square(product, a_words, n);
  } else {
    Word b_words[max_words];
    std::memcpy(b_words, b, bytes);
    multiply(product, a_words, b_words, n);
  }
  if (!reduce(product, m_words, n)) return false;
  std::memcpy(r, product, bytes);
  return true;
}

}  // namespace

bool bn_words_take(const Digit* m, std::uint32_t mLen) {
  return crypto_paths().bn_rows && mLen != 0 && mLen % (digits_per_word * unroll) == 0 &&
         mLen <= digits_per_word * max_words && (m[mLen - 1] & digit_top_bit) != 0;
}

bool bn_words_mod_mul(Digit* r, const Digit* a, const Digit* b, const Digit* m,
                      std::uint32_t mLen) {
  return mod_mul(r, a, b, m, mLen / digits_per_word);
}

#else

bool bn_words_take(const Digit* /*m*/, std::uint32_t /*mLen*/) {
  return false;
}

bool bn_words_mod_mul(Digit* /*r*/, const Digit* /*a*/, const Digit* /*b*/, const Digit* /*m*/,
                      std::uint32_t /*mLen*/) {
  return false;
}

#endif
