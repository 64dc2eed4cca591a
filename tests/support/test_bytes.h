#pragma once

#include <algorithm>
#include <random>

#include "tests/support/vectors.h"

inline std::uint32_t length_of(const Bytes& bytes) {
  return static_cast<std::uint32_t>(bytes.size());
}

inline Bytes random_bytes(std::mt19937_64& engine, std::size_t length) {
  Bytes bytes(length + 1);  // room, so that data() is never null
  std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(engine()); });
  bytes.pop_back();
  return bytes;
}
