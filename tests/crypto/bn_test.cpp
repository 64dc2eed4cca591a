#include "crypto/bn.h"

#include <gtest/gtest.h>

#include "tests/support/numbers.h"

namespace {

constexpr std::uint32_t max_width = 64;
constexpr std::uint32_t max_dividend = 131;

// Unequal widths half of the time; the second operand is also the leading digits of the first.
TEST(Bn, MatchesOpensslAtEveryWidthAndShape) {
  std::mt19937_64 engine(4);
  const Digit multipliers[] = {0, 1, 0xFFFFFFFF, 0x9E3779B9};
  int without_inverse = 0;
  for (std::size_t i = 0; i < max_width * shape_count * shape_count; ++i) {
    const std::size_t width = 1 + i % max_width;
    const std::size_t shape = i / max_width % shape_count, other = i / max_width / shape_count;
    const Number a = make_number(engine, width, shape);
    const std::size_t narrow = engine() % 2 == 0 ? width : 1 + engine() % width;
    Number leading(a.end() - static_cast<std::ptrdiff_t>(narrow), a.end());
    leading[0] ^= static_cast<Digit>(engine() % 4);
    for (const Number& b : {make_number(engine, narrow, other), leading}) {
      check_arithmetic(a, b, multipliers[engine() % 4]);
      check_division(a, b);
    }
    Number m = make_number(engine, width, other);
    m[0] |= 2;
    without_inverse += check_inverse(a, m) ? 0 : 1;
    if (i % 2 == 0) m.back() |= digit_top_bit;
    const Number b = make_number(engine, width, engine() % shape_count);
    const bool wide_exponent = i < max_width && (width <= 8 || width % 16 == 0);
    check_modular(a, b, m, wide_exponent ? b : Number{shape == 0 ? 65537U : b[0] >> 20, 0});
    check_division(make_number(engine, width + 1 + engine() % width, shape), m);
    // A dividend that starts with the digits of m - 1 makes the leading digits of a later segment
    // equal the divisor's, where the trial digit is clamped to 0xFFFFFFFF.
    Number dividend = make_number(engine, 1 + engine() % (max_dividend - width), 0);
    std::ranges::copy((Big(m) - 1).digits(width), std::back_inserter(dividend));
    check_division(dividend, m);
  }
  EXPECT_GT(without_inverse, 500);
}

/// Whether zeb_bn_ClassicalRed leaves digits above the modulus; congruent it always is.
bool reduces_irregularly(const Big& number, const Number& m) {
  Number a = number.digits(2 * m.size());
  zeb_bn_ClassicalRed(a.data(), width_of(a), m.data(), width_of(m));
  EXPECT_EQ(Big(a) % m, number % m);
  return bn_significant_digits(a.data(), width_of(a)) > width_of(m);
}

// A segment below the modulus but with the same top digit: the trial digit 2^32 is cut to 0.
TEST(Bn, OnlyTheExactReductionSurvivesAnUnclampedTrialDigit) {
  std::mt19937_64 engine(10);
  for (std::size_t width = 3; width <= max_width; ++width) {
    Number m = make_number(engine, width, 0);
    m.back() |= digit_top_bit;
    const Number a = make_number(engine, width, 0), below = (Big(m) - 1).digits(width);
    EXPECT_FALSE(reduces_irregularly(Big(a) * below, m)) << width;
    // A number, and a product, whose leading digits are those of m - 1.
    const Big number = Big(below) * Big::unit(width) + a;
    EXPECT_TRUE(reduces_irregularly(number, m)) << width;
    check_division(number.digits(2 * width), m);
    const Number shift = Big::unit(1 + engine() % (width - 1)).digits(width);
    EXPECT_TRUE(reduces_irregularly(Big(below) * shift, m)) << width;
    check_modular(below, shift, m, {1});
    // A modulus just above the leading digits of a square.
    Number root = make_number(engine, width, 0);
    root[width - 1] = 0;
    root[width - 2] |= 0xC0000000;
    m = (Big(root) * root / Big::unit(width - 2) + 1).digits(width);
    EXPECT_TRUE(reduces_irregularly(Big(root) * root, m)) << width;
    check_modular(root, root, m, {2});
  }
}

TEST(Bn, EqualLengthsReduceNothingAndPowerZeroIsOne) {
  const Number m = {1, 0x80000000}, one = {1, 0}, zero(3);
  Number a = {0xFFFFFFFF, 0xFFFFFFFF};
  zeb_bn_ClassicalRed(a.data(), 2, m.data(), 2);
  EXPECT_EQ(a, Number({0xFFFFFFFF, 0xFFFFFFFF}));
  for (const std::uint32_t e_width : {0U, 1U, 3U}) {
    zeb_bn_Binary(a.data(), m.data(), one.data(), 2, zero.data(), e_width);
    EXPECT_EQ(a, one);
  }
}

TEST(Bn, OctetStringsCountOctetsOneWayAndDigitsTheOther) {
  const Bytes string = {0, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88};
  Bytes back(8);
  Number digits = {9, 9, 9};
  // A ragged length takes the octets in front of the string into the top digit.
  OS2BN(digits.data(), string.data() + 3, 5);
  OS2BN(digits.data(), string.data(), 0);
  EXPECT_EQ(digits, Number({0x55667788, 0x00223344, 9}));
  BN2OS(back.data(), digits.data(), 2);
  EXPECT_EQ(back, string);
}

}  // namespace
