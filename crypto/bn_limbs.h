#pragma once

#include <cstdint>

#include "crypto/digit.h"

// Modular arithmetic on 64-bit limbs, each carrying two digits: the same schoolbook product and
// classical reduction as on digits, with twice the radix, and the same results bit for bit. For
// compilers that have 128-bit integers: guard calls by `if constexpr (has_double_limbs)`.

namespace sealwright {

/// Whether the limb path takes a modulus: it is in force, the width is a multiple of eight digits
/// (at most 64) and the modulus is normalised.
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
