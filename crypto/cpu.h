#pragma once

// Processor paths: what this processor can do better than the portable code, with the same results
// bit for bit. The paths are chosen once, at run time, from what the processor reports.

#if defined(__x86_64__)
#define CRYPTO_PATHS_X86 1
#else
#define CRYPTO_PATHS_X86 0
#endif
// Clang offers the Arm instructions only to a build for processors that all have them.
#if defined(__aarch64__) && !defined(__clang__)
#define CRYPTO_PATHS_ARM 1
#else
#define CRYPTO_PATHS_ARM 0
#endif

/// Whether this build has the functions of sha1_processor.h and aes_processor.h. Guard calls by
/// `if constexpr`, then ask crypto_paths().
inline constexpr bool has_cipher_paths = CRYPTO_PATHS_X86 != 0 || CRYPTO_PATHS_ARM != 0;

struct CryptoPaths {
  bool sha1;      // SHA-1 by the processor's own instructions
  bool aes;       // AES likewise
  bool bn_limbs;  // big numbers on 64-bit words
  bool bn_rows;   // their rows in x86 assembly (BMI2, ADX)
};

namespace sealwright {

/// The paths in force, which every dispatching function consults.
const CryptoPaths& crypto_paths();

/// What this processor has.
CryptoPaths available_crypto_paths();

/// Puts paths in force, as far as the processor has them. For tests and benchmarks.
void force_crypto_paths(const CryptoPaths& wanted);

}  // namespace sealwright
