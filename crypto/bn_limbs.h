#pragma once

#include <cstdint>

#include "crypto/digit.h"

// Modular arithmetic on 64-bit limbs of two digits each: the schoolbook product and the classical
// reduction as they are on digits, in half the steps, with the same results. It is there only where
// the compiler has 128-bit integers: guard calls by `if constexpr (has_double_limbs)`.

namespace sealwright {

/// Whether the functions below serve a modulus: limbs are in force, the width is a multiple of
/// eight digits (at most 64), since a row goes by four limbs, and the top bit of the modulus is
/// set.
[[nodiscard]] bool bn_limbs_apply(const Digit* m, std::uint32_t mLen);

/// r = a * b mod m in mLen digits, squaring when `a` and `b` are one pointer. `r` may be `a` or
/// `b`. Only where bn_limbs_apply says so.
/// @return false, with r untouched, when the reduction came out irregular. For operands smaller
///         than m it never does.
[[nodiscard]] bool bn_limbs_mod_mul(Digit* r, const Digit* a, const Digit* b, const Digit* m,
                                    std::uint32_t mLen);

/// r = base^e mod m in mLen digits, for any base of that width and an exponent that is not zero.
/// Only where bn_limbs_apply says so.
/// @return false, with r untouched, as bn_limbs_mod_mul.
[[nodiscard]] bool bn_limbs_power(Digit* r, const Digit* base, const Digit* m, std::uint32_t mLen,
                                  const Digit* e, std::uint32_t eLen);

}  // namespace sealwright
