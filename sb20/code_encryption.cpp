#include "sb20/code_encryption.h"

#include <algorithm>
#include <cstring>

#include "base/bytes.h"
#include "base/wipe.h"
#include "crypto/mem.h"
#include "crypto/sha1.h"
#include "scheme/status.h"
#include "util/large_buffer.h"

using sealwright::view_of;

namespace {

constexpr std::uint32_t parameter_length = 16;  // bytes of an AES-128 key and of an IV

Status decrypt_in_place(AesCbcContext& cipher, std::uint8_t* code, std::uint32_t codeLen) {
  if (ZEB_AES_CBC_DecInit(&cipher) != ZEB_SUCCESS ||
      sealwright::aes_cbc_decrypt_message(&cipher, code, codeLen) != ZEB_SUCCESS) {
    return CIPHER_ERR_DECRYPT;
  }
  return ZEB_SUCCESS;
}

}  // namespace

Status Make_AES_Param(const std::uint8_t* eFuse, std::uint32_t eFuseLen,
                      const SB20_CONTEXT* context, std::uint8_t* keyOut,
                      const std::uint32_t* keyLen, std::uint8_t* ivOut,
                      const std::uint32_t* ivLen) {
  if (keyOut == nullptr || ivOut == nullptr || eFuseLen != sb20_efuse_length ||
      *keyLen != parameter_length || *ivLen != parameter_length) {
    return CIPHER_ERR_PARAMETER;
  }
  const Sb20PublicKeyInfo& info = context->publicKeyInfo;
  std::fill_n(ivOut, parameter_length, std::uint8_t{0});
  tmkx_memxor(keyOut, info.hmac, eFuse, parameter_length);
  std::uint8_t digest[sha1_digest_length];
  sealwright::sha1(digest, {view_of(info.key)});
  std::copy_n(digest, parameter_length, ivOut);
  return ZEB_SUCCESS;
}

namespace sealwright {

Status set_up_code_cipher(AesCbcContext& cipher, const std::uint8_t* eFuse, std::uint32_t eFuseLen,
                          const SB20_CONTEXT* context) {
  std::uint8_t key[parameter_length];
  const WipeOnExit key_guard(key);
  std::uint8_t iv[parameter_length];
  const std::uint32_t length = parameter_length;
  const Status status = Make_AES_Param(eFuse, eFuseLen, context, key, &length, iv, &length);
  if (status != ZEB_SUCCESS) return status;
  const Status set = ZEB_AES_SetInfo(&cipher, AES_USE_DEFAULT, key, parameter_length, iv,
                                     parameter_length, AES_PADDING_NONE, 0);
  return set == ZEB_SUCCESS ? ZEB_SUCCESS : CIPHER_ERR_SETUP;
}

}  // namespace sealwright

Status Encrypt_Code(const std::uint8_t* eFuse, std::uint32_t eFuseLen, const SB20_CONTEXT* context,
                    std::uint8_t* code, std::uint32_t codeLen) {
  AesCbcContext cipher;
  const WipeOnExit cipher_guard(cipher);
  const Status status = sealwright::set_up_code_cipher(cipher, eFuse, eFuseLen, context);
  if (status != ZEB_SUCCESS) return status;
  sealwright::LargeBuffer ciphertext(codeLen);
  sealwright::LargeBuffer decrypted(codeLen);
  if (ciphertext.data() == nullptr || decrypted.data() == nullptr ||
      ZEB_AES_CBC_EncInit(&cipher) != ZEB_SUCCESS) {
    return CIPHER_ERR_SETUP;
  }

  if (sealwright::aes_cbc_encrypt_message(&cipher, code, codeLen, ciphertext.data()) !=
      ZEB_SUCCESS) {
    return CIPHER_ERR_RUN;
  }
  std::memcpy(decrypted.data(), ciphertext.data(), codeLen);
  const Status decryption = decrypt_in_place(cipher, decrypted.data(), codeLen);
  if (decryption != ZEB_SUCCESS) return decryption;
  if (std::memcmp(decrypted.data(), code, codeLen) != 0) return CIPHER_ERR_RUN;
  std::memcpy(code, ciphertext.data(), codeLen);
  return ZEB_SUCCESS;
}

Status Decrypt_Code(const std::uint8_t* eFuse, std::uint32_t eFuseLen, const SB20_CONTEXT* context,
                    std::uint8_t* code, std::uint32_t codeLen) {
  AesCbcContext cipher;
  const WipeOnExit cipher_guard(cipher);
  const Status status = sealwright::set_up_code_cipher(cipher, eFuse, eFuseLen, context);
  if (status != ZEB_SUCCESS) return status;
  return decrypt_in_place(cipher, code, codeLen);
}
