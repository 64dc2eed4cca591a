#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "artefact/public_key.h"

// A public key as other tools know it.

namespace sealwright {

/// DER of the SubjectPublicKeyInfo (RFC 5280, 4.1 and RFC 8017, A.1.1).
std::vector<std::uint8_t> encode_der(const PublicKey& key);

/// The DER in one PEM block (RFC 7468), line ends included.
std::string encode_pem(const PublicKey& key);

/// SHA-1 of the DER in hexadecimal digits, by which people know the key.
std::string key_sha1(const PublicKey& key);

}  // namespace sealwright
