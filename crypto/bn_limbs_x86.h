#pragma once

#include "crypto/digit.h"

// The two loops in which the time of a signature goes, on BMI2 and ADX: only in a build
// for x86-64 and where crypto_paths().bn_rows is set.

namespace sealwright {

/// r[0..n) += a[0..n) * d, n a multiple of four. @return the carry limb.
Limb mul_add_row_x86(Limb* r, const Limb* a, std::size_t n, Limb d);

/// r[0..2n) = 2 r + the sum of the a[i]^2 2^(128 i), for a result that fits.
void double_and_add_squares_x86(Limb* r, const Limb* a, std::size_t n);

}  // namespace sealwright
