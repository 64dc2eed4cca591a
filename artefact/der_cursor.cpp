#include "artefact/der_cursor.h"

#include <cstddef>

namespace sealwright {

namespace {

constexpr std::uint8_t long_form = 0x80;  // of a length; the low bits count the bytes that follow
constexpr std::size_t most_length_bytes = 4;

/// The length at the start of `bytes`, which is moved on to what comes after it.
std::optional<std::size_t> take_length(ByteView& bytes) {
  if (bytes.empty()) return std::nullopt;
  const std::uint8_t first = bytes.front();
  bytes = bytes.subspan(1);
  if (first < long_form) return first;
  const std::size_t count = first - long_form;
  if (count == 0 || count > most_length_bytes || count > bytes.size()) return std::nullopt;
  std::size_t length = 0;
  for (const std::uint8_t byte : bytes.first(count)) length = length << 8 | byte;
  const bool shortest = bytes.front() != 0 && length >= long_form;
  bytes = bytes.subspan(count);
  return shortest ? std::optional(length) : std::nullopt;
}

}  // namespace

std::optional<ByteView> DerCursor::take(DerTag tag) {
  if (left_.empty() || left_.front() != static_cast<std::uint8_t>(tag)) return std::nullopt;
  ByteView rest = left_.subspan(1);
  const auto length = take_length(rest);
  if (!length || *length > rest.size()) return std::nullopt;
  left_ = rest.subspan(*length);
  return rest.first(*length);
}

std::optional<ByteView> DerCursor::take_number() {
  const auto content = take(DerTag::integer);
  if (!content || content->empty() || content->front() >= 0x80) return std::nullopt;
  if (content->front() != 0) return content;
  // A zero in front stands for 0, or keeps a set top bit from being a sign.
  const ByteView number = content->subspan(1);
  const bool shortest = number.empty() || number.front() >= 0x80;
  return shortest ? std::optional(number) : std::nullopt;
}

}  // namespace sealwright
