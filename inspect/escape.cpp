#include "inspect/escape.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace {

constexpr std::uint32_t replacement = 0xFFFD;

/// A code point and the bytes that it takes; `replacement` for a piece that is no valid UTF-8.
struct Decoded {
  std::uint32_t code_point;
  std::size_t length;
};

/// What the first byte of a sequence says: the bytes that follow, its payload, and the range of the
/// second byte, narrowed so that overlong forms, surrogates and numbers above 0x10FFFF are refused.
struct Lead {
  std::size_t followers;
  std::uint32_t payload;
  unsigned lowest, highest;
};

Lead read_lead(unsigned byte) {
  if (byte >= 0xC2 && byte <= 0xDF) return {1, byte & 0x1FU, 0x80, 0xBF};
  if (byte >= 0xE0 && byte <= 0xEF) {
    return {2, byte & 0x0FU, byte == 0xE0 ? 0xA0U : 0x80U, byte == 0xED ? 0x9FU : 0xBFU};
  }
  if (byte >= 0xF0 && byte <= 0xF4) {
    return {3, byte & 0x07U, byte == 0xF0 ? 0x90U : 0x80U, byte == 0xF4 ? 0x8FU : 0xBFU};
  }
  return {0, replacement, 0, 0};
}

Decoded decode(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if (first < 0x80) return {first, 1};
  const Lead lead = read_lead(first);
  Decoded decoded = {lead.payload, 1};
  for (std::size_t i = 1; i <= lead.followers; ++i) {
    const unsigned byte = i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
    const bool fits = i == 1 ? byte >= lead.lowest && byte <= lead.highest : (byte & 0xC0U) == 0x80;
    if (!fits) return {replacement, i};
    decoded = {decoded.code_point << 6 | (byte & 0x3FU), i + 1};
  }
  return decoded;
}

bool is_control(std::uint32_t code_point) {
  return code_point < 0x20 || (code_point >= 0x7F && code_point < 0xA0);
}

}  // namespace

std::string escape(std::string_view text) {
  std::string escaped;
  while (!text.empty()) {
    const Decoded decoded = decode(text);
    if (decoded.code_point == '"' || decoded.code_point == '\\') {
      escaped += {'\\', text[0]};
    } else if (is_control(decoded.code_point) || decoded.code_point == replacement) {
      char code[8];
      std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(decoded.code_point));
      escaped += code;
    } else {
      escaped += text.substr(0, decoded.length);
    }
    text.remove_prefix(decoded.length);
  }
  return escaped;
}

std::string show_name(std::string_view name) {
  const std::string escaped = escape(name);
  return escaped == name ? escaped : '"' + escaped + '"';
}
