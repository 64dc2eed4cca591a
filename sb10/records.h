#pragma once

#include <cstddef>
#include <cstdint>

#include "crypto/key_items.h"
#include "crypto/rsa.h"
#include "crypto/sha1.h"

// Every record that scheme 1.1 stores. Integers and numbers are little-endian.

inline constexpr std::uint32_t sb10_efuse_length = 16;  // bytes
inline constexpr std::uint32_t sb10_entry_count = 12;

/// A public key bound to the eFuse data: eFuse data = hmac[0..15] XOR the HMAC key.
struct Sb10PublicKeyInfo {
  RsaPublicKey1024 key;
  std::uint8_t hmac[sha1_digest_length];  // HMAC-SHA-1 over `key`
};
static_assert(sizeof(Sb10PublicKeyInfo) == 152);
static_assert(offsetof(Sb10PublicKeyInfo, hmac) == 132);

/// Root public-key file: the info and the proof that its maker holds the private key.
struct Sb10RootPublicKeyFile {
  Sb10PublicKeyInfo publicKeyInfo;
  std::uint8_t popSignature[128];  // over publicKeyInfo
};
static_assert(sizeof(Sb10RootPublicKeyFile) == 280);

/// The headers of stage-2 key files.
inline constexpr char sb10_public_key_text[] = "1.0, Pub, RSA-1024";
inline constexpr char sb10_private_key_text[] = "1.0, Priv, RSA-1024, CRT";

/// Stage-2 public-key file (".spk").
struct Sb10PublicKeyFile {
  std::uint32_t header_length;  // 28
  char text[24];                // "1.0, Pub, RSA-1024", zero-filled
  std::uint32_t zero;
  std::uint32_t signed_length;  // 140: what the proof of possession covers, from n on
  Item128 n;
  Item4 e;
  std::uint32_t signature_length;  // 128
  std::uint8_t signature[128];     // proof of possession
};
static_assert(sizeof(Sb10PublicKeyFile) == 308);
static_assert(offsetof(Sb10PublicKeyFile, n) == 36);
static_assert(offsetof(Sb10PublicKeyFile, e) == 168);
static_assert(offsetof(Sb10PublicKeyFile, signature) == 180);

/// Items of a private key as both private-key files hold them; e is not stored.
struct Sb10PrivateKeyItems {
  Item128 n, d;
  Item64 p, q, dP, dQ, qInv;
};
static_assert(sizeof(Sb10PrivateKeyItems) == 604);
static_assert(offsetof(Sb10PrivateKeyItems, p) == 264);

/// Root private-key file, before encryption: the items and what makes them whole AES blocks.
struct Sb10RootPrivateKeyFile {
  Sb10PrivateKeyItems items;
  std::uint8_t tail[4];  // zero
};
static_assert(sizeof(Sb10RootPrivateKeyFile) == 608);

/// Private-key file of a stage-2 pair, before encryption.
struct Sb10PrivateKeyFile {
  std::uint32_t header_length;  // 28
  char text[24];                // "1.0, Priv, RSA-1024, CRT", no terminator
  std::uint32_t zero;
  std::uint32_t items_length;  // 604
  Sb10PrivateKeyItems items;
};
static_assert(sizeof(Sb10PrivateKeyFile) == 640);
static_assert(offsetof(Sb10PrivateKeyFile, items) == 36);

/// What marks a boot context.
inline constexpr std::uint8_t sb10_context_magic[16] = {'S', 'B', '1', '0', '_', 'C', 'O', 'N',
                                                        'T', 'E', 'X', 'T', 0,   0,   0,   0};

/// Boot context, the record after a secured BL1 image. The signature covers the image and
/// `stage2PublicKey`; `publicKeyInfo` carries its own HMAC; nothing covers the rest.
struct SB10_CONTEXT {
  RsaPublicKey1024 stage2PublicKey;
  std::uint8_t signature[128];
  Sb10PublicKeyInfo publicKeyInfo;  // of the root key
  std::uint32_t funcPtrTable[sb10_entry_count];
  std::uint8_t zero[16];
  std::uint8_t magic[16];  // "SB10_CONTEXT" and four zero bytes
  std::uint8_t fill[20];   // every byte 0xAA
};
static_assert(sizeof(SB10_CONTEXT) == 512);
static_assert(offsetof(SB10_CONTEXT, signature) == 132);
static_assert(offsetof(SB10_CONTEXT, publicKeyInfo) == 260);
static_assert(offsetof(SB10_CONTEXT, funcPtrTable) == 412);
static_assert(offsetof(SB10_CONTEXT, magic) == 476);
