#include "scheme/key_pair.h"

#include "crypto/key_items.h"
#include "crypto/prime.h"

void make_rsa_key(ZEB_RSA_PRIVATE_KEY& key, Digit exponent, std::uint32_t modulus_bits) {
  key = {};
  key.e[0] = exponent;
  key.eWords = 1;
  // The status can be dropped: only a size that neither scheme asks for has one.
  ZEB_RSA_KeyGen(&key, modulus_bits);
}

ByteView write_item_list(WritableBytes list, std::span<const KeyNumber> numbers) {
  std::uint32_t length = 0;
  for (const KeyNumber& number : numbers) {
    append_key_item(list.data(), length, number.digits, number.digit_count);
  }
  return list.first(length);
}
