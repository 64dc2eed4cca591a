#pragma once

#include <cstdint>

#include "base/bytes.h"
#include "crypto/status.h"

// The process-wide SHA-1 random generator. It seeds itself from the noise sources below at the
// first call, and again at the first call after 32 or more output blocks. Not thread-safe.

/// Writes `length` random bytes to `destination`. Unused bytes of the last block are handed out
/// first, so the output of successive calls is one byte stream.
/// @return 0, or ZEB_ERR_NULL_POINTER when `destination` is null.
Status ZEB_SHA1_PRNG_Rand(std::uint32_t length, std::uint8_t* destination);

/// XORs `seed_length` bytes into the secret state, then re-seeds it from the noise sources.
/// @return 0, or ZEB_ERR_NULL_POINTER when `seed` is null and `seed_length` is not 0.
Status ZEB_SHA1_PRNG_AddSeed(const std::uint8_t* seed, std::uint32_t seed_length);

/// XORs noise into the `length` bytes of `buffer`, as a ring of 32-bit words, in this order: up to
/// 256 bytes each of "noise.dat" in the working directory and of /dev/random, the clock, the
/// process's resource usage, 256 bytes of rand() and 256 of getrandom(). A source that is missing
/// is skipped without a word. "noise.dat" adds no noise: one of 256 bytes or more counts as 256
/// zeros, a smaller one as nothing. A `length` that is no multiple of 4 leaves the last bytes
/// alone.
void zeb_GetNoise(std::uint8_t* buffer, std::uint32_t length);

namespace sealwright {

/// Whether the kernel delivers randomness at this moment, by getrandom() or /dev/random. It never
/// waits. Without either the generator works on, but what it makes can be guessed: ask before keys
/// or signatures are made.
[[nodiscard]] bool random_source_available();

/// Forgets the state, for the end of the process: the pool may hold bytes of a key just made. A
/// later call seeds afresh.
void forget_random_state();

/// ZEB_SHA1_PRNG_Rand for a caller whose pointer is not null: it cannot fail.
void draw_random(WritableBytes destination);

}  // namespace sealwright
