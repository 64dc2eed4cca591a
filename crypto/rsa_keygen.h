#pragma once

#include <cstdint>

#include "crypto/rsa_key.h"
#include "crypto/status.h"

/// Makes an RSA key with a modulus of `modulus_bits` bits, p > q (RFC 8017, 3.2). An odd multiple
/// of 32 gives a modulus 32 bits shorter, with a top digit of 0. The caller has zeroed `key` and
/// set e and eWords; with eWords 0 a random exponent is drawn and not checked for invertibility.
/// Loops until it finds primes.
/// @return 0; ZEB_ERR_PARAMETER, with `key` untouched, when the bit count is not a multiple of 32
///         or outside 128 to 2048.
Status ZEB_RSA_KeyGen(ZEB_RSA_PRIVATE_KEY* key, std::uint32_t modulus_bits);
