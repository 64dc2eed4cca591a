#pragma once

#include <cstdint>

#include "base/bytes.h"
#include "crypto/status.h"
#include "sb20/records.h"
#include "scheme/key_pair.h"

// What the files of a key pair of scheme 2.1 hold, and the steps in which they are made, whoever
// holds the private key: assemble, digest, sign, attach; then verify_sb20_proof. Nothing here reads
// or writes a file.

namespace sealwright {

inline constexpr Digit sb20_public_exponent = 3;
inline constexpr std::uint32_t sb20_modulus_bits = 2048;

/// The files of a root key; a stage-2 key has no eFuse data.
struct Sb20KeyFiles {
  std::uint8_t efuse_data[sb20_efuse_length];
  Sb20PublicKeyFile public_key;
  Sb20PrivateKeyFile private_key;  // not encrypted
};

/// Everything of a public-key file but the signature that proves possession: the key, bound to new
/// eFuse data under an HMAC key that is drawn here.
/// @return 0; what Generate_SB20_PublicKeyInfo returns.
[[nodiscard]] Status assemble_sb20_public_key(Sb20PublicKeyFile& file, WritableBytes efuse_data,
                                              const KeyNumber& n, const KeyNumber& e);

/// The 20 bytes that the key signs to prove possession.
void digest_sb20_proof(std::uint8_t* digest, const Sb20PublicKeyFile& file);

/// Puts the proof (256 bytes, little-endian) in its place.
void attach_sb20_proof(Sb20PublicKeyFile& file, ByteView signature);

/// The private-key file of a key, not encrypted yet.
void assemble_sb20_private_key(Sb20PrivateKeyFile& file, const ZEB_RSA_PRIVATE_KEY& key);

/// The key item list inside an unencrypted private-key file.
ByteView items_of(const Sb20PrivateKeyFile& file);

/// All files of a new key: assembled, proven with the key and checked. The private-key file is not
/// encrypted.
/// @return 0; what Generate_SB20_PublicKeyInfo returns; SIGN_ERR_RSA.
[[nodiscard]] Status make_sb20_key_files(Sb20KeyFiles& files, const ZEB_RSA_PRIVATE_KEY& key);

}  // namespace sealwright
