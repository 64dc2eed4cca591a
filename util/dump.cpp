#include "util/dump.h"

#include <cstdio>

namespace {

constexpr std::int32_t bytes_per_line = 16;
constexpr std::int32_t words_per_row = 4;
constexpr char hex_digits[] = "0123456789ABCDEF";

void print_line(const std::uint8_t* bytes, std::int32_t count) {
  char line[2 * bytes_per_line + 1] = {};
  char* digit = line;
  for (std::int32_t i = 0; i < count; ++i) {
    *digit++ = hex_digits[bytes[i] >> 4];
    *digit++ = hex_digits[bytes[i] & 0x0F];
  }
  std::printf("%s\n", line);
}

}  // namespace

void mem_dump(const std::uint8_t* bytes, std::int32_t length) {
  const std::int32_t lines = length / bytes_per_line;
  for (std::int32_t i = 0; i < lines; ++i, bytes += bytes_per_line) {
    print_line(bytes, bytes_per_line);
  }
  // Quirk: a negative rest prints an empty line, and print_DWORD ends with a whole row; whoever
  // compares dumps depends on it.
  if (length % bytes_per_line != 0) print_line(bytes, length % bytes_per_line);
}

void prn_DWORD(std::uint32_t word) {
  char digits[9] = {};
  for (int i = 7; i >= 0; --i, word >>= 4) digits[i] = hex_digits[word & 0x0F];
  std::printf("0x%s, ", digits);
}

void print_DWORD(const char* title, const std::uint32_t* words, std::int32_t count) {
  std::printf("%s\n", title);
  for (std::int32_t i = 0; i < count; i += words_per_row) {
    for (std::int32_t j = 0; j < words_per_row; ++j) prn_DWORD(words[i + j]);
    std::printf("\n");
  }
}
