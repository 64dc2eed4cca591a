#pragma once

#include <cstdint>

#include "crypto/bn.h"
#include "crypto/rsa_key.h"
#include "crypto/status.h"

/// Fills `digit_count` digits with random bits.
void zeb_bn_rand(Digit* number, std::uint32_t digit_count);

/// Probabilistic primality test (Miller-Rabin, Knuth 4.5.4 algorithm P) after a gcd screen
/// against SmallPrimes, for numbers of at most 66 digits. A prime that divides a table entry, 43
/// say, is refused by the screen.
/// @return 0 when `number` is taken as prime, ZEB_ERR_FAIL when not.
Status ZEB_MillerRabin(const Digit* number, std::uint32_t digit_count);

/// Draws random odd numbers with bit 28 of the top digit set until one passes ZEB_MillerRabin, at
/// most 4 * floor(40 * digit_count / 3) times. Above 66 digits none passes.
/// @return 0 with the prime in `number`, ZEB_ERR_FAIL when it gives up.
Status ZEB_Gen_Prime(Digit* number, std::uint32_t digit_count);

/// Makes an RSA key with a modulus of `modulus_bits` bits, p > q (RFC 8017, 3.2). An odd multiple
/// of 32 gives a modulus 32 bits shorter, with a top digit of 0. The caller has zeroed `key` and
/// set e and eWords; with eWords 0 a random exponent is drawn and not checked for invertibility.
/// Loops until it finds primes.
/// @return 0; ZEB_ERR_PARAMETER, with `key` untouched, when the bit count is not a multiple of 32
///         or outside 128 to 2048.
Status ZEB_RSA_KeyGen(ZEB_RSA_PRIVATE_KEY* key, std::uint32_t modulus_bits);
