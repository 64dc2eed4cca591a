#pragma once

#include <cstddef>
#include <cstdint>

#include "crypto/bn.h"
#include "crypto/sha1.h"
#include "crypto/status.h"

inline constexpr std::uint32_t sb10_efuse_length = 16;  // bytes

/// Public key as every v1.1 verifier takes it.
struct Sb10PublicKey {
  std::uint8_t n[128];
  std::uint8_t e[4];
};
static_assert(sizeof(Sb10PublicKey) == 132);

/// A root public key bound to the eFuse data: eFuse data = hmac[0..15] XOR the HMAC key.
struct Sb10PublicKeyInfo {
  Sb10PublicKey key;
  std::uint8_t hmac[sha1_digest_length];  // HMAC-SHA-1 over `key`
};
static_assert(sizeof(Sb10PublicKeyInfo) == 152);
static_assert(offsetof(Sb10PublicKeyInfo, hmac) == 132);

/// HMAC key constant of the scheme. No operation reads it, on purpose: the HMAC key is drawn at
/// generation and recovered from the eFuse data at validation.
extern const std::uint8_t sb10_hMacKey[16];
extern const std::uint32_t sb10_hMacKeyLen;

/// Builds `info` for n and e (digit arrays with their digit counts) and the eFuse value that
/// anchors it. `givenKey` is a 16-byte HMAC key, or null with length 0 to draw one. *eFuseLen: in
/// the room at `eFuseOut`, at least 16; out 16.
/// @return 0; INFO_ERR_ARGUMENT; INFO_ERR_GEN_HMAC_...
Status Generate_SB10_PublicKeyInfo(const std::uint8_t* givenKey, std::uint32_t givenKeyLen,
                                   const Digit* n, std::uint32_t nWords, const Digit* e,
                                   std::uint32_t eWords, std::uint8_t* eFuseOut,
                                   std::uint32_t* eFuseLen, Sb10PublicKeyInfo* info);

/// Checks that `info` belongs to the eFuse data. On a mismatch the info is wiped, on purpose.
/// @return 0; INFO_ERR_ARGUMENT when eFuseLen is not 16; INFO_ERR_HMAC_...; INFO_ERR_MISMATCH.
Status Validate_SB10_PublicKeyInfo(const std::uint8_t* eFuse, std::uint32_t eFuseLen,
                                   Sb10PublicKeyInfo* info);
