#pragma once

#include <array>
#include <cstdint>

#include "base/bytes.h"
#include "crypto/rsa_key.h"

// The encoding under an RSASSA-PSS signature (RFC 8017, 8.1 and 9.1) with SHA-1, MGF1-SHA-1 and
// trailer byte 0xBC, and the public operation that recovers it. An encoded block is big-endian and
// as long as the modulus, whose top bit is set; signatures and key numbers are little-endian.

inline constexpr std::uint32_t pss_salt_length = 20;  // bytes, for every signature made here
inline constexpr std::uint32_t pss_max_block_bytes = digit_bytes * rsa_max_modulus_digits;

/// XORs MGF1-SHA-1(seed) over `target_length` bytes in place (RFC 8017, B.2.1).
void zeb_PKCS1_MGF1_Sha1(std::uint8_t* target, std::uint32_t target_length,
                         const std::uint8_t* seed, std::uint32_t seed_length);

namespace sealwright {

/// The numbers of a public key as bytes at any alignment, each a whole number of digits.
struct RsaPublicNumbers {
  ByteView n;
  ByteView e;
};

/// Encodes a digest with a given salt (RFC 8017, 9.1.1). The digest and the salt are not part of
/// `block`.
/// @return false, with nothing written, when a block of this length has no room for the salt.
[[nodiscard]] bool emsa_pss_encode(WritableBytes block, ByteView digest, ByteView salt);

/// Encodes a digest with `salt_length` bytes fresh from the generator.
/// @return as emsa_pss_encode; nothing is drawn then.
[[nodiscard]] bool emsa_pss_encode_afresh(WritableBytes block, ByteView digest,
                                          std::uint32_t salt_length);

/// Whether a block encodes a digest (RFC 8017, 9.1.2), with a salt of any length that leaves the
/// padding eight zero bytes, at most 226 for a block of 256. The block's top bit is ignored. The
/// block is overwritten.
[[nodiscard]] bool emsa_pss_matches(WritableBytes block, ByteView digest);

/// block = signature^e mod n (RFC 8017, 5.2.2), all three of n's length. The signature may be n or
/// larger.
/// @return false, with nothing written, when the lengths differ, a number is empty, longer than 256
///         bytes or not of whole digits, or the top bit of n is clear.
[[nodiscard]] bool rsa_public_operation(WritableBytes block, ByteView signature,
                                        const RsaPublicNumbers& key);

enum class PssVerdict {
  valid,
  unusable_key,  // or a signature of another length than its modulus
  not_below_modulus,
  pkcs1_v15,         // the block is padded for RSASSA-PKCS1-v1_5
  not_pss,           // made with another key, with another hash, or no signature at all
  other_digest,      // a PSS signature of something else
  other_salt_length  // right but for its salt, which has not 20 bytes
};

/// What a strict check saw.
struct PssFindings {
  PssVerdict verdict;
  std::uint32_t salt_length;                            // of what is a PSS encoding
  std::uint32_t block_length;                           // 0 when nothing was recovered
  std::array<std::uint8_t, pss_max_block_bytes> block;  // signature^e mod n
};

/// Checks a newly made signature, more strictly than a device does: it is below the modulus, the
/// salt has 20 bytes, and each byte of the block is the one that encoding gives.
[[nodiscard]] PssFindings check_new_signature(ByteView signature, const RsaPublicNumbers& key,
                                              ByteView digest);

}  // namespace sealwright
