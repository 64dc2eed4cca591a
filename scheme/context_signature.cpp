#include "scheme/context_signature.h"

#include <algorithm>

#include "crypto/rsa.h"
#include "crypto/sha1.h"
#include "scheme/status.h"

namespace sealwright {

namespace {

constexpr std::uint8_t fill_byte = 0xAA;

// Starting, the image, the key, ending.
constexpr FourStepCodes signing = {CONTEXT_ERR_SHA1_INIT, CONTEXT_ERR_SHA1_IMAGE,
                                   CONTEXT_ERR_SHA1_KEY, CONTEXT_ERR_SHA1_FINAL};
constexpr FourStepCodes checking = {CHECK_ERR_SHA1_INIT, CHECK_ERR_SHA1_IMAGE, CHECK_ERR_SHA1_KEY,
                                    CHECK_ERR_SHA1_FINAL};

Status digest_in_steps(std::uint8_t* digest, const ImageAndKey& covered,
                       const FourStepCodes& codes) {
  ZEB_SHA1 hash = {};
  const auto update = [&](ByteView bytes) {
    return ZEB_SHA1_Update(&hash, bytes.data(), length_of(bytes));
  };
  if (ZEB_SHA1_Init(&hash) != ZEB_SUCCESS) return codes[0];
  if (update(covered.image) != ZEB_SUCCESS) return codes[1];
  if (update(covered.stage2_key) != ZEB_SUCCESS) return codes[2];
  if (ZEB_SHA1_Final(&hash, digest) != ZEB_SUCCESS) return codes[3];
  return ZEB_SUCCESS;
}

}  // namespace

void mark_context(WritableBytes magic, WritableBytes fill, ByteView name) {
  std::fill(fill.begin(), fill.end(), fill_byte);
  std::copy(name.begin(), name.end(), magic.begin());
}

Status digest_image_and_key(std::uint8_t* digest, const ImageAndKey& covered) {
  return digest_in_steps(digest, covered, signing);
}

Status sign_context_digest(WritableBytes signature, const SigningKey& root_key,
                           const std::uint8_t* digest) {
  const Status status = sign_digest_at_size(signature, root_key, digest);
  return status == ZEB_SUCCESS ? ZEB_SUCCESS : CONTEXT_ERR_SIGNING;
}

Status verify_image_and_key(WritableBytes signature, ByteView root_key,
                            const ImageAndKey& covered) {
  std::uint8_t digest[sha1_digest_length];
  const Status status = digest_in_steps(digest, covered, checking);
  if (status != ZEB_SUCCESS) return status;
  const Status verified =
      Verify_PSS_RSASignature(root_key.data(), length_of(root_key), digest, sha1_digest_length,
                              signature.data(), length_of(signature));
  return verified == ZEB_SUCCESS ? ZEB_SUCCESS : CHECK_ERR_SIGNATURE;
}

}  // namespace sealwright
