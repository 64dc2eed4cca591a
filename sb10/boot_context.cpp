#include "sb10/boot_context.h"

#include <cstring>

#include "base/bytes.h"
#include "sb10/public_key_info.h"
#include "scheme/context_signature.h"
#include "scheme/entry_table.h"
#include "scheme/status.h"

using sealwright::view_of;

namespace sealwright {

void fill_sb10_context(SB10_CONTEXT& context, const RsaPublicKey1024& stage2_key) {
  mark_context(context.magic, context.fill, sb10_context_magic);
  context.stage2PublicKey = stage2_key;
}

Status digest_sb10_context(std::uint8_t* digest, const SB10_CONTEXT& context, ByteView image) {
  return digest_image_and_key(digest, {image, view_of(context.stage2PublicKey)});
}

void attach_sb10_signature(SB10_CONTEXT& context, ByteView signature) {
  std::memcpy(context.signature, signature.data(), sizeof context.signature);
}

}  // namespace sealwright

Status Generate_SB10_Context(const std::uint8_t* rootPrivateKey, std::uint32_t rootPrivateKeyLen,
                             const std::uint8_t* stage2PublicKey, const std::uint8_t* image,
                             std::uint32_t imageLen, SB10_CONTEXT* context) {
  RsaPublicKey1024 stage2_key = context->publicKeyInfo.key;
  if (stage2PublicKey != nullptr) std::memcpy(&stage2_key, stage2PublicKey, sizeof stage2_key);
  sealwright::fill_sb10_context(*context, stage2_key);
  std::uint8_t digest[sha1_digest_length];
  const Status status = sealwright::digest_sb10_context(digest, *context, {image, imageLen});
  if (status != ZEB_SUCCESS) return status;
  return sealwright::sign_context_digest(
      context->signature, {rsa_mode_plain, {rootPrivateKey, rootPrivateKeyLen}}, digest);
}

Status Check_SB10_Context(const std::uint8_t* eFuse, std::uint32_t eFuseLen, SB10_CONTEXT* context,
                          const std::uint8_t* image, std::uint32_t imageLen) {
  if (eFuseLen != sb10_efuse_length) return CHECK_ERR_LENGTH;
  save_SB10_FuncPtr(context->funcPtrTable);
  const Status status = Validate_SB10_PublicKeyInfo(eFuse, eFuseLen, &context->publicKeyInfo);
  if (status != ZEB_SUCCESS) return status;
  return sealwright::verify_image_and_key(context->signature, view_of(context->publicKeyInfo.key),
                                          {{image, imageLen}, view_of(context->stage2PublicKey)});
}

std::uint32_t* save_SB10_FuncPtr(std::uint32_t* table) {
  static_assert(sb10_entry_count == common_entry_count);
  sealwright::save_common_entries(table);
  return table;
}
