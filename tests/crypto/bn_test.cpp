#include "crypto/bn.h"

#include <gtest/gtest.h>

#include <numeric>

#include "tests/support/numbers.h"
#include "tests/support/test_bytes.h"

namespace {

constexpr std::size_t max_width = 64;
constexpr std::size_t max_dividend = 131;

void expect_sums(const Number& a, const Number& b) {
  const std::uint32_t width = width_of(a);
  const Big top = Big::unit(width);
  Number over_a = a;
  Number over_b = b;
  over_b.resize(width);
  const Big carry = zeb_bn_Add(over_a.data(), over_a.data(), width, b.data(), width_of(b));
  EXPECT_EQ(Big(over_a) + carry * top, Big(a) + Big(b));
  zeb_bn_Add(over_b.data(), a.data(), width, over_b.data(), width_of(b));
  EXPECT_EQ(over_b, over_a);

  over_a = a;
  std::ranges::copy(b, over_b.begin());
  const Big borrow = zeb_bn_Sub(over_a.data(), over_a.data(), width, b.data(), width_of(b));
  EXPECT_EQ(Big(over_a) - borrow * top, Big(a) - Big(b));
  zeb_bn_Sub(over_b.data(), a.data(), width, over_b.data(), width_of(b));
  EXPECT_EQ(over_b, over_a);
}

void expect_accumulation(const Number& r, const Number& a, Digit d) {
  Number sum = r;
  const Big carry = zeb_bn_MulAdd(sum.data(), width_of(r), a.data(), width_of(a), d);
  EXPECT_EQ(Big(sum) + carry * Big::unit(r.size()), Big(r) + Big(a) * Big(d));
  Number difference = r;
  const Big borrow = zeb_bn_MulSub(difference.data(), width_of(r), a.data(), width_of(a), d);
  EXPECT_EQ(Big(difference) - borrow * Big::unit(r.size()), Big(r) - Big(a) * Big(d));
}

void expect_products(const Number& a, const Number& b) {
  Number product(a.size() + b.size(), 0xAAAAAAAA);
  zeb_bn_Mul(product.data(), a.data(), width_of(a), b.data(), width_of(b));
  EXPECT_EQ(Big(product), Big(a) * Big(b));
  zeb_bn_Mul(product.data(), b.data(), width_of(b), a.data(), width_of(a));
  EXPECT_EQ(Big(product), Big(a) * Big(b));
  Number square(2 * b.size(), 0xAAAAAAAA);
  zeb_bn_Sqr(square.data(), b.data(), width_of(b));
  EXPECT_EQ(Big(square), Big(b) * Big(b));
}

void expect_division(const Number& a, const Number& b) {
  if (Big(b) == Big(0)) return;
  const Number divisor = b;
  Number quotient(a.size() - b.size() + 1);
  Number remainder(b.size());
  zeb_bn_Div(quotient.data(), remainder.data(), a.data(), width_of(a), divisor.data(), width_of(b));
  // A divisor with zero top digits can have a wider quotient, whose low digits are given.
  EXPECT_EQ(Big(quotient), (Big(a) / Big(b)).low(quotient.size()));
  EXPECT_EQ(Big(remainder), Big(a) % Big(b));
  EXPECT_EQ(divisor, b);
  Number remainder_only(b.size());
  zeb_bn_Div(nullptr, remainder_only.data(), a.data(), width_of(a), b.data(), width_of(b));
  EXPECT_EQ(remainder_only, remainder);
  EXPECT_EQ(Big(bn_ModD(a.data(), width_of(a), b[0] | 1)), Big(a) % Big(b[0] | 1));
}

int compare(const Big& a, const Big& b) {
  return BN_cmp(a.get(), b.get());
}

void expect_comparisons(const Number& a, const Number& b) {
  EXPECT_EQ(zeb_bn_cmp(a.data(), width_of(a), b.data(), width_of(b)), compare(a, b));
  // Digits of the second operand above the first one's width are not looked at.
  EXPECT_EQ(zeb_bn_cmp(b.data(), width_of(b), a.data(), width_of(a)),
            compare(b, Big(a).low(b.size())));
}

// Every width and pair of shapes, the second operand no wider than the first; it is also given the
// leading digits of the first.
TEST(Bn, MatchesOpenssl) {
  std::mt19937_64 engine(4);
  const Digit multipliers[] = {0, 1, 0xFFFFFFFF, 0x9E3779B9};
  for (std::size_t i = 0; i < max_width * shape_count * shape_count && !HasFailure(); ++i) {
    const Number a = make_number(engine, 1 + i % max_width, pair_of_shapes(i / max_width).first);
    const std::size_t width = engine() % 2 == 0 ? a.size() : 1 + engine() % a.size();
    Number leading(a.end() - static_cast<std::ptrdiff_t>(width), a.end());
    leading[0] ^= static_cast<Digit>(engine() % 4);
    for (const Number& b :
         {make_number(engine, width, pair_of_shapes(i / max_width).second), leading}) {
      expect_sums(a, b);
      expect_accumulation(a, b, multipliers[engine() % 4]);
      expect_products(a, b);
      expect_division(a, b);
      expect_comparisons(a, b);
    }
  }
}

// Dividends that start with the digits of b - 1 make the leading digits of a later segment equal
// the divisor's, where the trial digit is clamped to 0xFFFFFFFF.
TEST(Bn, DividesThroughTheClampedTrialDigit) {
  std::mt19937_64 engine(6);
  for (std::size_t i = 0; i < max_width * shape_count; ++i) {
    const std::size_t width = 1 + i % max_width;
    const Number b = make_number(engine, width, static_cast<int>(i / max_width));
    if (Big(b) == Big(0)) continue;
    expect_division(make_number(engine, max_dividend, 0), b);
    Number a = make_number(engine, 1 + engine() % (max_dividend - width), 0);
    std::ranges::copy((Big(b) - 1).digits(width), std::back_inserter(a));
    expect_division(a, b);
  }
}

TEST(Bn, SingleDigitOperations) {
  std::mt19937_64 engine(7);
  for (int i = 0; i < 2000; ++i) {
    const auto a = static_cast<Digit>(engine() >> engine() % 64);
    const auto b = static_cast<Digit>(engine() >> engine() % 64);
    const Digit d = static_cast<Digit>(engine() >> (32 + engine() % 32)) | 1;
    DoubleDigit product = 0;
    D_Mul_D(&product, a, b);
    EXPECT_EQ(Big(product), Big(a) * Big(b));
    EXPECT_EQ(Big(DD_Div_D(a, b, d)), (Big({b, a}) / Big(d)).low(1));
    EXPECT_EQ(Big(DD_Mod_D(a, b, d)), Big({b, a}) % Big(d));
    EXPECT_EQ(D_Gcd(a, b), std::gcd(a, b));
  }
  EXPECT_EQ(D_Gcd(7, 0), 7U);
}

TEST(Bn, OctetStringsCountOctetsOneWayAndDigitsTheOther) {
  std::mt19937_64 engine(8);
  for (std::uint32_t width = 1; width <= max_width; ++width) {
    Bytes octets = random_bytes(engine, digit_bytes * width);
    octets[0] = 0;  // leading zeros are kept on the way back
    Number digits(width);
    OS2BN(digits.data(), octets.data(), digit_bytes * width);
    EXPECT_EQ(Big(digits), Big::from_big_endian(octets));
    Bytes back(octets.size());
    BN2OS(back.data(), digits.data(), width);
    EXPECT_EQ(back, octets);
  }
  // A ragged length takes the octets in front of the string into the top digit.
  const Bytes string = {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88};
  Number digits = {9, 9, 9};
  OS2BN(digits.data(), string.data() + 3, 5);
  OS2BN(digits.data(), string.data(), 0);
  EXPECT_EQ(digits, Number({0x55667788, 0x11223344, 9}));
}

}  // namespace
