#include "scheme/private_key_file.h"

#include <algorithm>
#include <array>
#include <bit>
#include <memory>
#include <new>

#include "base/wipe.h"
#include "crypto/aes_cbc.h"
#include "scheme/status.h"

namespace {

struct CipherParameters {
  std::array<std::uint8_t, 32> key;
  std::uint32_t key_length;
  std::array<std::uint8_t, aes_block_length> iv;
};

// Seeds of the fixed parameters; volatile, so that the bytes are made at run time and never stand
// as one string in the program.
struct ParameterSeed {
  volatile std::uint32_t key;
  volatile std::uint32_t iv;
};
const ParameterSeed seed_sb10 = {0x3C5A91E7, 0x8B1D4F62};
const ParameterSeed seed_sb20 = {0xD94E0B35, 0x62F7A8C1};

/// Fixed byte sequence grown from a seed; part of the file format, so never to be changed.
void expand_seed(std::uint32_t seed, std::uint8_t* bytes, std::uint32_t length) {
  std::uint32_t word = seed;
  for (std::uint32_t i = 0; i < length; ++i) {
    word = std::rotl(word * 0x9E3779B1U + 0x7F4A7C15U + i, 11);
    bytes[i] = static_cast<std::uint8_t>(word >> 24);
  }
}

void build_parameters(CipherParameters& parameters, std::int32_t mode) {
  const bool is_sb10 = mode == key_file_mode_sb10;
  const ParameterSeed& seed = is_sb10 ? seed_sb10 : seed_sb20;
  parameters.key_length = is_sb10 ? 16 : 32;
  expand_seed(seed.key, parameters.key.data(), parameters.key_length);
  expand_seed(seed.iv, parameters.iv.data(), aes_block_length);
}

Status set_up_cipher(AesCbcContext& cipher, std::int32_t mode) {
  CipherParameters parameters = {};
  const WipeOnExit parameters_guard(parameters);
  build_parameters(parameters, mode);
  return ZEB_AES_SetInfo(&cipher, AES_USE_DEFAULT, parameters.key.data(), parameters.key_length,
                         parameters.iv.data(), aes_block_length, AES_PADDING_NONE, 0);
}

}  // namespace

Status do_PrivateKey_Encrypt(std::int32_t mode, std::uint8_t* buffer, std::uint32_t size) {
  const std::unique_ptr<std::uint8_t[]> scratch(new (std::nothrow)
                                                    std::uint8_t[std::size_t{size} + 1]);
  AesCbcContext cipher;
  const WipeOnExit cipher_guard(cipher);
  if (!scratch || set_up_cipher(cipher, mode) != ZEB_SUCCESS ||
      ZEB_AES_CBC_EncInit(&cipher) != ZEB_SUCCESS) {
    return CIPHER_ERR_SETUP;
  }
  if (sealwright::aes_cbc_encrypt_message(&cipher, buffer, size, scratch.get()) != ZEB_SUCCESS) {
    return CIPHER_ERR_RUN;
  }
  std::copy_n(scratch.get(), size, buffer);
  return ZEB_SUCCESS;
}

Status do_PrivateKey_Decrypt(std::int32_t mode, std::uint8_t* buffer, std::uint32_t size) {
  AesCbcContext cipher;
  const WipeOnExit cipher_guard(cipher);
  if (set_up_cipher(cipher, mode) != ZEB_SUCCESS || ZEB_AES_CBC_DecInit(&cipher) != ZEB_SUCCESS) {
    return CIPHER_ERR_SETUP;
  }
  const Status status = sealwright::aes_cbc_decrypt_message(&cipher, buffer, size);
  return status == ZEB_SUCCESS ? ZEB_SUCCESS : CIPHER_ERR_RUN;
}
