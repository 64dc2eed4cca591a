#include "sb10/boot_context.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "crypto/rsa.h"
#include "sb20/context_signature.h"
#include "sb20/entry_table.h"
#include "sb20/status.h"

namespace {

constexpr std::uint8_t context_magic[16] = {'S', 'B', '1', '0', '_', 'C', 'O', 'N',
                                            'T', 'E', 'X', 'T', 0,   0,   0,   0};
constexpr std::uint8_t fill_byte = 0xAA;

ImageAndKey covered_by_signature(const SB10_CONTEXT* context, const std::uint8_t* image,
                                 std::uint32_t imageLen) {
  return {image, imageLen, reinterpret_cast<const std::uint8_t*>(&context->stage2PublicKey),
          sizeof context->stage2PublicKey};
}

}  // namespace

Status Generate_SB10_Context(const std::uint8_t* rootPrivateKey, std::uint32_t rootPrivateKeyLen,
                             const std::uint8_t* stage2PublicKey, const std::uint8_t* image,
                             std::uint32_t imageLen, SB10_CONTEXT* context) {
  std::fill(std::begin(context->fill), std::end(context->fill), fill_byte);
  std::memcpy(context->magic, context_magic, sizeof context_magic);
  if (stage2PublicKey != nullptr) {
    std::memcpy(&context->stage2PublicKey, stage2PublicKey, sizeof context->stage2PublicKey);
  } else {
    context->stage2PublicKey = context->publicKeyInfo.key;
  }
  return sign_image_and_key(covered_by_signature(context, image, imageLen), rsa_mode_plain,
                            rootPrivateKey, rootPrivateKeyLen, context->signature,
                            sizeof context->signature);
}

Status Check_SB10_Context(const std::uint8_t* eFuse, std::uint32_t eFuseLen, SB10_CONTEXT* context,
                          const std::uint8_t* image, std::uint32_t imageLen) {
  if (eFuseLen != sb10_efuse_length) return CHECK_ERR_LENGTH;
  save_SB10_FuncPtr(context->funcPtrTable);
  const Status status = Validate_SB10_PublicKeyInfo(eFuse, eFuseLen, &context->publicKeyInfo);
  if (status != ZEB_SUCCESS) return status;
  return verify_image_and_key(covered_by_signature(context, image, imageLen),
                              reinterpret_cast<const std::uint8_t*>(&context->publicKeyInfo.key),
                              sizeof context->publicKeyInfo.key, context->signature,
                              sizeof context->signature);
}

std::uint32_t* save_SB10_FuncPtr(std::uint32_t* table) {
  static_assert(sb10_entry_count == common_entry_count);
  save_common_entries(table);
  return table;
}
