#pragma once

#include <cstddef>
#include <cstdint>

#include "base/bytes.h"
#include "crypto/bn.h"
#include "crypto/rsa_key.h"

// The serialised private key: packed items of (u32 byte length, that many bytes of digits), all
// little-endian. Only whole digits of an item count.

/// One item as a stored record holds it, with room for `Capacity` bytes of the number.
template <std::size_t Capacity>
struct KeyItem {
  std::uint32_t length;  // bytes
  std::uint8_t number[Capacity];
};
using Item4 = KeyItem<4>;
using Item64 = KeyItem<64>;
using Item128 = KeyItem<128>;
using Item256 = KeyItem<256>;

/// Which items a list starts with.
enum class KeyItemLayout {
  crt,    // n, e, d, p, q, dP, dQ, qInv
  plain,  // n, d; whatever follows is ignored
};

/// Cursor over length-prefixed items that knows what is left and can say no.
struct KeyItemCursor {
  const std::uint8_t* next;
  std::uint32_t left;  // bytes
};

namespace sealwright {

/// Takes the bytes of the next item, all that its length states.
/// @return false, with the cursor where it was, when the item passes the end of the list.
[[nodiscard]] bool read_item_bytes(KeyItemCursor& cursor, ByteView& number);

/// Reads the next item into `digits` of room for `capacity` digits and stores its digit count.
/// @return false, with nothing written, when the item passes the capacity or the end of the list.
[[nodiscard]] bool read_key_item(KeyItemCursor& cursor, Digit* digits, std::uint32_t capacity,
                                 std::uint32_t& digit_count);

/// Appends an item of `digit_count` digits after the `list_length` bytes at `list`, which has room
/// for 4 + 4 * digit_count more, and advances `list_length`.
void append_key_item(std::uint8_t* list, std::uint32_t& list_length, const Digit* digits,
                     std::uint32_t digit_count);

/// Reads a whole list of `length` bytes into a zeroed `key` and checks that the private operation
/// can work on it: modulus of at most 64 digits and, in the CRT layout, primes of half its digits,
/// each with its top bit set.
/// @return false when the list is not such a key.
[[nodiscard]] bool read_private_key(const std::uint8_t* list, std::uint32_t length,
                                    KeyItemLayout layout, ZEB_RSA_PRIVATE_KEY& key);

}  // namespace sealwright
