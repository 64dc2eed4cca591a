#pragma once

#include <functional>

#include "crypto/bytes.h"
#include "tests/support/bytes.h"

/// Picks a number below its argument: a random engine's or a fuzzer's.
using Choose = std::function<std::size_t(std::size_t)>;

/// Damages bytes. Small words at multiples of four are taken for length fields.
inline void damage(Bytes& bytes, const Choose& choose) {
  constexpr std::uint32_t hostile[] = {
      0,   1,   3,   4,    7,    64,         128,        132,        256,       257,
      260, 273, 308, 1024, 1025, 0x7FFFFFFC, 0x80000000, 0xFFFFFFFC, 0xFFFFFFFF};
  const auto any_byte = [&] { return static_cast<std::uint8_t>(choose(256)); };
  do {
    const std::size_t size = bytes.size(), how = size < 4 ? 0 : choose(6);
    if (how == 0) {
      for (std::size_t i = choose(4) == 0 ? choose(2100) : 32; i > 0; --i)
        bytes.push_back(any_byte());
    } else if (how == 1) {
      bytes.resize(choose(size));
    } else if (how == 2) {
      bytes[choose(size)] ^= static_cast<std::uint8_t>(1 << choose(8));
    } else if (how == 3) {
      const std::size_t from = choose(size), what = choose(3);
      for (std::size_t i = from; i < std::min(size, from + 64); ++i) {
        bytes[i] = what == 0 ? any_byte() : what == 1 ? 0 : 255;
      }
    } else {
      std::size_t at = choose(size / 4);
      for (std::size_t i = 0; i < size && load_le32(&bytes[4 * at]) - 1 > 2048; ++i)
        at = (at + 1) % (size / 4);
      store_le32(&bytes[4 * at], hostile[choose(std::size(hostile))]);
    }
  } while (choose(4) == 3);
}
