#include "sb20/boot_context.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "base/bytes.h"
#include "crypto/aes_cbc.h"
#include "crypto/rsa.h"
#include "sb20/code_encryption.h"
#include "sb20/public_key_info.h"
#include "scheme/context_signature.h"
#include "scheme/entry_table.h"
#include "scheme/status.h"

using sealwright::view_of;

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
  // Also where signing fails, the length is there.
  context->signatureLen = sizeof context->signature;
  return sealwright::sign_context_digest(
      context->signature, {rsa_mode_crt, {rootPrivateKey, rootPrivateKeyLen}}, digest);
}

Status Check_SB20_Context(const std::uint8_t* eFuse, std::uint32_t eFuseLen, SB20_CONTEXT* context,
                          const std::uint8_t* code, std::uint32_t codeLen) {
  if (eFuseLen != sb20_efuse_length || context->signatureLen != sizeof context->signature) {
    return CHECK_ERR_LENGTH;
  }
  save_SB20_FuncPtr(context->funcPtrTable);
  const Status status = Validate_SB20_PublicKeyInfo(eFuse, eFuseLen, &context->publicKeyInfo);
  if (status != ZEB_SUCCESS) return status;
  return sealwright::verify_image_and_key(context->signature, view_of(context->publicKeyInfo.key),
                                          {{code, codeLen}, view_of(context->stage2PublicKey)});
}

void save_SB20_FuncPtr(std::uint32_t* table) {
  using sealwright::entry_word;
  sealwright::save_common_entries(table);
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
