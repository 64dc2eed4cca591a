#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "base/bytes.h"
#include "crypto/bn.h"
#include "crypto/pss.h"
#include "crypto/rsa_key.h"
#include "crypto/sha1.h"
#include "crypto/status.h"

// RSASSA-PSS (RFC 8017, 8.1 and 9.1) with SHA-1, MGF1-SHA-1 and trailer byte 0xBC.
//
// Numbers cross every interface as digit arrays: a signature or key number as bytes is the number
// in little-endian order, 4 x (digit count) bytes long. Only the encoded message is big-endian.
//
// A public key as the verification wrappers take it has one of two forms, which the signature
// length selects.

inline constexpr std::uint32_t signature_bytes_1024 = 128;
inline constexpr std::uint32_t signature_bytes_2048 = 256;

/// Public key that goes with signatures of 128 bytes.
struct RsaPublicKey1024 {
  std::uint8_t n[128];
  std::uint8_t e[4];
};
static_assert(sizeof(RsaPublicKey1024) == 132);

/// Public key that goes with signatures of 256 bytes; the lengths are those of n and e in bytes.
struct RsaPublicKey2048 {
  std::uint32_t nLen;  // 256
  std::uint8_t n[256];
  std::uint32_t eLen;  // 4
  std::uint8_t e[4];
};
static_assert(sizeof(RsaPublicKey2048) == 268);
static_assert(offsetof(RsaPublicKey2048, eLen) == 260);

inline constexpr std::int32_t rsa_mode_plain = 0;  // key items n, d
inline constexpr std::int32_t rsa_mode_crt = 1;    // key items n, e, d, p, q, dP, dQ, qInv

/// What a signer returns for a failing step of its message digest.
inline constexpr sealwright::Sha1StepCodes signing_sha1_codes = {
    SIGN_ERR_SHA1_INIT, SIGN_ERR_SHA1_UPDATE, SIGN_ERR_SHA1_FINAL};

/// Signs a digest with n and d, both of `nWords` digits (at most 64), and `sLen` fresh salt bytes.
/// The signature has nWords digits, and so `*sigWords` says.
/// @return 0; ZEB_ERR_FAIL when the modulus has no room for the encoding.
Status ZEB_RSA_PSS_Sign(std::uint32_t* sigWords, Digit* signature, std::uint32_t nWords,
                        const Digit* n, const Digit* d, std::uint32_t mHashLen,
                        const std::uint8_t* mHash, std::uint32_t sLen);

/// The same signature by the Chinese remainder theorem.
Status ZEB_RSA_PSS_SignCRT(std::uint32_t* sigWords, Digit* signature,
                           const ZEB_RSA_PRIVATE_KEY* key, std::uint32_t mHashLen,
                           const std::uint8_t* mHash, std::uint32_t sLen);

/// result = input^d mod n by Garner's recombination, both of the key's nWords digits; input < n.
void zeb_RSA_CrtDec(Digit* result, const Digit* input, const ZEB_RSA_PRIVATE_KEY* key);

/// Verifies a signature of `nWords` digits over a digest. The signature may be n or larger, the top
/// bit of the unmasked encoding is ignored and the salt need not have 20 bytes: any length is taken
/// that leaves the padding eight zero bytes, up to 98 bytes for 32 digits and 226 for 64. Longer
/// ones, which have room up to 106 and 234 bytes, verify only when made by this library. An
/// encoding without a separator is refused, and so is a key with a digit count outside 1 to 64, a
/// modulus below 6 digits or one whose top bit is clear.
/// @return 0 when valid, otherwise ZEB_ERR_FAIL.
Status ZEB_RSA_PSS_Verify(std::uint32_t nWords, const Digit* n, const Digit* signature,
                          std::uint32_t eWords, const Digit* e, std::uint32_t mHashLen,
                          const std::uint8_t* mHash);

/// Signs a digest with a serialised private key. `mode` 1 takes the CRT layout, any other the plain
/// one. `signature` has room for as many bytes as the modulus of the key, at most 256;
/// `*signatureLen` receives that count.
/// @return 0; SIGN_ERR_RSA when the list is no usable key (nothing is written then).
Status Generate_PSS_RSASignature(std::int32_t mode, const std::uint8_t* keyItems,
                                 std::uint32_t keyItemsLen, const std::uint8_t* mHash,
                                 std::uint32_t mHashLen, std::uint8_t* signature,
                                 std::uint32_t* signatureLen);

/// Generate_PSS_RSASignature over the SHA-1 digest of a message.
/// @return also SIGN_ERR_SHA1_INIT, _UPDATE (null message) and _FINAL.
Status Generate_PSS_RSASignature2(std::int32_t mode, const std::uint8_t* keyItems,
                                  std::uint32_t keyItemsLen, const std::uint8_t* message,
                                  std::uint32_t messageLen, std::uint8_t* signature,
                                  std::uint32_t* signatureLen);

/// Verifies a signature of 128 or 256 bytes over a digest. `publicKeyLen` is not read; the length
/// fields of the 256-byte form are ignored.
/// A failed verification overwrites the caller's signature and digest with zeros.
/// @return 0; VERIFY_ERR_SIGNATURE_LENGTH (nothing wiped); VERIFY_ERR_RSA.
Status Verify_PSS_RSASignature(const std::uint8_t* publicKey, std::uint32_t publicKeyLen,
                               std::uint8_t* mHash, std::uint32_t mHashLen, std::uint8_t* signature,
                               std::uint32_t signatureLen);

/// Verifies a signature over the SHA-1 digest of a message, which is made before the length of the
/// signature is checked. Here the digit counts of the 256-byte form are taken from the key (a
/// signed byte length divided by 4), and `publicKey` has at least 264 + 256 readable bytes.
/// `publicKeyLen` is not read.
/// A failed verification overwrites the caller's signature with zeros.
/// @return 0; VERIFY_ERR_SHA1_INIT, _UPDATE (null message) and _FINAL;
///         VERIFY_ERR_SIGNATURE_LENGTH; VERIFY_ERR_RSA.
Status Verify_PSS_RSASignature2(const std::uint8_t* publicKey, std::uint32_t publicKeyLen,
                                const std::uint8_t* message, std::uint32_t messageLen,
                                std::uint8_t* signature, std::uint32_t signatureLen);

namespace sealwright {

using Sha1Digest = std::span<std::uint8_t, sha1_digest_length>;

/// What Verify_PSS_RSASignature2 does with the digest that it makes, for a caller that has hashed
/// the message itself, block by block say: the digit counts of the 256-byte form come from the key.
/// A failed verification overwrites the caller's signature and digest with zeros.
/// @return 0; VERIFY_ERR_SIGNATURE_LENGTH (nothing wiped); VERIFY_ERR_RSA.
[[nodiscard]] Status verify_by_stated_counts(WritableBytes signature,
                                             const std::uint8_t* public_key, Sha1Digest digest);

}  // namespace sealwright
