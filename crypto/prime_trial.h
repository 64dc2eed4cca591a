#pragma once

#include <cstdint>

#include "crypto/digit.h"

namespace sealwright {

/// Trial division tries the odd primes below this bound. It grows with the square of the width, as
/// the cost of an exponentiation does beside that of a division: at both sizes of key the fastest
/// bound lay here.
std::uint32_t trial_division_bound(std::uint32_t digit_count);

/// Whether trial division shows an odd number to be composite. A prime never is, also not one below
/// the bound: a number of one digit is left alone.
[[nodiscard]] bool has_small_factor(const Digit* number, std::uint32_t digit_count);

}  // namespace sealwright
