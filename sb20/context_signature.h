#pragma once

#include <cstdint>

#include "crypto/status.h"

// The signature in a boot context, as both schemes make and check it: RSA-PSS by the root key over
// SHA-1(image, then the stage-2 public key at the start of the context).

/// What the signature covers: two byte strings with their lengths.
struct ImageAndKey {
  const std::uint8_t* image;
  std::uint32_t image_length;
  const std::uint8_t* key;
  std::uint32_t key_length;
};

/// Signs with the root key items; `mode` as for Generate_PSS_RSASignature.
/// @return 0; CONTEXT_ERR_SHA1_...; CONTEXT_ERR_SIGNING.
Status sign_image_and_key(const ImageAndKey& covered, std::int32_t mode,
                          const std::uint8_t* key_items, std::uint32_t key_items_length,
                          std::uint8_t* signature, std::uint32_t signature_length);

/// Verifies with the root public key; a signature that fails is wiped.
/// @return 0; CHECK_ERR_SHA1_...; CHECK_ERR_SIGNATURE.
Status verify_image_and_key(const ImageAndKey& covered, const std::uint8_t* root_key,
                            std::uint32_t root_key_length, std::uint8_t* signature,
                            std::uint32_t signature_length);
