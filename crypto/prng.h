#pragma once

#include <cstdint>

#include "crypto/status.h"

// The process-wide SHA-1 random generator. It seeds itself from the noise sources below at its
// first use and again after every 32 output blocks. Not thread-safe.

/// Writes `length` random bytes to `destination`. Unused bytes of the last block are handed out
/// first, so the output of successive calls is one byte stream.
/// @return 0, or ZEB_ERR_NULL_POINTER when `destination` is null.
Status ZEB_SHA1_PRNG_Rand(std::uint32_t length, std::uint8_t* destination);

/// XORs `seed_length` bytes into the secret state, then re-seeds it from the noise sources.
/// @return 0, or ZEB_ERR_NULL_POINTER when `seed` is null and `seed_length` is not 0.
Status ZEB_SHA1_PRNG_AddSeed(const std::uint8_t* seed, std::uint32_t seed_length);

/// XORs noise into the `length` bytes of `buffer`, as a ring of 32-bit words: "noise.dat" in the
/// working directory, /dev/random, the clock, the process's resource usage and rand().
/// `length` is a multiple of 4. A source that is missing is skipped without a word.
void zeb_GetNoise(std::uint8_t* buffer, std::uint32_t length);
