#include "sb20/context_signature.h"

#include "crypto/rsa.h"
#include "crypto/sha1.h"
#include "sb20/checked_signature.h"
#include "sb20/status.h"

namespace {

/// The status codes of the four hashing steps.
struct DigestCodes {
  Status init;
  Status image;
  Status key;
  Status final;
};
constexpr DigestCodes signing = {CONTEXT_ERR_SHA1_INIT, CONTEXT_ERR_SHA1_IMAGE,
                                 CONTEXT_ERR_SHA1_KEY, CONTEXT_ERR_SHA1_FINAL};
constexpr DigestCodes checking = {CHECK_ERR_SHA1_INIT, CHECK_ERR_SHA1_IMAGE, CHECK_ERR_SHA1_KEY,
                                  CHECK_ERR_SHA1_FINAL};

Status digest_image_and_key(const ImageAndKey& covered, std::uint8_t* digest,
                            const DigestCodes& codes) {
  ZEB_SHA1 hash = {};
  if (ZEB_SHA1_Init(&hash) != 0) return codes.init;
  if (ZEB_SHA1_Update(&hash, covered.image, covered.image_length) != 0) return codes.image;
  if (ZEB_SHA1_Update(&hash, covered.key, covered.key_length) != 0) return codes.key;
  if (ZEB_SHA1_Final(&hash, digest) != 0) return codes.final;
  return ZEB_SUCCESS;
}

}  // namespace

Status sign_image_and_key(const ImageAndKey& covered, std::int32_t mode,
                          const std::uint8_t* key_items, std::uint32_t key_items_length,
                          std::uint8_t* signature, std::uint32_t signature_length) {
  std::uint8_t digest[sha1_digest_length];
  const Status status = digest_image_and_key(covered, digest, signing);
  if (status != ZEB_SUCCESS) return status;
  // The device's own check follows at once and proves the signature.
  const Status signed_status =
      sign_digest_at_size(mode, key_items, key_items_length, digest, signature, signature_length);
  return signed_status == ZEB_SUCCESS ? ZEB_SUCCESS : CONTEXT_ERR_SIGNING;
}

Status verify_image_and_key(const ImageAndKey& covered, const std::uint8_t* root_key,
                            std::uint32_t root_key_length, std::uint8_t* signature,
                            std::uint32_t signature_length) {
  std::uint8_t digest[sha1_digest_length];
  const Status status = digest_image_and_key(covered, digest, checking);
  if (status != ZEB_SUCCESS) return status;
  const Status verified = Verify_PSS_RSASignature(root_key, root_key_length, digest,
                                                  sha1_digest_length, signature, signature_length);
  return verified == ZEB_SUCCESS ? ZEB_SUCCESS : CHECK_ERR_SIGNATURE;
}
