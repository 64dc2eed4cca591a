#pragma once

#include <cstddef>
#include <cstdint>

#include "crypto/key_items.h"
#include "crypto/rsa.h"
#include "crypto/sha1.h"

// Every record that scheme 2.1 stores. Integers and numbers are little-endian.

inline constexpr std::uint32_t sb20_efuse_length = 20;  // bytes
inline constexpr std::uint32_t sb20_entry_count = 24;

/// A public key bound to the eFuse data: eFuse data = hmac XOR the HMAC key.
struct Sb20PublicKeyInfo {
  RsaPublicKey2048 key;
  std::uint8_t hmac[sha1_digest_length];  // HMAC-SHA-1 over `key`
};
static_assert(sizeof(Sb20PublicKeyInfo) == 288);
static_assert(offsetof(Sb20PublicKeyInfo, hmac) == 268);

/// Public-key file: the info and the proof that its maker holds the private key.
struct Sb20PublicKeyFile {
  Sb20PublicKeyInfo publicKeyInfo;
  std::uint32_t popSignatureLen;   // 256
  std::uint8_t popSignature[256];  // over publicKeyInfo
};
static_assert(sizeof(Sb20PublicKeyFile) == 548);
static_assert(offsetof(Sb20PublicKeyFile, popSignature) == 292);

/// Private-key file, before encryption: the key item list and what makes it whole AES blocks.
struct Sb20PrivateKeyFile {
  Item256 n;
  Item4 e;
  Item256 d;
  Item128 p, q, dP, dQ, qInv;
  std::uint8_t tail[12];  // zero
};
static_assert(sizeof(Sb20PrivateKeyFile) == 1200);
static_assert(offsetof(Sb20PrivateKeyFile, d) == 268);
static_assert(offsetof(Sb20PrivateKeyFile, p) == 528);
static_assert(offsetof(Sb20PrivateKeyFile, qInv) == 1056);
static_assert(offsetof(Sb20PrivateKeyFile, tail) == 1188);

/// What marks a boot context.
inline constexpr std::uint8_t sb20_context_magic[16] = {'S', 'B', '2', '0', '_', 'C', 'O', 'N',
                                                        'T', 'E', 'X', 'T', 0,   0,   0,   0};

/// Boot context, the record after the code of a secured BL1 image. The signature covers the code
/// and `stage2PublicKey`; `publicKeyInfo` carries its own HMAC; nothing covers the rest.
struct SB20_CONTEXT {
  RsaPublicKey2048 stage2PublicKey;
  std::uint32_t signatureLen;  // 256
  std::uint8_t signature[256];
  Sb20PublicKeyInfo publicKeyInfo;  // of the root key
  std::uint32_t funcPtrTable[sb20_entry_count];
  std::uint8_t zero[32];
  std::uint8_t magic[16];  // "SB20_CONTEXT" and four zero bytes
  std::uint8_t fill[64];   // every byte 0xAA
};
static_assert(sizeof(SB20_CONTEXT) == 1024);
static_assert(offsetof(SB20_CONTEXT, signature) == 272);
static_assert(offsetof(SB20_CONTEXT, publicKeyInfo) == 528);
static_assert(offsetof(SB20_CONTEXT, funcPtrTable) == 816);
static_assert(offsetof(SB20_CONTEXT, magic) == 944);
