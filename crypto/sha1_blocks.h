#pragma once

#include <cstddef>
#include <cstdint>

/// Compresses `blocks` consecutive 64-byte blocks at `data` (any alignment) into the five chaining
/// words of `state` (FIPS 180-4, 6.1.2), on the fastest path this processor has.
void sha1_compress_blocks(std::uint32_t* state, const std::uint8_t* data, std::size_t blocks);

/// The same in portable code.
void sha1_compress_blocks_portable(std::uint32_t* state, const std::uint8_t* data,
                                   std::size_t blocks);

/// The same by the x86 SHA extensions; only where crypto_paths() says so.
void sha1_compress_blocks_x86(std::uint32_t* state, const std::uint8_t* data, std::size_t blocks);
