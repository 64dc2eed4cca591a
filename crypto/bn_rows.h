#pragma once

#include <cstdint>

#include "crypto/digit.h"

// The four loops that all big-number arithmetic is made of, portable, unrolled by four: one
// 32 x 32 -> 64-bit product or one add with carry per digit.

/// r[0..n) += a[0..n) * d. @return the carry word.
inline Digit mul_add_row(Digit* r, const Digit* a, std::uint32_t n, Digit d) {
  DoubleDigit carry = 0;
  const auto step = [&](std::uint32_t i) {
    // At most (2^32 - 1)^2 + 2 (2^32 - 1): never overflows the double digit.
    carry += DoubleDigit{a[i]} * d + r[i];
    r[i] = static_cast<Digit>(carry);
    carry >>= digit_bits;
  };
  std::uint32_t i = 0;
  for (; i + 4 <= n; i += 4) {
    step(i);
    step(i + 1);
    step(i + 2);
    step(i + 3);
  }
  for (; i < n; ++i) step(i);
  return static_cast<Digit>(carry);
}

/// r[0..n) -= a[0..n) * d. @return the borrow word.
inline Digit mul_sub_row(Digit* r, const Digit* a, std::uint32_t n, Digit d) {
  DoubleDigit carry = 0;
  const auto step = [&](std::uint32_t i) {
    carry += DoubleDigit{a[i]} * d;
    const auto low = static_cast<Digit>(carry);
    carry = (carry >> digit_bits) + (r[i] < low ? 1U : 0U);
    r[i] -= low;
  };
  std::uint32_t i = 0;
  for (; i + 4 <= n; i += 4) {
    step(i);
    step(i + 1);
    step(i + 2);
    step(i + 3);
  }
  for (; i < n; ++i) step(i);
  return static_cast<Digit>(carry);
}

/// r = a + b + carry over n digits. @return the carry, 0 or 1.
inline Digit add_row(Digit* r, const Digit* a, const Digit* b, std::uint32_t n, Digit carry) {
  const auto step = [&](std::uint32_t i) {
    const DoubleDigit sum = DoubleDigit{a[i]} + b[i] + carry;
    r[i] = static_cast<Digit>(sum);
    carry = static_cast<Digit>(sum >> digit_bits);
  };
  std::uint32_t i = 0;
  for (; i + 4 <= n; i += 4) {
    step(i);
    step(i + 1);
    step(i + 2);
    step(i + 3);
  }
  for (; i < n; ++i) step(i);
  return carry;
}

/// r = a - b - borrow over n digits. @return the borrow, 0 or 1.
inline Digit sub_row(Digit* r, const Digit* a, const Digit* b, std::uint32_t n, Digit borrow) {
  const auto step = [&](std::uint32_t i) {
    const DoubleDigit difference = DoubleDigit{a[i]} - b[i] - borrow;
    r[i] = static_cast<Digit>(difference);
    borrow = static_cast<Digit>(difference >> 63);
  };
  std::uint32_t i = 0;
  for (; i + 4 <= n; i += 4) {
    step(i);
    step(i + 1);
    step(i + 2);
    step(i + 3);
  }
  for (; i < n; ++i) step(i);
  return borrow;
}

/// One step of a long division: subtracts trial * m from the n + 1 digits of `segment` and, while
/// that leaves it negative, adds m back and lowers the trial digit, at most twice.
/// @return the trial digit as corrected.
inline Digit subtract_multiple(Digit* segment, const Digit* m, std::uint32_t n, Digit trial) {
  const Digit borrow = mul_sub_row(segment, m, n, trial);
  bool negative = segment[n] < borrow;
  segment[n] -= borrow;
  for (int add_backs = 0; negative && add_backs < 2; ++add_backs) {
    --trial;
    const Digit carry = add_row(segment, segment, m, n, 0);
    segment[n] += carry;
    negative = carry == 0 || segment[n] != 0;
  }
  return trial;
}
