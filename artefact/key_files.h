#pragma once

#include <optional>

#include "artefact/public_key.h"

// Key files of both schemes, recognised by their length, the header where there is one, and, for
// private keys, by what they decrypt to.

/// What may be told of a key file: its public key, and whether the file proves what it claims.
struct KeyFile {
  const char* scheme;  // "2.1" or "1.1"
  PublicKey key;
  bool proven;
};

/// A public-key file; proven: its maker holds the private key.
std::optional<KeyFile> read_public_key_file(ByteView file);

/// A private-key file that opens and holds a modulus; proven: n = p q; e d = 1, dP = d and dQ = d
/// modulo p - 1 and q - 1; q qInv = 1 modulo p; a number raised to d comes back raised to e, in
/// scheme 2.1 by all of the numbers and with p above q.
std::optional<KeyFile> read_private_key_file(ByteView file);
