#pragma once

#include <algorithm>

#include "crypto/prng_state.h"

/// Puts the generator into a known state that is not due for a re-seed, with its pool used up.
inline void set_generator(std::uint8_t seed) {
  for (std::uint32_t i = 0; i < prng_block_length; ++i) {
    sabSecretState[i] = static_cast<std::uint8_t>(seed + 3 * i);
    sabRandPool[i] = static_cast<std::uint8_t>(seed ^ (7 * i));
  }
  uIndexRandPool = prng_block_length;
  suCount = 0;
}

/// Bytes drawn since set_generator, up to 32 blocks.
inline std::uint32_t bytes_drawn() {
  return suCount * prng_block_length - (prng_block_length - uIndexRandPool);
}
