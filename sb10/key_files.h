#pragma once

#include <cstdint>

#include "base/bytes.h"
#include "crypto/status.h"
#include "sb10/records.h"
#include "scheme/key_pair.h"

// What the files of a key pair of scheme 1.1 hold, and the steps in which they are made, whoever
// holds the private key: assemble, digest, sign, attach; then verify_sb10_root_proof or
// verify_sb10_proof. Nothing here reads or writes a file.

namespace sealwright {

inline constexpr Digit sb10_public_exponent = 65537;
inline constexpr std::uint32_t sb10_modulus_bits = 1024;

/// The files of a root key.
struct Sb10RootKeyFiles {
  std::uint8_t efuse_data[sb10_efuse_length];
  Sb10RootPublicKeyFile public_key;
  Sb10RootPrivateKeyFile private_key;  // not encrypted
};

/// The files of a stage-2 pair, and the info and eFuse data that are made for it but stored
/// nowhere.
struct Sb10Stage2KeyFiles {
  std::uint8_t efuse_data[sb10_efuse_length];
  Sb10PublicKeyInfo info;
  Sb10PublicKeyFile public_key;
  Sb10PrivateKeyFile private_key;  // not encrypted
};

/// Everything of a root public-key file but the signature that proves possession: the key, bound to
/// new eFuse data under an HMAC key that is drawn here.
/// @return 0; what Generate_SB10_PublicKeyInfo returns.
[[nodiscard]] Status assemble_sb10_root_public_key(Sb10RootPublicKeyFile& file,
                                                   WritableBytes efuse_data, const KeyNumber& n,
                                                   const KeyNumber& e);

/// Everything of a stage-2 public-key file but that signature.
void assemble_sb10_public_key(Sb10PublicKeyFile& file, const RsaPublicKey1024& key);

/// The 20 bytes that the key signs to prove possession: over the info, and over n and e with their
/// lengths.
void digest_sb10_root_proof(std::uint8_t* digest, const Sb10RootPublicKeyFile& file);
void digest_sb10_proof(std::uint8_t* digest, const Sb10PublicKeyFile& file);

/// Puts the proof (128 bytes, little-endian) in its place.
void attach_sb10_root_proof(Sb10RootPublicKeyFile& file, ByteView signature);
void attach_sb10_proof(Sb10PublicKeyFile& file, ByteView signature);

/// The numbers of a key as both private-key files hold them.
void assemble_sb10_private_items(Sb10PrivateKeyItems& items, const ZEB_RSA_PRIVATE_KEY& key);

/// A stage-2 private-key file with its header, not encrypted yet. (That of a root key is the items
/// and four zero bytes.)
void assemble_sb10_private_key(Sb10PrivateKeyFile& file, const Sb10PrivateKeyItems& items);

/// All files of a new key: assembled, proven with the key and checked. The private-key file is not
/// encrypted.
/// @return 0; what Generate_SB10_PublicKeyInfo returns; SIGN_ERR_RSA.
[[nodiscard]] Status make_sb10_root_key_files(Sb10RootKeyFiles& files,
                                              const ZEB_RSA_PRIVATE_KEY& key);
[[nodiscard]] Status make_sb10_stage2_key_files(Sb10Stage2KeyFiles& files,
                                                const ZEB_RSA_PRIVATE_KEY& key);

}  // namespace sealwright
