#include "artefact/hex.h"

namespace sealwright {

std::string to_hex(ByteView bytes) {
  constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : bytes) text += {digits[byte >> 4], digits[byte & 0x0F]};
  return text;
}

std::string sha1_hex(ByteView bytes) {
  constexpr Sha1StepCodes codes = {ZEB_ERR_FAIL, ZEB_ERR_FAIL, ZEB_ERR_FAIL};
  Digest digest = {};
  // The status can be dropped: no pointer is null.
  sha1_message(bytes.data(), length_of(bytes), digest.data(), codes);
  return to_hex(digest);
}

}  // namespace sealwright
