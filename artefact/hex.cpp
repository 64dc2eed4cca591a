#include "artefact/hex.h"

namespace sealwright {

std::string to_hex(ByteView bytes) {
  constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : bytes) text += {digits[byte >> 4], digits[byte & 0x0F]};
  return text;
}

std::string sha1_hex(ByteView bytes) {
  Digest digest = {};
  sha1(digest.data(), {bytes});
  return to_hex(digest);
}

}  // namespace sealwright
