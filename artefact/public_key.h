#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/bytes.h"
#include "crypto/rsa.h"

// An RSA public key as other tools know it.

struct PublicKey {
  std::vector<std::uint8_t> modulus;  // big-endian, full width
  std::uint32_t exponent;
  /// A modulus of full length and an exponent above 1, both odd, and no other lengths stated. For
  /// anything else the checks would take another key than the one that is shown, or any signature.
  bool regular;
};

PublicKey to_public_key(const RsaPublicKey2048& stored);
PublicKey to_public_key(const RsaPublicKey1024& stored);

/// DER of the SubjectPublicKeyInfo (RFC 5280, 4.1 and RFC 8017, A.1.1).
std::vector<std::uint8_t> encode_der(const PublicKey& key);

/// The DER in one PEM block (RFC 7468), line ends included.
std::string encode_pem(const PublicKey& key);

/// Lower-case hexadecimal digits, two for each byte.
std::string to_hex(ByteView bytes);

/// SHA-1 in hexadecimal digits.
std::string sha1_hex(ByteView bytes);
