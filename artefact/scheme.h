#pragma once

#include <cstdint>

namespace sealwright {

/// The generations of the secure-boot scheme.
enum class Scheme : std::uint8_t { sb10, sb20 };

/// The sizes and numbers in which the schemes differ. Signatures are as long as the modulus.
struct SchemeFacts {
  const char* name;              // "1.1" or "2.1"
  std::uint32_t modulus_length;  // bytes
  std::uint32_t efuse_length;    // bytes
  std::uint32_t exponent;        // of every key that key generation makes
};

const SchemeFacts& facts_of(Scheme scheme);

}  // namespace sealwright
