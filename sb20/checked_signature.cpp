#include "sb20/checked_signature.h"

#include <algorithm>
#include <array>

#include "crypto/rsa.h"
#include "crypto/sha1.h"

namespace {

using SignatureBuffer = std::array<std::uint8_t, signature_bytes_2048>;  // the widest there is

}  // namespace

Status sign_digest_at_size(std::int32_t mode, const std::uint8_t* key_items,
                           std::uint32_t key_items_length, const std::uint8_t* digest,
                           std::uint8_t* signature, std::uint32_t signature_bytes) {
  SignatureBuffer scratch = {};
  std::uint32_t length = 0;
  const Status status = Generate_PSS_RSASignature(mode, key_items, key_items_length, digest,
                                                  sha1_digest_length, scratch.data(), &length);
  if (status != ZEB_SUCCESS) return status;
  if (length != signature_bytes) return SIGN_ERR_RSA;
  std::copy_n(scratch.data(), length, signature);
  return ZEB_SUCCESS;
}

Status sign_message_checked(std::int32_t mode, const std::uint8_t* key_items,
                            std::uint32_t key_items_length, const std::uint8_t* public_key,
                            const std::uint8_t* message, std::uint32_t message_length,
                            std::uint8_t* signature, std::uint32_t signature_bytes) {
  // The message is hashed once; signing and checking share the digest.
  std::uint8_t digest[sha1_digest_length];
  Status status = sha1_message(message, message_length, digest, signing_sha1_codes);
  if (status != ZEB_SUCCESS) return status;
  SignatureBuffer made = {};
  status =
      sign_digest_at_size(mode, key_items, key_items_length, digest, made.data(), signature_bytes);
  if (status != ZEB_SUCCESS) return status;
  SignatureBuffer checked = made;  // a failed verification wipes what it was given
  status = Verify_PSS_RSASignature(public_key, 0, digest, sha1_digest_length, checked.data(),
                                   signature_bytes);
  if (status != ZEB_SUCCESS) return SIGN_ERR_RSA;
  std::copy_n(made.data(), signature_bytes, signature);
  return ZEB_SUCCESS;
}
