#include "crypto/checked_signature.h"

#include <algorithm>
#include <array>

#include "base/wipe.h"
#include "crypto/rsa.h"
#include "crypto/sha1.h"

namespace sealwright {

namespace {

using SignatureBuffer = std::array<std::uint8_t, signature_bytes_2048>;  // the widest there is

}  // namespace

Status sign_digest_at_size(WritableBytes signature, const SigningKey& key,
                           const std::uint8_t* digest) {
  SignatureBuffer made = {};
  const WipeOnExit made_guard(made);  // of a refused key it may hold anything
  std::uint32_t length = 0;
  const Status status = Generate_PSS_RSASignature(key.mode, key.items.data(), length_of(key.items),
                                                  digest, sha1_digest_length, made.data(), &length);
  if (status != ZEB_SUCCESS) return status;
  if (length != signature.size()) return SIGN_ERR_RSA;
  std::copy_n(made.begin(), length, signature.begin());
  return ZEB_SUCCESS;
}

Status sign_digest_checked(WritableBytes signature, const SigningKey& key,
                           const std::uint8_t* public_key, const std::uint8_t* digest) {
  SignatureBuffer made = {};
  const WipeOnExit made_guard(made);  // a faulty one gives the key away
  const WritableBytes result = WritableBytes(made).first(signature.size());
  const Status status = sign_digest_at_size(result, key, digest);
  if (status != ZEB_SUCCESS) return status;
  // A failed verification wipes what it was given.
  SignatureBuffer checked = made;
  const WipeOnExit checked_guard(checked);
  std::array<std::uint8_t, sha1_digest_length> checked_digest;
  std::copy_n(digest, checked_digest.size(), checked_digest.begin());
  const Status verified = Verify_PSS_RSASignature(
      public_key, 0, checked_digest.data(), sha1_digest_length, checked.data(), length_of(result));
  if (verified != ZEB_SUCCESS) return SIGN_ERR_RSA;
  std::copy(result.begin(), result.end(), signature.begin());
  return ZEB_SUCCESS;
}

Status sign_message_checked(WritableBytes signature, const SigningKey& key,
                            const std::uint8_t* public_key, ByteView message) {
  // The message is hashed once; signing and checking share the digest.
  std::uint8_t digest[sha1_digest_length];
  const Status status =
      sha1_message(message.data(), length_of(message), digest, signing_sha1_codes);
  if (status != ZEB_SUCCESS) return status;
  return sign_digest_checked(signature, key, public_key, digest);
}

}  // namespace sealwright
