#pragma once

#include <cstdint>

#include "crypto/digit.h"

// The rows that all arithmetic on digits is made of, portable: one 32 x 32 -> 64-bit product or one
// add with carry per digit.

/// Calls step(i) for i from 0 to n - 1, unrolled by four.
template <typename Step>
inline void for_each_digit(std::uint32_t n, Step step) {
  std::uint32_t i = 0;
  for (; i + 4 <= n; i += 4) {
    step(i);
    step(i + 1);
    step(i + 2);
    step(i + 3);
  }
  for (; i < n; ++i) step(i);
}

/// r[0..n) += a[0..n) * d. @return the carry digit.
inline Digit mul_add_row(Digit* r, const Digit* a, std::uint32_t n, Digit d) {
  DoubleDigit carry = 0;
  for_each_digit(n, [&](std::uint32_t i) {
    // At most (2^32 - 1)^2 + 2 (2^32 - 1): never overflows the double digit.
    carry += DoubleDigit{a[i]} * d + r[i];
    r[i] = static_cast<Digit>(carry);
    carry >>= digit_bits;
  });
  return static_cast<Digit>(carry);
}

/// r[0..n) -= a[0..n) * d. @return the borrow digit.
inline Digit mul_sub_row(Digit* r, const Digit* a, std::uint32_t n, Digit d) {
  DoubleDigit carry = 0;
  for_each_digit(n, [&](std::uint32_t i) {
    carry += DoubleDigit{a[i]} * d;
    const auto low = static_cast<Digit>(carry);
    carry = (carry >> digit_bits) + (r[i] < low ? 1U : 0U);
    r[i] -= low;
  });
  return static_cast<Digit>(carry);
}

/// r = a + b + carry over n digits. @return the carry, 0 or 1.
inline Digit add_row(Digit* r, const Digit* a, const Digit* b, std::uint32_t n, Digit carry) {
  for_each_digit(n, [&](std::uint32_t i) {
    const DoubleDigit sum = DoubleDigit{a[i]} + b[i] + carry;
    r[i] = static_cast<Digit>(sum);
    carry = static_cast<Digit>(sum >> digit_bits);
  });
  return carry;
}

/// r = a - b - borrow over n digits. @return the borrow, 0 or 1.
inline Digit sub_row(Digit* r, const Digit* a, const Digit* b, std::uint32_t n, Digit borrow) {
  for_each_digit(n, [&](std::uint32_t i) {
    const DoubleDigit difference = DoubleDigit{a[i]} - b[i] - borrow;
    r[i] = static_cast<Digit>(difference);
    borrow = static_cast<Digit>(difference >> 63);
  });
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
