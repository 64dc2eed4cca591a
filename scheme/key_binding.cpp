#include "scheme/key_binding.h"

#include <algorithm>

#include "base/wipe.h"
#include "crypto/mem.h"
#include "crypto/prng.h"
#include "crypto/sha1.h"
#include "scheme/status.h"

namespace sealwright {

namespace {

// Setting up, starting, the key, ending.
constexpr FourStepCodes generating = {INFO_ERR_GEN_HMAC_SETUP, INFO_ERR_GEN_HMAC_INIT,
                                      INFO_ERR_GEN_HMAC_UPDATE, INFO_ERR_GEN_HMAC_FINAL};
constexpr FourStepCodes validating = {INFO_ERR_HMAC_SETUP, INFO_ERR_HMAC_INIT, INFO_ERR_HMAC_UPDATE,
                                      INFO_ERR_HMAC_FINAL};

Status hmac_in_steps(std::uint8_t* mac, ByteView hmac_key, ByteView public_key,
                     const FourStepCodes& codes) {
  ZEB_SHA1_HMAC hmac = {};
  const WipeOnExit hmac_guard(hmac);
  if (ZEB_SHA1_HMAC_SetInfo(&hmac, hmac_key.data(), length_of(hmac_key)) != ZEB_SUCCESS) {
    return codes[0];
  }
  if (ZEB_SHA1_HMAC_Init(&hmac) != ZEB_SUCCESS) return codes[1];
  if (ZEB_SHA1_HMAC_Update(&hmac, public_key.data(), length_of(public_key)) != ZEB_SUCCESS) {
    return codes[2];
  }
  if (ZEB_SHA1_HMAC_Final(&hmac, mac) != ZEB_SUCCESS) return codes[3];
  return ZEB_SUCCESS;
}

/// The key that `info` starts with.
ByteView key_in(ByteView info) {
  return info.first(info.size() - sha1_digest_length);
}

}  // namespace

Status bind_public_key(WritableBytes info, WritableBytes efuse, ByteView given_key) {
  std::uint8_t key_buffer[sha1_digest_length] = {};
  const WipeOnExit key_guard(key_buffer);
  const WritableBytes hmac_key = WritableBytes(key_buffer).first(efuse.size());
  if (given_key.empty()) {
    if (given_key.data() != nullptr) return INFO_ERR_ARGUMENT;
    if (ZEB_SHA1_PRNG_Rand(length_of(hmac_key), hmac_key.data()) != ZEB_SUCCESS) {
      return INFO_ERR_ARGUMENT;
    }
  } else {
    if (given_key.size() != efuse.size() || given_key.data() == nullptr) return INFO_ERR_ARGUMENT;
    std::copy(given_key.begin(), given_key.end(), hmac_key.begin());
  }
  const WritableBytes mac = info.last(sha1_digest_length);
  const Status status = hmac_in_steps(mac.data(), hmac_key, key_in(info), generating);
  if (status != ZEB_SUCCESS) return status;
  tmkx_memxor(efuse.data(), mac.data(), hmac_key.data(), length_of(efuse));
  return ZEB_SUCCESS;
}

Status validate_key_binding(WritableBytes info, ByteView efuse) {
  const ByteView stored = info.last(sha1_digest_length);
  std::uint8_t key_buffer[sha1_digest_length];
  const WipeOnExit key_guard(key_buffer);
  const WritableBytes hmac_key = WritableBytes(key_buffer).first(efuse.size());
  tmkx_memxor(hmac_key.data(), stored.data(), efuse.data(), length_of(efuse));
  std::uint8_t expected[sha1_digest_length];
  const Status status = hmac_in_steps(expected, hmac_key, key_in(info), validating);
  if (status != ZEB_SUCCESS) return status;
  if (tmkx_memcmp(expected, stored.data(), sha1_digest_length) == 0) return ZEB_SUCCESS;
  // Quirk: the caller's info is cleared; device code that looks at it after a failure depends on
  // it.
  std::fill(info.begin(), info.end(), std::uint8_t{0});
  return INFO_ERR_MISMATCH;
}

}  // namespace sealwright
