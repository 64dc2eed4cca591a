#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <span>

static_assert(std::endian::native == std::endian::little,
              "digits and stored words are used as they lie in memory");

/// Bytes that belong to somebody else: pointer and length in one value.
using ByteView = std::span<const std::uint8_t>;
using WritableBytes = std::span<std::uint8_t>;

namespace sealwright {

/// The bytes of a record, which has no padding.
template <typename Record>
ByteView view_of(const Record& record) {
  return {reinterpret_cast<const std::uint8_t*>(&record), sizeof record};
}
template <typename Record>
WritableBytes writable_view_of(Record& record) {
  return {reinterpret_cast<std::uint8_t*>(&record), sizeof record};
}

/// Length of a view as the 32-bit count that the library takes.
inline std::uint32_t length_of(ByteView bytes) {
  return static_cast<std::uint32_t>(bytes.size());
}

/// Reads four bytes at any alignment as a little-endian word.
inline std::uint32_t load_le32(const std::uint8_t* bytes) {
  std::uint32_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

/// Writes a word as four little-endian bytes at any alignment.
inline void store_le32(std::uint8_t* bytes, std::uint32_t word) {
  std::memcpy(bytes, &word, sizeof word);
}

/// Reads four bytes at any alignment as a big-endian word.
inline std::uint32_t load_be32(const std::uint8_t* bytes) {
  return __builtin_bswap32(load_le32(bytes));
}

/// Writes a word as four big-endian bytes at any alignment.
inline void store_be32(std::uint8_t* bytes, std::uint32_t word) {
  store_le32(bytes, __builtin_bswap32(word));
}

}  // namespace sealwright
