#pragma once

#include <cstdint>

// The generator's static state, declared for its own unit and for the tests, which drive the
// generator from a known state and compare it with a second computation.

inline constexpr std::uint32_t prng_block_length = 40;     // bytes in one output block
inline constexpr std::uint32_t prng_blocks_per_seed = 32;  // a re-seed is due after this many

extern std::uint8_t sabSecretState[prng_block_length];  // never output
extern std::uint8_t sabRandPool[prng_block_length];     // the current output block
extern std::uint32_t uIndexRandPool;  // next unused byte of the pool; 40 means used up
extern std::uint32_t suCount;         // blocks made since the last re-seed
extern std::uint32_t xx;              // noise collections so far; seeds srand

extern bool random_device_blocked;  // tests only: as if there were no /dev/random
extern bool kernel_random_blocked;  // tests only: as if getrandom() failed
