#include "artefact/escape.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "artefact/unseen_characters.h"

namespace sealwright {

namespace {

constexpr std::uint32_t replacement = 0xFFFD;

/// A code point and the bytes that it takes.
struct Decoded {
  std::uint32_t code_point;
  std::size_t length;
};

/// The UTF-8 sequence that a text starts with; `replacement` for a byte that starts none.
Decoded decode(std::string_view text) {
  constexpr std::uint32_t lowest_of_length[] = {0, 0, 0x80, 0x800, 0x10000};
  const unsigned first = static_cast<unsigned char>(text[0]);
  if (first < 0x80) return {first, 1};
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  if (first < 0xC0 || first >= 0xF8 || length > text.size()) return {replacement, 1};
  std::uint32_t code_point = first & (0x7FU >> length);
  for (const char letter : text.substr(1, length - 1)) {
    const unsigned follower = static_cast<unsigned char>(letter);
    if ((follower & 0xC0U) != 0x80) return {replacement, 1};
    code_point = code_point << 6 | (follower & 0x3FU);
  }
  const bool is_surrogate = code_point >= 0xD800 && code_point < 0xE000;
  const bool valid =
      code_point >= lowest_of_length[length] && code_point <= 0x10FFFF && !is_surrogate;
  return valid ? Decoded{code_point, length} : Decoded{replacement, 1};
}

bool is_unseen(std::uint32_t code_point) {
  return std::ranges::any_of(unseen_characters, [&](const CodePointRange& range) {
    return code_point >= range.first && code_point <= range.last;
  });
}

std::string escape_unit(std::uint32_t unit) {
  char code[sizeof "\\uFFFFFFFF"];  // as the compiler counts it; a unit has four digits
  std::snprintf(code, sizeof code, "\\u%04x", static_cast<unsigned>(unit));
  return code;
}

/// One escape, or two that make a surrogate pair.
std::string escape_code_point(std::uint32_t code_point) {
  if (code_point < 0x10000) return escape_unit(code_point);
  const std::uint32_t above = code_point - 0x10000;
  return escape_unit(0xD800 + (above >> 10)) + escape_unit(0xDC00 + (above & 0x3FF));
}

}  // namespace

std::string escape(std::string_view text) {
  std::string escaped;
  while (!text.empty()) {
    const Decoded decoded = decode(text);
    if (decoded.code_point == '"' || decoded.code_point == '\\') {
      escaped += {'\\', text[0]};
    } else if (is_unseen(decoded.code_point) || decoded.code_point == replacement) {
      escaped += escape_code_point(decoded.code_point);
    } else {
      escaped += text.substr(0, decoded.length);
    }
    text.remove_prefix(decoded.length);
  }
  return escaped;
}

std::string show_name(std::string_view name) {
  const std::string escaped = escape(name);
  return escaped == name && !name.empty() ? escaped : '"' + escaped + '"';
}

}  // namespace sealwright
