#pragma once

#include <cstdint>

#include "base/bytes.h"
#include "crypto/status.h"

/// A serialised private key and its layout.
struct SigningKey {
  std::int32_t mode;  // rsa_mode_plain or rsa_mode_crt
  ByteView items;
};

namespace sealwright {

/// Signs a digest of 20 bytes when the key makes signatures of exactly the length of `signature`: a
/// damaged key of another size must not reach past the caller's room.
/// @return 0; SIGN_ERR_RSA, and `signature` is untouched then.
[[nodiscard]] Status sign_digest_at_size(WritableBytes signature, const SigningKey& key,
                                         const std::uint8_t* digest);

/// Signs a digest of 20 bytes and checks the signature with the key's own public part, so that a
/// damaged key file, or a fault in one CRT half that would give the key away, never leaves as a
/// success. `public_key` has the form that Verify_PSS_RSASignature takes for this size.
/// @return 0; SIGN_ERR_RSA, and `signature` is untouched then.
[[nodiscard]] Status sign_digest_checked(WritableBytes signature, const SigningKey& key,
                                         const std::uint8_t* public_key,
                                         const std::uint8_t* digest);

/// sign_digest_checked over the SHA-1 digest of a message.
/// @return also SIGN_ERR_SHA1_...
[[nodiscard]] Status sign_message_checked(WritableBytes signature, const SigningKey& key,
                                          const std::uint8_t* public_key, ByteView message);

}  // namespace sealwright
