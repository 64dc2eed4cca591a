#pragma once

#include <cstddef>
#include <cstdint>

// SHA-1 by the processor's own instructions, x86 or Arm: only where has_cipher_paths and
// crypto_paths().sha1 are set.

namespace sealwright {

/// Compresses `blocks` consecutive 64-byte blocks at `data` (any alignment) into the five chaining
/// words of `state` (FIPS 180-4, 6.1.2).
void sha1_compress_by_processor(std::uint32_t* state, const std::uint8_t* data, std::size_t blocks);

}  // namespace sealwright
