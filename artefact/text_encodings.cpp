#include "artefact/text_encodings.h"

#include <cstddef>
#include <string>

namespace sealwright {

namespace {

constexpr std::string_view white_space = " \t\r\n";
constexpr std::string_view hex_digits = "0123456789abcdef";
constexpr std::string_view base64_digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The text without what stands between its digits.
std::string strip(std::string_view text, std::string_view ignored) {
  std::string kept;
  for (const char letter : text) {
    if (ignored.find(letter) == std::string_view::npos) kept += letter;
  }
  return kept;
}

/// Appends the whole bytes of digits that have `digit_bits` bits each, first digit first. Bits that
/// are left over have to be zero. False for a letter that is no digit.
bool append_digits(std::vector<std::uint8_t>& bytes, std::string_view digits,
                   std::string_view alphabet, unsigned digit_bits) {
  std::uint32_t waiting = 0;
  unsigned waiting_bits = 0;
  for (const char letter : digits) {
    const std::size_t value = alphabet.find(letter);
    if (value == std::string_view::npos) return false;
    waiting = waiting << digit_bits | static_cast<std::uint32_t>(value);
    waiting_bits += digit_bits;
    if (waiting_bits < 8) continue;
    waiting_bits -= 8;
    bytes.push_back(static_cast<std::uint8_t>(waiting >> waiting_bits));
    waiting &= (1U << waiting_bits) - 1;
  }
  return waiting == 0;
}

}  // namespace

std::optional<std::vector<std::uint8_t>> decode_hex(std::string_view text) {
  std::string digits = strip(text, " \t\r\n:");
  for (char& letter : digits) {
    if (letter >= 'A' && letter <= 'F') letter = static_cast<char>(letter - 'A' + 'a');
  }
  std::vector<std::uint8_t> bytes;
  const bool whole = digits.size() % 2 == 0 && append_digits(bytes, digits, hex_digits, 4);
  return whole ? std::optional(bytes) : std::nullopt;
}

std::optional<std::vector<std::uint8_t>> decode_base64(std::string_view text) {
  const std::string stripped = strip(text, white_space);
  std::string_view digits = stripped;
  for (int most = 2; most > 0 && digits.ends_with('='); --most) digits.remove_suffix(1);
  std::vector<std::uint8_t> bytes;
  const bool whole = stripped.size() % 4 == 0 && append_digits(bytes, digits, base64_digits, 6);
  return whole ? std::optional(bytes) : std::nullopt;
}

}  // namespace sealwright
