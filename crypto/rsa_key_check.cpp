#include "crypto/rsa_key_check.h"

#include <algorithm>
#include <array>

#include "base/wipe.h"
#include "crypto/bn_mod.h"
#include "crypto/rsa.h"

namespace {

using FullNumber = std::array<Digit, rsa_number_capacity>;
using HalfNumber = std::array<Digit, rsa_crt_capacity>;
using Product = std::array<Digit, bn_scratch_digits>;

/// Whether the numbers have the widths that the arithmetic below relies on.
bool widths_agree(const ZEB_RSA_PRIVATE_KEY& key) {
  const std::uint32_t half = key.nWords / 2;
  const bool sizes = half != 0 && key.nWords == 2 * half && key.nWords <= rsa_max_modulus_digits &&
                     key.eWords <= key.nWords && key.dWords == key.nWords;
  return sizes && key.pWords == half && key.qWords == half && key.dPWords == half &&
         key.dQWords == half && key.qInvWords == half;
}

/// Whether `value` modulo `m` is `expected`; the last two have `length` digits.
bool has_remainder(const Digit* value, std::uint32_t value_length, const Digit* m,
                   std::uint32_t length, const Digit* expected) {
  HalfNumber remainder = {};
  const WipeOnExit remainder_guard(remainder);
  return zeb_bn_Div(nullptr, remainder.data(), value, value_length, m, length) == 0 &&
         zeb_bn_cmp(remainder.data(), length, expected, length) == 0;
}

/// Whether a * b modulo m is 1; `b` and `m` have `length` digits.
bool multiplies_to_one(const Digit* a, std::uint32_t a_length, const Digit* b, const Digit* m,
                       std::uint32_t length) {
  constexpr HalfNumber one = {1};
  Product product = {};
  const WipeOnExit product_guard(product);
  zeb_bn_Mul(product.data(), a, a_length, b, length);
  return has_remainder(product.data(), a_length + length, m, length, one.data());
}

/// Whether `exponent` is d modulo prime - 1, and undoes e there.
bool exponent_agrees(const ZEB_RSA_PRIVATE_KEY& key, const Digit* prime, const Digit* exponent) {
  constexpr Digit one = 1;
  HalfNumber order = {};
  const WipeOnExit order_guard(order);
  zeb_bn_Sub(order.data(), prime, key.pWords, &one, 1);
  return has_remainder(key.d, key.dWords, order.data(), key.pWords, exponent) &&
         multiplies_to_one(key.e, key.eWords, exponent, order.data(), key.pWords);
}

/// A divisor of zero, from damage, fails by itself.
bool numbers_agree(const ZEB_RSA_PRIVATE_KEY& key) {
  Product product = {};
  const WipeOnExit product_guard(product);
  zeb_bn_Mul(product.data(), key.p, key.pWords, key.q, key.qWords);
  return zeb_bn_cmp(product.data(), key.nWords, key.n, key.nWords) == 0 &&
         exponent_agrees(key, key.p, key.dP) && exponent_agrees(key, key.q, key.dQ) &&
         multiplies_to_one(key.q, key.qWords, key.qInv, key.p, key.pWords);
}

/// Raises a fixed number below the modulus, and has it back by e. The numbers above agree in a key
/// whose p or q is no prime as well; this does not.
bool operation_agrees(const ZEB_RSA_PRIVATE_KEY& key, KeyItemLayout layout) {
  const std::uint32_t digits = key.nWords;
  FullNumber base = {};
  std::fill_n(base.begin(), digits, 0x5A5A5A5A);
  FullNumber power = {};
  const WipeOnExit power_guard(power);  // a faulty one gives the key away
  FullNumber again = {};
  const WipeOnExit again_guard(again);
  zeb_bn_Binary(power.data(), base.data(), key.n, digits, key.d, digits);
  zeb_bn_Binary(again.data(), power.data(), key.n, digits, key.e, key.eWords);
  if (again != base) return false;
  if (layout != KeyItemLayout::crt) return true;
  zeb_RSA_CrtDec(again.data(), base.data(), &key);
  return again == power;
}

}  // namespace

namespace sealwright {

bool rsa_key_agrees(const ZEB_RSA_PRIVATE_KEY& key, KeyItemLayout layout) {
  if (!widths_agree(key) || !numbers_agree(key)) return false;
  const bool in_order = zeb_bn_cmp(key.p, key.pWords, key.q, key.qWords) > 0;
  const bool agrees = (in_order || layout != KeyItemLayout::crt) && operation_agrees(key, layout);
  wipe_dead_stack();
  return agrees;
}

}  // namespace sealwright
