#include "sb10/public_key_info.h"

#include <cstring>

#include "sb20/key_binding.h"
#include "sb20/status.h"

// clang-format off
const std::uint8_t sb10_hMacKey[16] = {
    0x5B, 0xE2, 0x17, 0x8C, 0x40, 0xD3, 0x6F, 0xA9, 0x24, 0x91, 0xFE, 0x38, 0xC5, 0x0A, 0x73, 0xB6,
};
// clang-format on
const std::uint32_t sb10_hMacKeyLen = sizeof sb10_hMacKey;

namespace {

constexpr KeyBinding binding = {sizeof(Sb10PublicKey), sb10_efuse_length};
constexpr std::uint32_t refused_modulus_words = 128;

std::uint8_t* bytes_of(Sb10PublicKeyInfo* info) {
  return reinterpret_cast<std::uint8_t*>(info);
}

}  // namespace

Status Generate_SB10_PublicKeyInfo(const std::uint8_t* givenKey, std::uint32_t givenKeyLen,
                                   const Digit* n, std::uint32_t nWords, const Digit* e,
                                   std::uint32_t eWords, std::uint8_t* eFuseOut,
                                   std::uint32_t* eFuseLen, Sb10PublicKeyInfo* info) {
  // The digit count is compared with a byte count, on purpose; a 1024-bit modulus has 32 digits.
  if (*eFuseLen < sb10_efuse_length || nWords == refused_modulus_words) return INFO_ERR_ARGUMENT;
  if (nWords > sizeof info->key.n / digit_bytes || eWords > sizeof info->key.e / digit_bytes) {
    return INFO_ERR_ARGUMENT;
  }
  *info = {};
  std::memcpy(info->key.n, n, std::size_t{digit_bytes} * nWords);
  std::memcpy(info->key.e, e, std::size_t{digit_bytes} * eWords);
  return bind_public_key(binding, givenKey, givenKeyLen, bytes_of(info), eFuseOut, eFuseLen);
}

Status Validate_SB10_PublicKeyInfo(const std::uint8_t* eFuse, std::uint32_t eFuseLen,
                                   Sb10PublicKeyInfo* info) {
  return validate_key_binding(binding, eFuse, eFuseLen, bytes_of(info));
}
