#include "artefact/der.h"

#include <algorithm>
#include <array>

namespace sealwright {

namespace {

/// rsaEncryption (1.2.840.113549.1.1.1) with NULL parameters.
constexpr std::array<std::uint8_t, 15> rsa_encryption = {
    0x30, 13, 0x06, 9, 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x01, 0x05, 0x00};

void prepend_byte(Der& der, std::size_t byte) {
  der.room[--der.start] = static_cast<std::uint8_t>(byte);
}

}  // namespace

void prepend(Der& der, ByteView bytes) {
  der.start -= bytes.size();
  std::ranges::copy(bytes, der.room.begin() + static_cast<std::ptrdiff_t>(der.start));
}

void wrap(Der& der, DerTag tag, std::size_t end) {
  const std::size_t length = end - der.start;
  prepend_byte(der, length & 0xFF);
  if (length >= 0x100) prepend_byte(der, length >> 8);
  if (length >= 0x80) prepend_byte(der, length >= 0x100 ? 0x82 : 0x81);
  prepend_byte(der, static_cast<std::uint8_t>(tag));
}

void prepend_integer(Der& der, ByteView number) {
  const std::size_t end = der.start;
  while (!number.empty() && number.back() == 0) number = number.first(number.size() - 1);
  for (const std::uint8_t byte : number) prepend_byte(der, byte);
  // A zero byte stands for zero, and keeps a number with its top bit set from being negative.
  if (number.empty() || number.back() >= 0x80) prepend_byte(der, 0);
  wrap(der, DerTag::integer, end);
}

void prepend_rsa_encryption(Der& der) {
  prepend(der, rsa_encryption);
}

}  // namespace sealwright
