#pragma once

#include <cstddef>
#include <cstdint>

/// One number of a stored key: its length in bytes and room for `Capacity` bytes of it.
template <std::size_t Capacity>
struct KeyItem {
  std::uint32_t length;
  std::uint8_t number[Capacity];
};
using Item4 = KeyItem<4>;
using Item64 = KeyItem<64>;
using Item128 = KeyItem<128>;
using Item256 = KeyItem<256>;
