#pragma once

// Which processor paths the crypto library takes. They are chosen once, from what the processor
// reports, and give the same results as the portable code bit for bit.

struct CryptoPaths {
  bool sha1;      // SHA-1 by the x86 SHA extensions
  bool aes;       // AES by AES-NI
  bool bn_words;  // big numbers on 64-bit words
  bool bn_rows;   // their rows in x86 assembly (BMI2)
};

/// The paths in force, which every dispatching function consults.
const CryptoPaths& crypto_paths();

/// What this processor has.
CryptoPaths available_crypto_paths();

/// Puts paths in force, as far as the processor has them. For tests and benchmarks.
void force_crypto_paths(const CryptoPaths& wanted);
