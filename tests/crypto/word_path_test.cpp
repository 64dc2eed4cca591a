#include <gtest/gtest.h>

#include "crypto/bn_mod.h"
#include "crypto/bn_words.h"
#include "crypto/cpu.h"
#include "crypto/prime_trial.h"
#include "tests/support/numbers.h"

namespace {

/// Puts assembly rows, portable words and digits in force in turn.
template <typename Check>
void on_each_path(Check check) {
  const CryptoPaths before = crypto_paths();
  for (const auto& [words, rows] : {std::pair(true, true), {true, false}, {false, false}}) {
    force_crypto_paths({before.sha1, before.aes, words, rows});
    check(words && available_crypto_paths().bn_words);
  }
  force_crypto_paths(before);
}

/// a * b mod m on each path, and without the exact division for operands below m on words.
void expect_product(const Number& a, const Number& b, const Number& m) {
  const Big expected = Big(a) * Big(b) % Big(m);
  on_each_path([&](bool on_words) {
    Number r(m.size());
    zeb_bn_ModMul(r.data(), a.data(), b.data(), m.data(), width_of(m));
    EXPECT_EQ(Big(r), expected) << width_of(m);
    EXPECT_EQ(bn_words_take(m.data(), width_of(m)), on_words);
    if (on_words && Big(a) < Big(m) && Big(b) < Big(m)) {
      EXPECT_TRUE(bn_words_mod_mul(r.data(), a.data(), b.data(), m.data(), width_of(m)))
          << width_of(m);
      EXPECT_EQ(Big(r), expected);
    }
  });
}

void expect_power(const Number& base, const Number& e, const Number& m) {
  const Big expected = power(Big(base), Big(e), Big(m));
  on_each_path([&](bool) {
    Number r(m.size());
    zeb_bn_Binary(r.data(), base.data(), m.data(), width_of(m), e.data(), width_of(e));
    EXPECT_EQ(Big(r), expected) << width_of(m);
  });
}

TEST(WordPath, AgreesWithDigitsAndOpenssl) {
  std::mt19937_64 engine(30);
  for (std::uint32_t i = 0; i < 8 * shape_count * shape_count && !HasFailure(); ++i) {
    const std::uint32_t width = 8 * (1 + i % 8);
    Number m = make_number(engine, width, i / 8 / shape_count);
    m.back() |= digit_top_bit;
    const Number a = make_number(engine, width, i / 8 % shape_count);
    const Number b = make_number(engine, width, engine() % shape_count);
    expect_product(a, b, m);
    expect_product(a, a, m);
    expect_product((Big(m) - 1).digits(width), (Big(a) % Big(m)).digits(width), m);
    expect_power(a, {b[0]}, m);
    // Times a power of the radix, these numbers come out at a multiple of m, right above it or
    // right below: trial words at the edge, and remainders with nothing at the top.
    const std::size_t shift = 1 + engine() % (width - 4);
    const Big edge = Big(m) * Big(1 + engine() % 3) / Big::unit(shift);
    const Big below = Big(engine() % 12) * Big::unit(width - 2 - shift);
    for (const Big& number : {edge, edge + 1, edge - below}) {
      expect_product((number % Big(m)).digits(width), Big::unit(shift + 2).digits(width), m);
    }
    // Irregular to the end, with nothing left above the modulus.
    expect_product(Number(width, 0xFFFFFFFF), ((Big(m) + 1) % Big::unit(width)).digits(width), m);
  }
}

TEST(TrialDivision, RejectsCompositesWithASmallFactorAndNoPrime) {
  std::mt19937_64 engine(31);
  const auto is_rejected = [](const Number& n) { return has_small_factor(n.data(), width_of(n)); };
  for (int i = 0; i < 150; ++i) {
    const std::uint32_t width = std::array{3, 4, 16, 31, 32}[i % 5];
    const Digit bound = trial_division_bound(width);
    Number n = make_number(engine, width - i % 2, 0);
    n[0] |= 1;
    if (i % 2 != 0) n = (Big(n) * Big(3 + 2 * (engine() % (bound / 2 - 1)))).digits(width);
    bool is_divisible = false;
    for (Digit d = 3; d < bound; d += 2) is_divisible |= bn_ModD(n.data(), width, d) == 0;
    EXPECT_TRUE(is_divisible ? is_rejected(n) : !(is_rejected(n) && Big(n).is_prime()));
  }
  for (const std::uint32_t bits : {61U, 89U, 521U, 607U}) {  // Mersenne primes
    const std::uint32_t width = bits / digit_bits + 1;
    EXPECT_FALSE(is_rejected((power(2, bits, Big::unit(width + 1)) - 1).digits(width))) << bits;
  }
  for (Digit n = 3; n < 1U << 14; n += 2) EXPECT_FALSE(Big(n).is_prime() && is_rejected({n, 0}));
}

}  // namespace
