#pragma once

#include <cstdint>
#include <variant>
#include <vector>

#include "artefact/scheme.h"
#include "base/bytes.h"
#include "crypto/pss.h"
#include "crypto/rsa.h"

namespace sealwright {

/// An RSA public key out of a file or an image.
struct PublicKey {
  Scheme scheme;
  std::variant<RsaPublicKey1024, RsaPublicKey2048> stored;  // as verifiers take it
  std::vector<std::uint8_t> modulus;                        // big-endian, full width
  std::uint32_t exponent;
  /// A modulus with its top bit, an exponent above 1, both odd, and the stated lengths are those of
  /// the format. Of a key that is not regular nothing can be said: with other lengths the checks
  /// take other numbers than the ones shown, and with an exponent of 1 any signature.
  bool regular;
};

[[nodiscard]] PublicKey to_public_key(const RsaPublicKey1024& stored);
[[nodiscard]] PublicKey to_public_key(const RsaPublicKey2048& stored);

/// Regular, and with the exponent that every key of its scheme is made with.
[[nodiscard]] bool is_of_the_format(const PublicKey& key);

/// The numbers as the public operation takes them. A view of `key`.
[[nodiscard]] RsaPublicNumbers numbers_of(const PublicKey& key);

[[nodiscard]] bool is_same_key(const PublicKey& a, const PublicKey& b);

/// Whether the key signed a digest of 20 bytes. False for a key that is not regular and for a
/// signature of another length than the modulus.
[[nodiscard]] bool has_signed(const PublicKey& key, ByteView digest, ByteView signature);

}  // namespace sealwright
