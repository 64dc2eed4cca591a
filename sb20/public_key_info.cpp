#include "sb20/public_key_info.h"

#include <cstring>

#include "sb20/key_binding.h"
#include "sb20/status.h"

namespace {

constexpr KeyBinding binding = {sizeof(Sb20PublicKey), sb20_efuse_length};
constexpr std::uint32_t refused_modulus_words = 256;

std::uint8_t* bytes_of(Sb20PublicKeyInfo* info) {
  return reinterpret_cast<std::uint8_t*>(info);
}

}  // namespace

Status Generate_SB20_PublicKeyInfo(const std::uint8_t* givenKey, std::uint32_t givenKeyLen,
                                   const Digit* n, std::uint32_t nWords, const Digit* e,
                                   std::uint32_t eWords, std::uint8_t* eFuseOut,
                                   std::uint32_t* eFuseLen, Sb20PublicKeyInfo* info) {
  // The digit count is compared with a byte count, on purpose; a 2048-bit modulus has 64 digits.
  if (*eFuseLen < sb20_efuse_length || nWords == refused_modulus_words) return INFO_ERR_ARGUMENT;
  if (nWords > sizeof info->key.n / digit_bytes || eWords > sizeof info->key.e / digit_bytes) {
    return INFO_ERR_ARGUMENT;
  }
  *info = {};
  info->key.nLen = digit_bytes * nWords;
  std::memcpy(info->key.n, n, info->key.nLen);
  info->key.eLen = digit_bytes * eWords;
  std::memcpy(info->key.e, e, info->key.eLen);
  return bind_public_key(binding, givenKey, givenKeyLen, bytes_of(info), eFuseOut, eFuseLen);
}

Status Validate_SB20_PublicKeyInfo(const std::uint8_t* eFuse, std::uint32_t eFuseLen,
                                   Sb20PublicKeyInfo* info) {
  return validate_key_binding(binding, eFuse, eFuseLen, bytes_of(info));
}
