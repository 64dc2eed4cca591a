#pragma once

#include <span>
#include <string>

#include "artefact/public_key.h"

namespace sealwright {

/// A key and what a person calls it.
struct KeyCandidate {
  std::string name;
  PublicKey key;
};

/// A signature that is not right: what came, and what it was to be.
struct WrongSignature {
  ByteView given;   // as it came: right it would be big-endian, as long as the modulus
  ByteView digest;  // to be signed
  ByteView block;   // the encoded block that stood for the digest; empty when there was none
};

/// What is probably wrong with a signature that the first of these keys was to make, found by
/// trying: other forms of the bytes, the other keys, other paddings and other digests. A part of a
/// sentence: "it is hexadecimal text instead of bytes". Where nothing fits, that is what it says.
std::string diagnose(const WrongSignature& wrong, std::span<const KeyCandidate> keys);

}  // namespace sealwright
