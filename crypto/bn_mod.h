#pragma once

#include <cstdint>

#include "crypto/bn.h"
#include "crypto/status.h"

// Modular arithmetic over the big numbers of bn.h. Every operation works at the full width mLen of
// its modulus; the modulus is normalised (top bit of its top digit set), as each modulus and CRT
// prime of a full-length key is.

/// Widest modulus, in digits: 2048 bits and two spare digits.
inline constexpr std::uint32_t bn_max_modulus_digits = 66;

/// Classical reduction (Knuth's algorithm D without the quotient) in place: on return the low mLen
/// digits of `a` hold a mod m and the digits above are zero. Nothing is done when aLen <= mLen,
/// even for a >= m, or when the top digit of m is 0. The trial digit is not clamped: about once in
/// 2^32 steps the reduction comes out irregular and leaves digits above the modulus. So it does
/// when m is not normalised, or when the top digits of `a` are not below m, as they are in a
/// product of two numbers below m. Use bn_reduce_exactly where the result matters.
void zeb_bn_ClassicalRed(Digit* a, std::uint32_t aLen, const Digit* m, std::uint32_t mLen);

/// r = a * b mod m in mLen digits (mLen at most 66), squaring when `a` and `b` are one pointer.
/// `r` may be `a` or `b`. An operand need not be smaller than m.
void zeb_bn_ModMul(Digit* r, const Digit* a, const Digit* b, const Digit* m, std::uint32_t mLen);

/// r = base^e mod m in mLen digits, left to right, one exponent bit at a time; not hardened against
/// timing. 1 when e is zero, also for m = 1. `r` shares no storage with the operands.
void zeb_bn_Binary(Digit* r, const Digit* base, const Digit* m, std::uint32_t mLen, const Digit* e,
                   std::uint32_t eLen);

/// inv = a^-1 mod m, all of `len` digits, by the extended Euclidean algorithm. `inv` may be null
/// when only the answer matters. a = 1 is its own inverse for every m.
/// @return 0, or ZEB_ERR_FAIL when gcd(a, m) is not 1, for a = 0 also with m = 1, and for a `len`
///         of 0 or above 66; nothing is written then.
Status zeb_bn_Euclid(Digit* inv, const Digit* a, const Digit* m, std::uint32_t len);

namespace sealwright {

/// zeb_bn_ClassicalRed, finished by zeb_bn_Div on the untouched input when it comes out irregular.
/// For a non-zero modulus of any form, mLen <= aLen <= 132, the result is a mod m.
void bn_reduce_exactly(Digit* a, std::uint32_t aLen, const Digit* m, std::uint32_t mLen);

}  // namespace sealwright
