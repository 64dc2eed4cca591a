#pragma once

#include <array>
#include <functional>
#include <string>

#include "artefact/hex.h"
#include "artefact/private_key_file.h"
#include "artefact/public_key.h"
#include "crypto/rsa.h"
#include "seal/outcome.h"

// Whoever signs sees a digest and returns a signature.

namespace sealwright {

/// What has to be signed.
struct SigningTask {
  const char* makes;  // as `made` in Result
  PublicKey key;      // the key that has to sign
  Digest digest;
};

/// A signature, little-endian, as long as the modulus of its key.
struct Signature {
  std::array<std::uint8_t, signature_bytes_2048> room = {};
  std::size_t length = 0;

  [[nodiscard]] ByteView bytes() const { return ByteView(room).first(length); }
};

/// Fills all of `signature`.
using Sign = std::function<Objection(WritableBytes signature, const SigningTask& task)>;

struct Signer {
  const char* name;  // as Result has it
  Sign sign;
};

/// Signs with a key in memory, which outlives the signer. `file` is the name to complain about.
Signer key_signer(const PrivateKey& key, std::string file);

/// Has the task signed and proves the signature under the task's key, strictly: below the modulus,
/// a salt of 20 bytes, and each byte of the encoding.
[[nodiscard]] Objection obtain_signature(Signature& signature, const Signer& signer,
                                         const SigningTask& task);

/// There is no randomness to be had for keys and salts: what is made without could be guessed.
[[nodiscard]] Objection require_random_source();

}  // namespace sealwright
