#pragma once

#include <cstdint>

#include "crypto/bn.h"

// Modular multiplication on 64-bit words, each carrying two digits, for processors with BMI2. The
// same schoolbook product and classical reduction with twice the radix; the result is a * b mod m.

/// Whether the word path takes a modulus: it is in force, the width is a multiple of eight digits
/// (at most 64) and the modulus is normalised.
bool bn_words_take(const Digit* m, std::uint32_t mLen);

/// r = a * b mod m in mLen digits, squaring when `a` and `b` are one pointer. `r` may be `a` or
/// `b`. Only where bn_words_take says so.
/// @return false, with r untouched, when the reduction came out irregular, as it can for operands
///         that are not smaller than m.
bool bn_words_mod_mul(Digit* r, const Digit* a, const Digit* b, const Digit* m, std::uint32_t mLen);
