#pragma once

#include <cstdint>

#include "base/bytes.h"
#include "crypto/checked_signature.h"
#include "crypto/status.h"

// The signature in a boot context, as both schemes make and check it: RSA-PSS by the root key over
// SHA-1(image, then the stage-2 public key at the start of the context).

/// What the signature covers.
struct ImageAndKey {
  ByteView image;
  ByteView stage2_key;
};

namespace sealwright {

/// Marks a context: fills `fill` with the byte 0xAA and writes `name` to the zeroed `magic`.
void mark_context(WritableBytes magic, WritableBytes fill, ByteView name);

/// The 20 bytes that the root key signs.
/// @return 0; CONTEXT_ERR_SHA1_... for a null pointer.
[[nodiscard]] Status digest_image_and_key(std::uint8_t* digest, const ImageAndKey& covered);

/// Signs the digest with the root key. The signature is not checked here: callers run the device's
/// check on the finished context before they report success.
/// @return 0; CONTEXT_ERR_SIGNING.
[[nodiscard]] Status sign_context_digest(WritableBytes signature, const SigningKey& root_key,
                                         const std::uint8_t* digest);

/// Verifies with the root public key; a signature that fails is wiped.
/// @return 0; CHECK_ERR_SHA1_...; CHECK_ERR_SIGNATURE.
[[nodiscard]] Status verify_image_and_key(WritableBytes signature, ByteView root_key,
                                          const ImageAndKey& covered);

}  // namespace sealwright
