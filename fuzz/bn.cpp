// Big-number operations against OpenSSL's, at any width the library has, under any modulus.

#include "crypto/bn_mod.h"
#include "fuzz/input.h"
#include "tests/support/numbers.h"

namespace {

/// Some bytes at the low or the high end of a number that is otherwise zeros or ones.
Number take_number(FuzzInput& input, std::size_t width) {
  const std::uint8_t form = input.byte();
  const Bytes given = input.bytes(std::min(std::size_t{2} * input.byte(), 4 * width));
  Bytes whole(4 * width, (form & 1) != 0 ? 0xFF : 0);
  std::ranges::copy(given, (form & 2) != 0 ? whole.end() - std::ssize(given) : whole.begin());
  Number number(width);
  for (std::size_t i = 0; i < width; ++i) number[i] = load_le32(&whole[4 * i]);
  return number;
}

/// r is a or, for a separate result, anything.
void add_up(const Number& a, const Number& b, Digit d, bool apart) {
  const std::uint32_t a_width = width_of(a);
  const std::uint32_t b_width = width_of(b);
  const Big unit = Big::unit(a_width);
  Number r = apart ? Number(a_width) : a;
  const Digit* operand = apart ? a.data() : r.data();
  Digit carry = zeb_bn_Add(r.data(), operand, a_width, b.data(), b_width);
  require(Big(r) + unit * carry == Big(a) + b, "Add");
  r = a;
  carry = zeb_bn_Sub(r.data(), operand, a_width, b.data(), b_width);
  require(Big(r) - unit * carry == Big(a) - b, "Sub");
  r = a;
  carry = zeb_bn_MulAdd(r.data(), a_width, b.data(), b_width, d);
  require(Big(r) + unit * carry == Big(a) + Big(b) * d, "MulAdd");
  r = a;
  carry = zeb_bn_MulSub(r.data(), a_width, b.data(), b_width, d);
  require(Big(r) - unit * carry == Big(a) - Big(b) * d, "MulSub");
}

void multiply(const Number& a, const Number& b) {
  Number product(a.size() + b.size(), 0xA5A5A5A5);
  zeb_bn_Mul(product.data(), a.data(), width_of(a), b.data(), width_of(b));
  require(Big(product) == Big(a) * b, "Mul");
  Number square(2 * a.size(), 0xA5A5A5A5);
  zeb_bn_Sqr(square.data(), a.data(), width_of(a));
  require(Big(square) == Big(a) * a, "Sqr");
}

void divide(const Number& a, const Number& b) {
  Number q(a.size() - b.size() + 1, 0xA5A5A5A5);
  Number r(b.size(), 0xA5A5A5A5);
  const auto divide_into = [&](Digit* quotient) {
    return zeb_bn_Div(quotient, r.data(), a.data(), width_of(a), b.data(), width_of(b));
  };
  if (Big(b) == 0) {
    require(divide_into(q.data()) == 1 && Big(r) == Number(r.size(), 0xA5A5A5A5), "Div by zero");
    return;
  }
  require(divide_into(q.data()) == 0 && Big(r) == Big(a) % b, "remainder");
  require(Big(q) == (Big(a) / b).low(q.size()), "quotient");
  require(divide_into(nullptr) == 0 && Big(r) == Big(a) % b, "Div without a quotient");
  Number reduced = a;
  bn_reduce_exactly(reduced.data(), width_of(a), b.data(), width_of(b));
  require(Big(reduced) == r, "reduction");
}

void multiply_modulo(const Number& a, const Number& b, const Number& m) {
  for (const bool over_a : {true, false}) {
    Number r = over_a ? a : b;
    zeb_bn_ModMul(r.data(), over_a ? r.data() : a.data(), over_a ? b.data() : r.data(), m.data(),
                  width_of(m));
    require(Big(r) == Big(a) * b % m, "ModMul");
  }
  Number r = a;
  zeb_bn_ModMul(r.data(), r.data(), r.data(), m.data(), width_of(m));
  require(Big(r) == Big(a) * a % m, "ModMul as a square");
}

void raise(const Number& base, const Number& e, const Number& m) {
  Number r(m.size(), 0xA5A5A5A5);
  zeb_bn_Binary(r.data(), base.data(), m.data(), width_of(m), e.data(), width_of(e));
  require(Big(r) == (Big(e) == 0 ? 1 : power(base, Big(e), m)), "Binary");
}

void invert(const Number& a, const Number& m) {
  Number inv(m.size(), 0xA5A5A5A5);
  const bool exists = gcd(Big(a), Big(m)) == 1;
  const Status expected = exists ? ZEB_SUCCESS : ZEB_ERR_FAIL;
  const Status status = zeb_bn_Euclid(inv.data(), a.data(), m.data(), width_of(m));
  require(status == expected, "status of Euclid");
  require(zeb_bn_Euclid(nullptr, a.data(), m.data(), width_of(m)) == expected, "answer of Euclid");
  require(Big(inv) == (exists ? inverse(Big(a), Big(m)) : Number(m.size(), 0xA5A5A5A5)), "inverse");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const int operation = input.byte() % 6;
  const std::size_t width = 1 + input.byte() % bn_max_modulus_digits;
  const Number b = take_number(input, width);
  const bool modular = operation > 2;
  const std::size_t widest = operation == 0 ? bn_scratch_digits : bn_max_modulus_digits;
  const Number a =
      take_number(input, modular ? width : width + input.byte() % (widest - width + 1));
  if (modular && Big(b) < 2) return 0;  // no modulus
  if (operation == 0) divide(a, b);
  if (operation == 1) add_up(a, b, input.word(), (input.byte() & 1) != 0);
  if (operation == 2) multiply(a, b);
  if (operation == 3) multiply_modulo(a, take_number(input, width), b);
  if (operation == 4) raise(a, take_number(input, input.byte() % 3), b);
  if (operation == 5) invert(a, b);
  return 0;
}
