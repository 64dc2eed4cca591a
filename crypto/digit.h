#pragma once

#include <cstddef>
#include <cstdint>

// The units that big numbers are made of. A number is an array of digits; where the compiler has
// 128-bit integers, some loops go through it in limbs of two digits.

using Digit = std::uint32_t;
using DoubleDigit = std::uint64_t;

inline constexpr std::uint32_t digit_bits = 32;
inline constexpr std::uint32_t digit_bytes = 4;
inline constexpr Digit digit_top_bit = 0x80000000;

/// Two digits as one number; its double is there when the compiler has one.
using Limb = std::uint64_t;
inline constexpr std::size_t limb_bits = 64;
inline constexpr std::size_t digits_per_limb = 2;

/// The integer of twice the width, for products and carries.
template <typename Unit>
struct DoubleOf;
template <>
struct DoubleOf<Digit> {
  using Type = DoubleDigit;
};

#if defined(__SIZEOF_INT128__)
__extension__ using DoubleLimb = unsigned __int128;
inline constexpr bool has_double_limbs = true;
template <>
struct DoubleOf<Limb> {
  using Type = DoubleLimb;
};
#else
inline constexpr bool has_double_limbs = false;
#endif
