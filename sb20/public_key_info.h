#pragma once

#include <cstddef>
#include <cstdint>

#include "crypto/bn.h"
#include "crypto/sha1.h"
#include "crypto/status.h"

inline constexpr std::uint32_t sb20_efuse_length = 20;  // bytes

/// Public key as every v2.1 verifier takes it.
struct Sb20PublicKey {
  std::uint32_t nLen;  // 256
  std::uint8_t n[256];
  std::uint32_t eLen;  // 4
  std::uint8_t e[4];
};
static_assert(sizeof(Sb20PublicKey) == 268);
static_assert(offsetof(Sb20PublicKey, eLen) == 260);

/// A root public key bound to the eFuse data: eFuse data = hmac XOR the HMAC key.
struct Sb20PublicKeyInfo {
  Sb20PublicKey key;
  std::uint8_t hmac[sha1_digest_length];  // HMAC-SHA-1 over `key`
};
static_assert(sizeof(Sb20PublicKeyInfo) == 288);
static_assert(offsetof(Sb20PublicKeyInfo, hmac) == 268);

/// Public key file: the info and the proof that its maker holds the private key.
struct Sb20PublicKeyFile {
  Sb20PublicKeyInfo publicKeyInfo;
  std::uint32_t popSignatureLen;   // 256
  std::uint8_t popSignature[256];  // over publicKeyInfo
};
static_assert(sizeof(Sb20PublicKeyFile) == 548);
static_assert(offsetof(Sb20PublicKeyFile, popSignature) == 292);

/// Builds `info` for n and e (digit arrays with their digit counts) and the eFuse value that
/// anchors it. `givenKey` is a 20-byte HMAC key, or null with length 0 to draw one. *eFuseLen: in
/// the room at `eFuseOut`, at least 20; out 20.
/// @return 0; INFO_ERR_ARGUMENT; INFO_ERR_GEN_HMAC_...
Status Generate_SB20_PublicKeyInfo(const std::uint8_t* givenKey, std::uint32_t givenKeyLen,
                                   const Digit* n, std::uint32_t nWords, const Digit* e,
                                   std::uint32_t eWords, std::uint8_t* eFuseOut,
                                   std::uint32_t* eFuseLen, Sb20PublicKeyInfo* info);

/// Checks that `info` belongs to the eFuse data. On a mismatch the info is wiped, on purpose.
/// @return 0; INFO_ERR_ARGUMENT when eFuseLen is not 20; INFO_ERR_HMAC_...; INFO_ERR_MISMATCH.
Status Validate_SB20_PublicKeyInfo(const std::uint8_t* eFuse, std::uint32_t eFuseLen,
                                   Sb20PublicKeyInfo* info);
