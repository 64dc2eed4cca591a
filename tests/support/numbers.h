#pragma once

#include <random>
#include <utility>

#include "tests/support/openssl_util.h"

/// Operands for big-number tests: shape 0 is random, the others are those that carries trip over.
inline constexpr int shape_count = 8;

inline Number make_number(std::mt19937_64& engine, std::size_t width, int shape) {
  Number number(width);
  const std::size_t cut = engine() % width;
  for (std::size_t i = 0; i < width; ++i) {
    const auto random = static_cast<Digit>(engine());
    const bool top = i + 1 == width;
    const Digit choices[shape_count] = {
        random,                                   // random
        0,                                        // zero
        i == 0 ? 1U : 0U,                         // one
        0xFFFFFFFF,                               // all ones
        top ? random : 0,                         // top digit only
        top ? random >> (1 + cut % 31) : random,  // top bits clear
        i < cut ? random : 0,                     // zero top digits
        random % 2 == 0 ? 0 : 0xFFFFFFFF,         // digits of all zeros or all ones
    };
    number[i] = choices[shape];
  }
  return number;
}

/// The index-th pair of shapes, running through all of them.
inline std::pair<int, int> pair_of_shapes(std::size_t index) {
  return {static_cast<int>(index % shape_count), static_cast<int>(index / shape_count)};
}

inline std::uint32_t width_of(const Number& number) {
  return static_cast<std::uint32_t>(number.size());
}
