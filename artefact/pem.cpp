#include "artefact/pem.h"

#include <algorithm>
#include <cstdint>

namespace sealwright {

namespace {

constexpr std::size_t bytes_per_line = 48;
constexpr std::string_view begin = "-----BEGIN ";
constexpr std::string_view end = "-----END ";
constexpr std::string_view dashes = "-----\n";

/// Characters that the encoding of so many bytes takes.
std::size_t base64_length(std::size_t byte_count) {
  return (byte_count + 2) / 3 * 4;
}

void put(std::span<char>& text, std::string_view part) {
  std::ranges::copy(part, text.begin());
  text = text.subspan(part.size());
}

/// Writes up to three bytes as four characters (RFC 4648, 4).
void put_group(std::span<char>& text, ByteView bytes) {
  constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::uint32_t group = 0;
  for (std::size_t i = 0; i < 3; ++i) group = group << 8 | (i < bytes.size() ? bytes[i] : 0U);
  for (std::size_t i = 0; i < 4; ++i) {
    text[i] = i <= bytes.size() ? alphabet[group >> (18 - 6 * i) & 0x3F] : '=';
  }
  text = text.subspan(4);
}

}  // namespace

std::size_t pem_length(std::string_view label, std::size_t der_length) {
  const std::size_t line_ends = (der_length + bytes_per_line - 1) / bytes_per_line;
  return begin.size() + end.size() + 2 * (label.size() + dashes.size()) +
         base64_length(der_length) + line_ends;
}

void write_pem(std::span<char> text, std::string_view label, ByteView der) {
  for (const std::string_view part : {begin, label, dashes}) put(text, part);
  while (!der.empty()) {
    ByteView line = der.first(std::min(bytes_per_line, der.size()));
    der = der.subspan(line.size());
    for (; !line.empty(); line = line.subspan(std::min<std::size_t>(3, line.size()))) {
      put_group(text, line.first(std::min<std::size_t>(3, line.size())));
    }
    put(text, "\n");
  }
  for (const std::string_view part : {end, label, dashes}) put(text, part);
}

}  // namespace sealwright
