#include "sb20/boot_context.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

#include "crypto/aes_cbc.h"
#include "crypto/rsa.h"
#include "sb20/code_encryption.h"
#include "sb20/context_signature.h"
#include "sb20/entry_table.h"
#include "sb20/status.h"

namespace {

constexpr std::uint8_t context_magic[16] = {'S', 'B', '2', '0', '_', 'C', 'O', 'N',
                                            'T', 'E', 'X', 'T', 0,   0,   0,   0};
constexpr std::uint8_t fill_byte = 0xAA;

ImageAndKey covered_by_signature(const SB20_CONTEXT* context, const std::uint8_t* code,
                                 std::uint32_t codeLen) {
  return {code, codeLen, reinterpret_cast<const std::uint8_t*>(&context->stage2PublicKey),
          sizeof context->stage2PublicKey};
}

}  // namespace

Status Generate_SB20_Context(const std::uint8_t* rootPrivateKey, std::uint32_t rootPrivateKeyLen,
                             const std::uint8_t* stage2PublicKey, const std::uint8_t* code,
                             std::uint32_t codeLen, SB20_CONTEXT* context) {
  std::fill(std::begin(context->fill), std::end(context->fill), fill_byte);
  std::memcpy(context->magic, context_magic, sizeof context_magic);
  if (stage2PublicKey != nullptr) {
    std::memcpy(&context->stage2PublicKey, stage2PublicKey, sizeof context->stage2PublicKey);
  } else {
    context->stage2PublicKey = context->publicKeyInfo.key;
  }
  context->signatureLen = signature_bytes_2048;
  return sign_image_and_key(covered_by_signature(context, code, codeLen), rsa_mode_crt,
                            rootPrivateKey, rootPrivateKeyLen, context->signature,
                            signature_bytes_2048);
}

Status Check_SB20_Context(const std::uint8_t* eFuse, std::uint32_t eFuseLen, SB20_CONTEXT* context,
                          const std::uint8_t* code, std::uint32_t codeLen) {
  if (eFuseLen != sb20_efuse_length || context->signatureLen != signature_bytes_2048) {
    return CHECK_ERR_LENGTH;
  }
  save_SB20_FuncPtr(context->funcPtrTable);
  const Status status = Validate_SB20_PublicKeyInfo(eFuse, eFuseLen, &context->publicKeyInfo);
  if (status != ZEB_SUCCESS) return status;
  return verify_image_and_key(covered_by_signature(context, code, codeLen),
                              reinterpret_cast<const std::uint8_t*>(&context->publicKeyInfo.key),
                              sizeof context->publicKeyInfo.key, context->signature,
                              context->signatureLen);
}

void save_SB20_FuncPtr(std::uint32_t* table) {
  save_common_entries(table);
  const std::array<std::uint32_t, sb20_entry_count - common_entry_count> entries = {
      entry_word(Verify_PSS_RSASignature2), entry_word(Make_AES_Param),
      entry_word(zeb_AES_Encrypt),          entry_word(zeb_AES_Decrypt),
      entry_word(ZEB_AES_SetInfo),          entry_word(ZEB_AES_CBC_EncInit),
      entry_word(ZEB_AES_CBC_EncUpdate),    entry_word(ZEB_AES_CBC_EncFinal),
      entry_word(ZEB_AES_CBC_DecInit),      entry_word(ZEB_AES_CBC_DecUpdate),
      entry_word(ZEB_AES_CBC_DecFinal),     entry_word(Decrypt_Code),
  };
  std::copy(entries.begin(), entries.end(), table + common_entry_count);
}
