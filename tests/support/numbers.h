#pragma once

#include "crypto/bn_mod.h"
#include "tests/support/openssl.h"

// The relations that big-number operations have to keep, for any operands; each check throws at the
// first that is broken.

inline constexpr std::uint32_t shape_count = 8;

/// Shape 0 is random, the others are those that carries trip over.
inline Number make_number(std::mt19937_64& engine, std::size_t width, std::size_t shape) {
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

inline std::uint32_t width_of(const Number& number) {
  return static_cast<std::uint32_t>(number.size());
}

/// Sums, products and comparisons, b no wider than a.
inline void check_arithmetic(const Number& a, const Number& b, Digit d) {
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
  require(zeb_bn_cmp(a.data(), a_width, b.data(), b_width) == compare(a, b), "cmp");
  // Digits of the second operand above the width of the first do not count.
  require(
      zeb_bn_cmp(b.data(), b_width, a.data(), a_width) == compare(b, Big(a) % Big::unit(b_width)),
      "cmp with a wider operand");
}

/// Division and reduction of a by b, which is no wider.
inline void check_division(const Number& a, const Number& b) {
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
  bn_reduce_exactly(reduced.data(), width_of(a), b.data(), width_of(b));
  require(Big(reduced) == r, "reduction");
}

/// Product and power of a and b modulo m, which is not below 2; all of the same width.
inline void check_modular(const Number& a, const Number& b, const Number& m, const Number& e) {
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
  require(Big(r) == power(a, e, m), "Binary");
}

/// The inverse of a modulo m, which is not below 2. @return whether there is one.
inline bool check_inverse(const Number& a, const Number& m) {
  const Number untouched(m.size(), 0xA5A5A5A5);
  const bool exists = gcd(Big(a), Big(m)) == 1;
  const Status expected = exists ? ZEB_SUCCESS : 0xFFFF0000;
  Number inv = untouched;
  require(zeb_bn_Euclid(inv.data(), a.data(), m.data(), width_of(m)) == expected, "Euclid");
  require(zeb_bn_Euclid(nullptr, a.data(), m.data(), width_of(m)) == expected, "Euclid's answer");
  require(Big(inv) == (exists ? inverse(a, m) : Big(untouched)), "inverse");
  return exists;
}
