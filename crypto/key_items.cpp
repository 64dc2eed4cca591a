#include "crypto/key_items.h"

#include <cstring>

#include "base/bytes.h"

namespace sealwright {

namespace {

constexpr std::uint32_t length_prefix_bytes = 4;

bool has_top_bit(const Digit* number, std::uint32_t digit_count) {
  return digit_count != 0 && (number[digit_count - 1] & digit_top_bit) != 0;
}

}  // namespace

bool read_item_bytes(KeyItemCursor& cursor, ByteView& number) {
  if (cursor.left < length_prefix_bytes) return false;
  const std::uint32_t length = load_le32(cursor.next);
  if (length > cursor.left - length_prefix_bytes) return false;
  number = {cursor.next + length_prefix_bytes, length};
  cursor.next += length_prefix_bytes + length;
  cursor.left -= length_prefix_bytes + length;
  return true;
}

bool read_key_item(KeyItemCursor& cursor, Digit* digits, std::uint32_t capacity,
                   std::uint32_t& digit_count) {
  if (cursor.left < length_prefix_bytes) return false;
  const std::uint32_t count = load_le32(cursor.next) / digit_bytes;
  const std::uint32_t room = (cursor.left - length_prefix_bytes) / digit_bytes;
  if (count > capacity || count > room) return false;
  std::memcpy(digits, cursor.next + length_prefix_bytes, std::size_t{digit_bytes} * count);
  digit_count = count;
  cursor.next += length_prefix_bytes + digit_bytes * count;
  cursor.left -= length_prefix_bytes + digit_bytes * count;
  return true;
}

void append_key_item(std::uint8_t* list, std::uint32_t& list_length, const Digit* digits,
                     std::uint32_t digit_count) {
  store_le32(list + list_length, digit_bytes * digit_count);
  std::memcpy(list + list_length + length_prefix_bytes, digits,
              std::size_t{digit_bytes} * digit_count);
  list_length += length_prefix_bytes + digit_bytes * digit_count;
}

bool read_private_key(const std::uint8_t* list, std::uint32_t length, KeyItemLayout layout,
                      ZEB_RSA_PRIVATE_KEY& key) {
  KeyItemCursor cursor = {list, length};
  const auto number = [&](Digit* digits, std::uint32_t& count) {
    return read_key_item(cursor, digits, rsa_number_capacity, count);
  };
  const auto crt_number = [&](Digit* digits, std::uint32_t& count) {
    return read_key_item(cursor, digits, rsa_crt_capacity, count);
  };
  if (!number(key.n, key.nWords)) return false;
  if (key.nWords > rsa_max_modulus_digits || !has_top_bit(key.n, key.nWords)) return false;
  if (layout == KeyItemLayout::plain) return number(key.d, key.dWords);

  const bool complete = number(key.e, key.eWords) && number(key.d, key.dWords) &&
                        crt_number(key.p, key.pWords) && crt_number(key.q, key.qWords) &&
                        crt_number(key.dP, key.dPWords) && crt_number(key.dQ, key.dQWords) &&
                        crt_number(key.qInv, key.qInvWords);
  return complete && 2 * key.pWords == key.nWords && 2 * key.qWords == key.nWords &&
         has_top_bit(key.p, key.pWords) && has_top_bit(key.q, key.qWords);
}

}  // namespace sealwright
