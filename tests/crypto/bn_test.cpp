#include <gtest/gtest.h>

#include "crypto/bn_limbs.h"
#include "crypto/bn_mod.h"
#include "crypto/cpu.h"
#include "crypto/prime_trial.h"
#include "tests/support/openssl.h"

namespace {

// The relations that big-number operations have to keep, for any operands. A check throws at the
// first that is broken.

constexpr std::uint32_t shape_count = 8;

/// Shape 0 is random, the others are those that carries trip over.
Number make_number(std::mt19937_64& engine, std::size_t width, std::size_t shape) {
  Number number(width);
  const std::size_t cut = engine() % width;
  for (std::size_t i = 0; i < width; ++i) {
    const auto random = static_cast<Digit>(engine());
    const bool top = i + 1 == width;
    const Digit choices[shape_count] = {
        random,                                   // random
        0,                                        // zero
        i == 0 ? 1U : 0U,                         // one
        0xFFFFFFFF,                               // all ones
        top ? random : 0,                         // top digit only
        top ? random >> (1 + cut % 31) : random,  // top bits clear
        i < cut ? random : 0,                     // zero top digits
        random % 2 == 0 ? 0 : 0xFFFFFFFF,         // digits of all zeros or all ones
    };
    number[i] = choices[shape];
  }
  return number;
}

/// Sums, products and comparisons, b no wider than a.
void check_arithmetic(const Number& a, const Number& b, Digit d) {
  const std::uint32_t a_width = width_of(a), b_width = width_of(b);
  const Big unit = Big::unit(a_width);
  for (const bool adds : {true, false}) {
    const auto operation = adds ? zeb_bn_Add : zeb_bn_Sub;
    Number over_a = a, over_b = b;
    const Big carry = unit * operation(over_a.data(), over_a.data(), a_width, b.data(), b_width);
    require(adds ? Big(over_a) + carry == Big(a) + b : Big(over_a) - carry == Big(a) - b,
            "Add, Sub");
    over_b.resize(a_width);
    operation(over_b.data(), a.data(), a_width, over_b.data(), b_width);
    require(over_b == over_a, "Add, Sub over the second operand");
  }
  Number r = a;
  Big carry = zeb_bn_MulAdd(r.data(), a_width, b.data(), b_width, d);
  require(Big(r) + unit * carry == Big(a) + Big(b) * d, "MulAdd");
  r = a;
  carry = zeb_bn_MulSub(r.data(), a_width, b.data(), b_width, d);
  require(Big(r) - unit * carry == Big(a) - Big(b) * d, "MulSub");
  Number product(a.size() + b.size(), 0xA5A5A5A5), square(2 * a.size(), 0xA5A5A5A5);
  zeb_bn_Mul(product.data(), a.data(), a_width, b.data(), b_width);
  require(Big(product) == Big(a) * b, "Mul");
  zeb_bn_Mul(product.data(), b.data(), b_width, a.data(), a_width);
  require(Big(product) == Big(a) * b, "Mul, operands exchanged");
  zeb_bn_Sqr(square.data(), a.data(), a_width);
  require(Big(square) == Big(a) * a, "Sqr");
  require(zeb_bn_cmp(a.data(), a_width, b.data(), b_width) == compare(Big(a), b), "cmp");
  // Digits of the second operand above the width of the first do not count.
  require(
      zeb_bn_cmp(b.data(), b_width, a.data(), a_width) == compare(b, Big(a) % Big::unit(b_width)),
      "cmp with a wider operand");
}

/// Division and reduction of a by b, which is no wider.
void check_division(const Number& a, const Number& b) {
  constexpr Digit untouched = 0xA5A5A5A5;
  Number q(a.size() - b.size() + 1, untouched), r(b.size(), untouched);
  const auto divide_into = [&](Digit* quotient) {
    return zeb_bn_Div(quotient, r.data(), a.data(), width_of(a), b.data(), width_of(b));
  };
  if (Big(b) == 0) {
    require(divide_into(q.data()) == 1 && r == Number(r.size(), untouched), "Div by zero");
    return;
  }
  require(divide_into(q.data()) == 0 && Big(r) == Big(a) % b, "remainder");
  // A divisor with zero top digits can have a wider quotient, whose low digits are given.
  require(Big(q) == Big(a) / b % Big::unit(q.size()), "quotient");
  require(divide_into(nullptr) == 0 && Big(r) == Big(a) % b, "Div without a quotient");
  require(Big(bn_ModD(a.data(), width_of(a), b[0] | 1)) == Big(a) % (b[0] | 1), "ModD");
  Number reduced = a;
  sealwright::bn_reduce_exactly(reduced.data(), width_of(a), b.data(), width_of(b));
  require(Big(reduced) == r, "reduction");
}

/// Product and power of a and b modulo m, which is not below 2; all of the same width.
void check_modular(const Number& a, const Number& b, const Number& m, const Number& e) {
  const Big product = Big(a) * b % m;
  Number r = a;
  zeb_bn_ModMul(r.data(), r.data(), b.data(), m.data(), width_of(m));
  require(Big(r) == product, "ModMul");
  r = b;
  zeb_bn_ModMul(r.data(), a.data(), r.data(), m.data(), width_of(m));
  require(Big(r) == product, "ModMul over its second operand");
  r = a;
  zeb_bn_ModMul(r.data(), r.data(), r.data(), m.data(), width_of(m));
  require(Big(r) == Big(a) * a % m, "ModMul as a square");
  r = Number(m.size(), 0xA5A5A5A5);
  zeb_bn_Binary(r.data(), a.data(), m.data(), width_of(m), e.data(), width_of(e));
  require(Big(r) == power(a, e, Big(m)), "Binary");
}

/// The inverse of a modulo m, which is not below 2. @return whether there is one.
bool check_inverse(const Number& a, const Number& m) {
  const Number untouched(m.size(), 0xA5A5A5A5);
  const bool exists = gcd(Big(a), Big(m)) == 1;
  const Status expected = exists ? ZEB_SUCCESS : ZEB_ERR_FAIL;
  Number inv = untouched;
  require(zeb_bn_Euclid(inv.data(), a.data(), m.data(), width_of(m)) == expected, "Euclid");
  require(zeb_bn_Euclid(nullptr, a.data(), m.data(), width_of(m)) == expected, "Euclid's answer");
  require(Big(inv) == (exists ? inverse(Big(a), m) : Big(untouched)), "inverse");
  return exists;
}

constexpr std::uint32_t max_width = 64;
constexpr std::uint32_t max_dividend = 131;

/// Calls check(width, shape, other shape) for every width and pair of shapes.
template <typename Check>
void for_every_width_and_shapes(Check check) {
  for (std::size_t width = 1; width <= max_width; ++width) {
    for (std::size_t shape = 0; shape < shape_count * shape_count; ++shape) {
      check(width, shape % shape_count, shape / shape_count);
    }
  }
}

// Unequal widths half of the time; the second operand is also the leading digits of the first.
TEST(Bn, SumsProductsAndQuotientsMatchOpenssl) {
  std::mt19937_64 engine(4);
  const Digit multipliers[] = {0, 1, 0xFFFFFFFF, 0x9E3779B9};
  for_every_width_and_shapes([&](std::size_t width, std::size_t shape, std::size_t other) {
    const Number a = make_number(engine, width, shape);
    const std::size_t narrow = engine() % 2 == 0 ? width : 1 + engine() % width;
    Number leading(a.end() - static_cast<std::ptrdiff_t>(narrow), a.end());
    leading[0] ^= static_cast<Digit>(engine() % 4);
    for (const Number& b : {make_number(engine, narrow, other), leading}) {
      check_arithmetic(a, b, multipliers[engine() % 4]);
      check_division(a, b);
    }
  });
}

// A dividend that starts with the digits of m - 1 makes the leading digits of a later segment equal
// the divisor's, where the trial digit is clamped to 0xFFFFFFFF.
TEST(Bn, LongDividendsMatchOpenssl) {
  std::mt19937_64 engine(5);
  for_every_width_and_shapes([&](std::size_t width, std::size_t shape, std::size_t other) {
    Number m = make_number(engine, width, other);
    m[0] |= 1;
    if (engine() % 2 == 0) m.back() |= digit_top_bit;
    check_division(make_number(engine, width + 1 + engine() % width, shape), m);
    Number dividend = make_number(engine, 1 + engine() % (max_dividend - width), 0);
    std::ranges::copy((Big(m) - 1).digits(width), std::back_inserter(dividend));
    check_division(dividend, m);
  });
}

TEST(Bn, ModularProductsAndPowersMatchOpenssl) {
  std::mt19937_64 engine(6);
  for_every_width_and_shapes([&](std::size_t width, std::size_t shape, std::size_t other) {
    const Number a = make_number(engine, width, shape), b = make_number(engine, width, 0);
    Number m = make_number(engine, width, other);
    m[0] |= 2;
    if (engine() % 2 == 0) m.back() |= digit_top_bit;
    const bool wide_exponent = shape == 0 && other == 0 && (width <= 8 || width % 16 == 0);
    check_modular(a, b, m, wide_exponent ? b : Number{shape == 0 ? 65537U : b[0] >> 20, 0});
    check_modular(a, make_number(engine, width, other), m, {1});
  });
}

TEST(Bn, InversesMatchOpenssl) {
  std::mt19937_64 engine(7);
  int without_inverse = 0;
  for_every_width_and_shapes([&](std::size_t width, std::size_t shape, std::size_t other) {
    Number m = make_number(engine, width, other);
    m[0] |= 2;
    without_inverse += check_inverse(make_number(engine, width, shape), m) ? 0 : 1;
  });
  EXPECT_GT(without_inverse, 500);
}

/// Whether zeb_bn_ClassicalRed leaves digits above the modulus; congruent it always is.
bool reduces_irregularly(const Big& number, const Number& m) {
  Number a = number.digits(2 * m.size());
  zeb_bn_ClassicalRed(a.data(), width_of(a), m.data(), width_of(m));
  EXPECT_EQ(Big(a) % m, number % m);
  return sealwright::bn_significant_digits(a.data(), width_of(a)) > width_of(m);
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

TEST(Bn, EqualLengthsReduceNothingPowerZeroIsOneAndWidthsHaveABound) {
  const Number m = {1, 0x80000000}, one = {1, 0}, zero(3);
  Number a = {0xFFFFFFFF, 0xFFFFFFFF};
  zeb_bn_ClassicalRed(a.data(), 2, m.data(), 2);
  EXPECT_EQ(a, Number({0xFFFFFFFF, 0xFFFFFFFF}));
  for (const std::uint32_t e_width : {0U, 1U, 3U}) {
    zeb_bn_Binary(a.data(), m.data(), one.data(), 2, zero.data(), e_width);
    EXPECT_EQ(a, one);
  }
  const Number wide = Big(1).digits(67);
  EXPECT_EQ(zeb_bn_Euclid(nullptr, wide.data(), wide.data(), 67), ZEB_ERR_FAIL);
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

/// Product and power on assembly rows, portable words and digits. For operands below the modulus
/// the words never give up.
void check_paths(const Number& a, const Number& b, const Number& m) {
  const CryptoPaths before = sealwright::crypto_paths();
  for (const auto& [words, rows] : {std::pair(true, true), {true, false}, {false, false}}) {
    sealwright::force_crypto_paths({before.sha1, before.aes, words, rows});
    check_modular(a, b, m, {b[0]});
    const bool taken = words && sealwright::available_crypto_paths().bn_limbs;
    EXPECT_EQ(sealwright::bn_limbs_apply(m.data(), width_of(m)), taken);
    if (!taken || !(Big(a) < m) || !(Big(b) < m)) continue;
    Number r(m.size());
    EXPECT_TRUE(sealwright::bn_limbs_mod_mul(r.data(), a.data(), b.data(), m.data(), width_of(m)));
    EXPECT_EQ(Big(r), Big(a) * b % m);
  }
  sealwright::force_crypto_paths(before);
}

TEST(WordPath, AgreesWithDigitsAndOpenssl) {
  std::mt19937_64 engine(30);
  for (std::uint32_t i = 0; i < 8 * shape_count * shape_count && !HasFailure(); ++i) {
    const std::uint32_t width = 8 * (1 + i % 8);
    Number m = make_number(engine, width, i / 8 / shape_count);
    m.back() |= digit_top_bit;
    const Number a = make_number(engine, width, i / 8 % shape_count);
    const Number b = make_number(engine, width, engine() % shape_count);
    check_paths(a, b, m);
    check_paths((Big(m) - 1).digits(width), (Big(a) % m).digits(width), m);
    // Times a power of the radix, these numbers come out at a multiple of m, right above it or
    // right below: trial words at the edge, and remainders with nothing at the top.
    const std::size_t shift = 1 + engine() % (width - 4);
    const Big edge = Big(m) * Big(1 + engine() % 3) / Big::unit(shift);
    const Big below = Big(engine() % 12) * Big::unit(width - 2 - shift);
    for (const Big& number : {edge, edge + 1, edge - below}) {
      check_paths((number % Big(m)).digits(width), Big::unit(shift + 2).digits(width), m);
    }
    // Irregular to the end, with nothing left above the modulus.
    check_paths(Number(width, 0xFFFFFFFF), ((Big(m) + 1) % Big::unit(width)).digits(width), m);
  }
}

TEST(TrialDivision, RejectsCompositesWithASmallFactorAndNoPrime) {
  std::mt19937_64 engine(31);
  const auto is_rejected = [](const Number& n) {
    return sealwright::has_small_factor(n.data(), width_of(n));
  };
  for (std::uint32_t i = 0; i < 150; ++i) {
    const std::uint32_t width = std::array{3U, 4U, 16U, 31U, 32U}[i % 5];
    const Digit bound = sealwright::trial_division_bound(width);
    Number n = make_number(engine, width - i % 2, 0);
    n[0] |= 1;
    if (i % 2 != 0) n = (Big(n) * Big(3 + 2 * (engine() % (bound / 2 - 1)))).digits(width);
    bool is_divisible = false;
    for (Digit d = 3; d < bound; d += 2) is_divisible |= bn_ModD(n.data(), width, d) == 0;
    EXPECT_TRUE(is_divisible ? is_rejected(n) : !(is_rejected(n) && Big(n).is_prime()));
  }
  for (Digit n = 3; n < 1U << 14; n += 2) EXPECT_FALSE(Big(n).is_prime() && is_rejected({n, 0}));
}

}  // namespace
