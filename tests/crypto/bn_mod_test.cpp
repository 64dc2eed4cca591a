#include "crypto/bn_mod.h"

#include <gtest/gtest.h>

#include "tests/support/numbers.h"

namespace {

constexpr std::uint32_t max_width = 64;

void expect_reduction(Number a, const Number& m) {
  const Big expected = Big(a) % Big(m);
  bn_reduce_exactly(a.data(), width_of(a), m.data(), width_of(m));
  EXPECT_EQ(Big(a), expected);
}

/// Whether zeb_bn_ClassicalRed leaves digits above the modulus; congruent it always is.
bool reduces_irregularly(const Big& number, std::size_t width, const Number& m) {
  Number a = number.digits(width);
  zeb_bn_ClassicalRed(a.data(), width_of(a), m.data(), width_of(m));
  EXPECT_EQ(Big(a) % Big(m), number % Big(m));
  return bn_significant_digits(a.data(), width_of(a)) > width_of(m);
}

void expect_product(const Number& a, const Number& b, const Number& m) {
  Number over_a = a;
  zeb_bn_ModMul(over_a.data(), over_a.data(), b.data(), m.data(), width_of(m));
  EXPECT_EQ(Big(over_a), Big(a) * Big(b) % Big(m));
  Number over_b = b;
  zeb_bn_ModMul(over_b.data(), a.data(), over_b.data(), m.data(), width_of(m));
  EXPECT_EQ(over_b, over_a);
  Number square = a;
  zeb_bn_ModMul(square.data(), square.data(), square.data(), m.data(), width_of(m));
  EXPECT_EQ(Big(square), Big(a) * Big(a) % Big(m));
}

void expect_power(const Number& base, const Number& m, const Number& e) {
  Number r(m.size(), 0xAAAAAAAA);
  zeb_bn_Binary(r.data(), base.data(), m.data(), width_of(m), e.data(), width_of(e));
  EXPECT_EQ(Big(r), power(Big(base), Big(e), Big(m))) << Big(base) << ", e " << Big(e);
}

TEST(BnMod, ReducesMultipliesAndRaises) {
  std::mt19937_64 engine(9);
  for (std::uint32_t i = 0; i < max_width * shape_count * shape_count && !HasFailure(); ++i) {
    const std::uint32_t width = 1 + i % max_width;
    const auto [shape, m_shape] = pair_of_shapes(i / max_width);
    Number m = make_number(engine, width, m_shape);
    m[0] |= 1;  // not zero
    if (i % 2 == 0) m.back() |= digit_top_bit;
    const Number a = make_number(engine, width, shape);
    const Number b = make_number(engine, width, static_cast<int>(engine() % shape_count));
    expect_reduction(make_number(engine, width + 1 + engine() % width, shape), m);
    expect_product(a, b, m);
    expect_power(a, m, {shape == 0 ? 65537U : b[0] >> 20 | 1, 0});
    if (shape == 0 && m_shape == 0 && (width <= 8 || width % 16 == 0)) expect_power(a, m, b);
  }
}

// A segment below the modulus but with the same top digit: the trial digit 2^32 is cut to 0.
TEST(BnMod, OnlyTheExactReductionSurvivesAnUnclampedTrialDigit) {
  std::mt19937_64 engine(10);
  for (std::uint32_t width = 3; width <= max_width; ++width) {
    Number m = make_number(engine, width, 0);
    m.back() |= digit_top_bit;
    const Number a = make_number(engine, width, 0);
    EXPECT_FALSE(reduces_irregularly(Big(a) * (Big(m) - 1), 2 * width, m)) << width;

    // A number, and a product, whose leading digits are those of m - 1.
    const Number below = (Big(m) - 1).digits(width);
    const Big number = Big(below) * Big::unit(width) + Big(a);
    EXPECT_TRUE(reduces_irregularly(number, 2 * width, m)) << width;
    expect_reduction(number.digits(2 * width), m);
    const Number shift = Big::unit(1 + engine() % (width - 1)).digits(width);
    EXPECT_TRUE(reduces_irregularly(Big(below) * Big(shift), 2 * width, m)) << width;
    expect_product(below, shift, m);

    // A modulus just above the leading digits of a square.
    Number root = make_number(engine, width, 0);
    root[width - 1] = 0;
    root[width - 2] |= 0xC0000000;
    const Big square = Big(root) * Big(root);
    m = (square / Big::unit(width - 2) + 1).digits(width);
    EXPECT_TRUE(reduces_irregularly(square, 2 * width, m)) << width;
    expect_power(root, m, {2});
  }
}

TEST(BnMod, EqualLengthsReduceNothingAndPowerZeroIsOne) {
  Number a = {0xFFFFFFFF, 0xFFFFFFFF};
  const Number m = {1, 0x80000000};
  zeb_bn_ClassicalRed(a.data(), 2, m.data(), 2);
  EXPECT_EQ(a, Number({0xFFFFFFFF, 0xFFFFFFFF}));
  expect_reduction(a, m);
  const Number zero(3);
  const Number one = {1, 0};
  for (const std::uint32_t e_width : {0U, 1U, 3U}) {
    for (const Number& modulus : {m, one}) {
      Number r = {9, 9};
      zeb_bn_Binary(r.data(), a.data(), modulus.data(), 2, zero.data(), e_width);
      EXPECT_EQ(r, one);
    }
  }
}

TEST(BnMod, InvertsExactlyWhatHasAnInverse) {
  std::mt19937_64 engine(13);
  int without_inverse = 0;
  for (std::uint32_t i = 0; i < max_width * shape_count * shape_count; ++i) {
    const std::uint32_t width = 1 + i % max_width;
    const auto [a_shape, m_shape] = pair_of_shapes(i / max_width);
    const Number a = make_number(engine, width, a_shape);
    const Number m = make_number(engine, width, m_shape);
    if (!(Big(1) < Big(m))) continue;
    const bool exists = gcd(Big(a), Big(m)) == Big(1);
    without_inverse += exists ? 0 : 1;
    const Status expected = exists ? ZEB_SUCCESS : 0xFFFF0000;
    Number inv(width);
    ASSERT_EQ(zeb_bn_Euclid(inv.data(), a.data(), m.data(), width), expected) << Big(a) << Big(m);
    ASSERT_EQ(zeb_bn_Euclid(nullptr, a.data(), m.data(), width), expected);
    ASSERT_EQ(Big(inv), exists ? inverse(Big(a), Big(m)) : Big(0)) << Big(a) << " mod " << Big(m);
  }
  EXPECT_GT(without_inverse, 500);
}

}  // namespace
