#include "sb20/boot_context.h"

#include <cstring>

#include "base/bytes.h"
#include "sb20/entry_table.h"
#include "sb20/public_key_info.h"
#include "scheme/context_signature.h"
#include "scheme/status.h"

namespace sealwright {

void fill_sb20_context(SB20_CONTEXT& context, const RsaPublicKey2048& stage2_key) {
  mark_context(context.magic, context.fill, sb20_context_magic);
  context.stage2PublicKey = stage2_key;
}

Status digest_sb20_context(std::uint8_t* digest, const SB20_CONTEXT& context, ByteView sealed) {
  return digest_image_and_key(digest, {sealed, view_of(context.stage2PublicKey)});
}

void attach_sb20_signature(SB20_CONTEXT& context, ByteView signature) {
  context.signatureLen = sizeof context.signature;
  std::memcpy(context.signature, signature.data(), sizeof context.signature);
}

}  // namespace sealwright

Status Generate_SB20_Context(const std::uint8_t* rootPrivateKey, std::uint32_t rootPrivateKeyLen,
                             const std::uint8_t* stage2PublicKey, const std::uint8_t* code,
                             std::uint32_t codeLen, SB20_CONTEXT* context) {
  RsaPublicKey2048 stage2_key = context->publicKeyInfo.key;
  if (stage2PublicKey != nullptr) std::memcpy(&stage2_key, stage2PublicKey, sizeof stage2_key);
  sealwright::fill_sb20_context(*context, stage2_key);
  std::uint8_t digest[sha1_digest_length];
  const Status status = sealwright::digest_sb20_context(digest, *context, {code, codeLen});
  if (status != ZEB_SUCCESS) return status;
  context->signatureLen = sizeof context->signature;
  return sign_context_digest(context->signature,
                             {rsa_mode_crt, {rootPrivateKey, rootPrivateKeyLen}}, digest);
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
