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

/// Marks a context: fills `fill` with the byte 0xAA and writes `name` to the zeroed `magic`.
void mark_context(WritableBytes magic, WritableBytes fill, ByteView name);

/// Signs with the root key. The signature is not checked here: callers run the device's check on
/// the finished context before they report success.
/// @return 0; CONTEXT_ERR_SHA1_...; CONTEXT_ERR_SIGNING.
Status sign_image_and_key(WritableBytes signature, const SigningKey& root_key,
                          const ImageAndKey& covered);

/// Verifies with the root public key; a signature that fails is wiped.
/// @return 0; CHECK_ERR_SHA1_...; CHECK_ERR_SIGNATURE.
Status verify_image_and_key(WritableBytes signature, ByteView root_key, const ImageAndKey& covered);
