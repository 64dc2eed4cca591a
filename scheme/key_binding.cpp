#include "scheme/key_binding.h"

#include <algorithm>

#include "base/wipe.h"
#include "crypto/mem.h"
#include "crypto/prng.h"
#include "crypto/sha1.h"
#include "scheme/status.h"

namespace {

// Setting up, starting, the key, ending.
constexpr FourStepCodes generating = {INFO_ERR_GEN_HMAC_SETUP, INFO_ERR_GEN_HMAC_INIT,
                                      INFO_ERR_GEN_HMAC_UPDATE, INFO_ERR_GEN_HMAC_FINAL};
constexpr FourStepCodes validating = {INFO_ERR_HMAC_SETUP, INFO_ERR_HMAC_INIT, INFO_ERR_HMAC_UPDATE,
                                      INFO_ERR_HMAC_FINAL};

Status hmac_of_key(const KeyBinding& binding, const std::uint8_t* hmac_key,
                   const std::uint8_t* info, std::uint8_t* mac, const FourStepCodes& codes) {
  ZEB_SHA1_HMAC hmac = {};
  const WipeOnExit hmac_guard(hmac);
  if (ZEB_SHA1_HMAC_SetInfo(&hmac, hmac_key, binding.efuse_length) != ZEB_SUCCESS) return codes[0];
  if (ZEB_SHA1_HMAC_Init(&hmac) != ZEB_SUCCESS) return codes[1];
  if (ZEB_SHA1_HMAC_Update(&hmac, info, binding.key_length) != ZEB_SUCCESS) return codes[2];
  if (ZEB_SHA1_HMAC_Final(&hmac, mac) != ZEB_SUCCESS) return codes[3];
  return ZEB_SUCCESS;
}

}  // namespace

Status bind_public_key(const KeyBinding& binding, const std::uint8_t* givenKey,
                       std::uint32_t givenKeyLen, std::uint8_t* info, std::uint8_t* eFuseOut,
                       std::uint32_t* eFuseLen) {
  std::uint8_t hmac_key[sha1_digest_length] = {};
  const WipeOnExit hmac_key_guard(hmac_key);
  if (givenKeyLen != 0) {
    if (givenKeyLen != binding.efuse_length || givenKey == nullptr) return INFO_ERR_ARGUMENT;
    std::copy_n(givenKey, binding.efuse_length, hmac_key);
  } else {
    if (givenKey != nullptr) return INFO_ERR_ARGUMENT;
    if (ZEB_SHA1_PRNG_Rand(binding.efuse_length, hmac_key) != ZEB_SUCCESS) return INFO_ERR_ARGUMENT;
  }
  std::uint8_t* mac = info + binding.key_length;
  const Status status = hmac_of_key(binding, hmac_key, info, mac, generating);
  if (status != ZEB_SUCCESS) return status;
  tmkx_memxor(eFuseOut, mac, hmac_key, binding.efuse_length);
  *eFuseLen = binding.efuse_length;
  return ZEB_SUCCESS;
}

Status validate_key_binding(const KeyBinding& binding, const std::uint8_t* eFuse,
                            std::uint32_t eFuseLen, std::uint8_t* info) {
  if (eFuseLen != binding.efuse_length) return INFO_ERR_ARGUMENT;
  const std::uint8_t* stored = info + binding.key_length;
  std::uint8_t hmac_key[sha1_digest_length];
  const WipeOnExit hmac_key_guard(hmac_key);
  std::uint8_t expected[sha1_digest_length];
  tmkx_memxor(hmac_key, stored, eFuse, binding.efuse_length);
  const Status status = hmac_of_key(binding, hmac_key, info, expected, validating);
  if (status != ZEB_SUCCESS) return status;
  if (tmkx_memcmp(expected, stored, sha1_digest_length) == 0) return ZEB_SUCCESS;
  // Quirk: the caller's info is cleared; device code that looks at it after a failure depends on
  // it.
  std::fill_n(info, binding.key_length + sha1_digest_length, std::uint8_t{0});
  return INFO_ERR_MISMATCH;
}
