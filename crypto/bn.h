#pragma once

#include <cstdint>

#include "crypto/digit.h"

// Unsigned big numbers: caller-owned arrays of 32-bit digits, least significant first, with the
// digit count passed beside the pointer. There is no sign, no stored length and no normal form:
// leading zero digits are allowed everywhere. No function allocates, checks its pointers or
// reports an error; result buffers must have the stated width. The multiplication, squaring and
// division algorithms are those of Knuth, The Art of Computer Programming, 4.3.1.

/// Widest number that an operation takes, in digits: the product of two numbers of 66 digits (2048
/// bits and two spare digits). A division keeps one digit more for what its shift moves out.
inline constexpr std::uint32_t bn_scratch_digits = 132;

/// *result = a * b, in full.
void D_Mul_D(DoubleDigit* result, Digit a, Digit b);

/// Low 32 bits of (hi * 2^32 + lo) / d. `d` is not 0.
Digit DD_Div_D(Digit hi, Digit lo, Digit d);

/// (hi * 2^32 + lo) mod d. `d` is not 0.
Digit DD_Mod_D(Digit hi, Digit lo, Digit d);

/// Greatest common divisor; `a` when `b` is 0.
Digit D_Gcd(Digit a, Digit b);

/// a mod d for `aLen` digits; 0 for aLen 0. `d` is not 0.
Digit bn_ModD(const Digit* a, std::uint32_t aLen, Digit d);

/// Big-endian octet string to ceil(octetLen / 4) digits. Octets are read in whole groups of four
/// counted back from the end, so `octetLen` is a multiple of 4 or the octets before the string
/// take part. The length is in octets here and in digits in BN2OS.
void OS2BN(Digit* r, const std::uint8_t* octets, std::uint32_t octetLen);

/// `digitCount` digits to 4 * digitCount big-endian octets, leading zeros kept.
void BN2OS(std::uint8_t* octets, const Digit* a, std::uint32_t digitCount);

/// r = a for `n` digits, upward.
void zeb_bn_copy(Digit* r, const Digit* a, std::uint32_t n);

/// Compares a with b. When `a` is the shorter one, the digits of `b` above aLen are ignored.
/// @return 1 when a > b, -1 when a < b, 0 when equal.
std::int32_t zeb_bn_cmp(const Digit* a, std::uint32_t aLen, const Digit* b, std::uint32_t bLen);

/// r = a + b in aLen digits, aLen >= bLen. `r` may be `a` or `b`.
/// @return the carry out of the top digit, 0 or 1.
Digit zeb_bn_Add(Digit* r, const Digit* a, std::uint32_t aLen, const Digit* b, std::uint32_t bLen);

/// r = a - b modulo 2^(32 aLen), aLen >= bLen. `r` may be `a` or `b`.
/// @return the borrow out of the top digit, 0 or 1.
Digit zeb_bn_Sub(Digit* r, const Digit* a, std::uint32_t aLen, const Digit* b, std::uint32_t bLen);

/// r += a * d over rLen digits, aLen <= rLen.
/// @return the carry out of r: a full digit when aLen = rLen, otherwise 0 or 1.
Digit zeb_bn_MulAdd(Digit* r, std::uint32_t rLen, const Digit* a, std::uint32_t aLen, Digit d);

/// r -= a * d over rLen digits, aLen <= rLen.
/// @return the borrow out of r: a full digit when aLen = rLen, otherwise 0 or 1.
Digit zeb_bn_MulSub(Digit* r, std::uint32_t rLen, const Digit* a, std::uint32_t aLen, Digit d);

/// r = a * b in aLen + bLen digits. `r` shares no storage with the operands.
void zeb_bn_Mul(Digit* r, const Digit* a, std::uint32_t aLen, const Digit* b, std::uint32_t bLen);

/// r = a * a in 2 * aLen digits, each cross product computed once. `r` is not `a`.
void zeb_bn_Sqr(Digit* r, const Digit* a, std::uint32_t aLen);

/// q = a / b in aLen - bLen + 1 digits (not written when `q` is null), r = a mod b in bLen digits,
/// for bLen <= aLen <= 132. Leading zero digits of `b` are allowed; should the
/// quotient not fit its width, its low digits are given and the remainder is right all the same.
/// @return 0; 1 when b is zero or a length is out of range, and nothing is written then.
std::uint32_t zeb_bn_Div(Digit* q, Digit* r, const Digit* a, std::uint32_t aLen, const Digit* b,
                         std::uint32_t bLen);

namespace sealwright {

/// Digits up to the highest non-zero one; 0 for the number zero.
std::uint32_t bn_significant_digits(const Digit* a, std::uint32_t aLen);

/// Bits up to the highest set one; 0 for the number zero.
std::uint32_t bn_bit_length(const Digit* a, std::uint32_t aLen);

/// Bit `bit` of a number that is wide enough to have it.
bool bn_bit(const Digit* a, std::uint32_t bit);

}  // namespace sealwright
