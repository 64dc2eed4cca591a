#pragma once

#include <cstddef>
#include <cstdint>

#include "crypto/digit.h"

// The rows that all arithmetic on big numbers is made of, portable. Those of a product serve digits
// and limbs alike.

namespace sealwright {

/// Calls step(i) for i from 0 to n - 1, unrolled by four.
template <typename Step>
inline void for_each_unit(std::size_t n, Step step) {
  std::size_t i = 0;
  for (; i + 4 <= n; i += 4) {
    step(i);
    step(i + 1);
    step(i + 2);
    step(i + 3);
  }
  for (; i < n; ++i) step(i);
}

/// r[0..n) += a[0..n) * d. @return the carry unit.
template <typename Unit>
inline Unit mul_add_row(Unit* r, const Unit* a, std::size_t n, Unit d) {
  using Double = typename DoubleOf<Unit>::Type;
  Unit carry = 0;
  for_each_unit(n, [&](std::size_t i) {
    const Double product = Double{a[i]} * d;
    // Compilers turn comparisons of this form into carries, and so keep sums of double width out of
    // it, which limbs pay for with time.
    const Unit before = r[i];
    Unit low = static_cast<Unit>(product);
    Unit high = static_cast<Unit>(product >> (8 * sizeof(Unit)));
    low += before;
    high += low < before ? 1 : 0;
    low += carry;
    high += low < carry ? 1 : 0;
    r[i] = low;
    carry = high;
  });
  return carry;
}

/// r[0..2n) = 2 r + the squares of the units of a, each at twice its place, for a result that fits:
/// what makes a square of the sum of cross products.
template <typename Unit>
inline void double_and_add_squares(Unit* r, const Unit* a, std::size_t n) {
  using Double = typename DoubleOf<Unit>::Type;
  constexpr int unit_bits = 8 * sizeof(Unit);
  Unit shifted_out = 0;
  Unit carry = 0;
  for (std::size_t i = 0; i < n; ++i) {
    const Double square = Double{a[i]} * a[i];
    const Unit low = (r[2 * i] << 1) | shifted_out;
    const Unit high = (r[2 * i + 1] << 1) | (r[2 * i] >> (unit_bits - 1));
    shifted_out = r[2 * i + 1] >> (unit_bits - 1);
    Double sum = Double{low} + static_cast<Unit>(square) + carry;
    r[2 * i] = static_cast<Unit>(sum);
    sum = (sum >> unit_bits) + high + (square >> unit_bits);
    r[2 * i + 1] = static_cast<Unit>(sum);
    carry = static_cast<Unit>(sum >> unit_bits);
  }
}

/// r[0..n) -= a[0..n) * d. @return the borrow digit.
inline Digit mul_sub_row(Digit* r, const Digit* a, std::size_t n, Digit d) {
  DoubleDigit carry = 0;
  for_each_unit(n, [&](std::size_t i) {
    carry += DoubleDigit{a[i]} * d;
    const auto low = static_cast<Digit>(carry);
    carry = (carry >> digit_bits) + (r[i] < low ? 1U : 0U);
    r[i] -= low;
  });
  return static_cast<Digit>(carry);
}

/// r = a + b + carry over n digits. @return the carry, 0 or 1.
inline Digit add_row(Digit* r, const Digit* a, const Digit* b, std::size_t n, Digit carry) {
  for_each_unit(n, [&](std::size_t i) {
    const DoubleDigit sum = DoubleDigit{a[i]} + b[i] + carry;
    r[i] = static_cast<Digit>(sum);
    carry = static_cast<Digit>(sum >> digit_bits);
  });
  return carry;
}

/// r = a - b - borrow over n digits. @return the borrow, 0 or 1.
inline Digit sub_row(Digit* r, const Digit* a, const Digit* b, std::size_t n, Digit borrow) {
  for_each_unit(n, [&](std::size_t i) {
    const DoubleDigit difference = DoubleDigit{a[i]} - b[i] - borrow;
    r[i] = static_cast<Digit>(difference);
    borrow = static_cast<Digit>(difference >> 63);
  });
  return borrow;
}

/// One step of a long division: subtracts trial * m from the n + 1 digits of `segment` and, while
/// that leaves it negative, adds m back and lowers the trial digit, at most twice.
/// @return the trial digit as corrected.
inline Digit subtract_multiple(Digit* segment, const Digit* m, std::size_t n, Digit trial) {
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

}  // namespace sealwright
