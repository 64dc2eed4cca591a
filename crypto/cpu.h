#pragma once

#include <cstddef>
#include <cstdint>

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

/// Whether this build has the functions at the end of this header. Guard calls by `if constexpr`,
/// then ask crypto_paths().
inline constexpr bool has_cipher_paths = CRYPTO_PATHS_X86 != 0 || CRYPTO_PATHS_ARM != 0;

struct CryptoPaths {
  bool sha1;      // SHA-1 by the processor's own instructions
  bool aes;       // AES likewise
  bool bn_words;  // big numbers on 64-bit words
  bool bn_rows;   // their rows in x86 assembly (BMI2, ADX)
};

/// The paths in force, which every dispatching function consults.
const CryptoPaths& crypto_paths();

/// What this processor has.
CryptoPaths available_crypto_paths();

/// Puts paths in force, as far as the processor has them. For tests and benchmarks.
void force_crypto_paths(const CryptoPaths& wanted);

struct AesKeySchedule;

/// Compresses `blocks` consecutive 64-byte blocks at `data` (any alignment) into the five chaining
/// words of `state` (FIPS 180-4, 6.1.2). Only where crypto_paths().sha1 is set.
void sha1_compress_by_processor(std::uint32_t* state, const std::uint8_t* data, std::size_t blocks);

/// CBC encryption of `blocks` whole blocks from `in` to `out`, which do not overlap. `chain` is the
/// previous ciphertext block (16 bytes), in and out. Only where crypto_paths().aes is set.
void aes_cbc_encrypt_by_processor(const AesKeySchedule& encryption, std::uint8_t* chain,
                                  const std::uint8_t* in, std::uint8_t* out, std::size_t blocks);

/// CBC decryption of `blocks` whole blocks in place, likewise.
void aes_cbc_decrypt_by_processor(const AesKeySchedule& decryption, std::uint8_t* chain,
                                  std::uint8_t* in_out, std::size_t blocks);
