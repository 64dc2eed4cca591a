#include "scheme/key_pair.h"

#include "crypto/key_items.h"
#include "crypto/rsa_key_check.h"
#include "crypto/rsa_keygen.h"

namespace sealwright {

Status make_rsa_key(ZEB_RSA_PRIVATE_KEY& key, Digit exponent, std::uint32_t modulus_bits) {
  key = {};
  key.e[0] = exponent;
  key.eWords = 1;
  if (ZEB_RSA_KeyGen(&key, modulus_bits) != ZEB_SUCCESS) return SIGN_ERR_RSA;
  return rsa_key_agrees(key, KeyItemLayout::crt) ? ZEB_SUCCESS : SIGN_ERR_RSA;
}

void write_item_list(WritableBytes list, std::span<const KeyNumber> numbers) {
  std::uint32_t length = 0;
  for (const KeyNumber& number : numbers) {
    append_key_item(list.data(), length, number.digits, number.digit_count);
  }
}

}  // namespace sealwright
