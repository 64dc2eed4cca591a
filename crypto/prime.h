#pragma once

#include <cstdint>

#include "crypto/bn.h"
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

namespace sealwright {

/// Draws from the generator what ZEB_MillerRabin draws for an odd composite of at most 66 digits:
/// one base, unless the screen refuses the number. For a caller that knows the number to be
/// composite: the generator goes on as if it had been tested.
void draw_as_for_composite(const Digit* number, std::uint32_t digit_count);

}  // namespace sealwright
