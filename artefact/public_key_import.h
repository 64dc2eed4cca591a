#pragma once

#include <optional>
#include <string>

#include "artefact/public_key.h"

namespace sealwright {

/// A key that came in, or why it did not.
struct ImportedKey {
  std::optional<PublicKey> key;
  std::string refusal;  // what the file is and what is wanted: "a private key: give the public one"
};

/// Reads an RSA public key as other tools write it: "PUBLIC KEY" (RFC 5280, 4.1, with the plain RSA
/// algorithm) or "RSA PUBLIC KEY" (RFC 8017, A.1.1), in one PEM block (RFC 7468), which may have
/// text around it, or as the DER inside. The key has to be one of the scheme: its bits, its
/// exponent, an odd modulus.
ImportedKey import_public_key(ByteView file, Scheme scheme);

}  // namespace sealwright
