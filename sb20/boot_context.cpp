#include "sb20/boot_context.h"

#include <cstring>

#include "base/bytes.h"
#include "sb20/entry_table.h"
#include "sb20/public_key_info.h"
#include "scheme/context_signature.h"
#include "scheme/status.h"

Status Generate_SB20_Context(const std::uint8_t* rootPrivateKey, std::uint32_t rootPrivateKeyLen,
                             const std::uint8_t* stage2PublicKey, const std::uint8_t* code,
                             std::uint32_t codeLen, SB20_CONTEXT* context) {
  mark_context(context->magic, context->fill, sb20_context_magic);
  const void* stage2_key = stage2PublicKey;
  if (stage2_key == nullptr) stage2_key = &context->publicKeyInfo.key;
  std::memcpy(&context->stage2PublicKey, stage2_key, sizeof context->stage2PublicKey);
  context->signatureLen = sizeof context->signature;
  return sign_image_and_key(context->signature, {rsa_mode_crt, {rootPrivateKey, rootPrivateKeyLen}},
                            {{code, codeLen}, view_of(context->stage2PublicKey)});
}

Status Check_SB20_Context(const std::uint8_t* eFuse, std::uint32_t eFuseLen, SB20_CONTEXT* context,
                          const std::uint8_t* code, std::uint32_t codeLen) {
  if (eFuseLen != sb20_efuse_length || context->signatureLen != sizeof context->signature) {
    return CHECK_ERR_LENGTH;
  }
  save_SB20_FuncPtr(context->funcPtrTable);
  const Status status = Validate_SB20_PublicKeyInfo(eFuse, eFuseLen, &context->publicKeyInfo);
  if (status != ZEB_SUCCESS) return status;
  return verify_image_and_key(context->signature, view_of(context->publicKeyInfo.key),
                              {{code, codeLen}, view_of(context->stage2PublicKey)});
}
