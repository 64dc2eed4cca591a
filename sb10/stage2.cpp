#include "sb10/stage2.h"

#include <cstdio>

#include "crypto/checked_signature.h"
#include "sb10/key_store.h"
#include "scheme/messages.h"

using sealwright::view_of;

Status sb10_Generate_Stage2(const char* privateKeyFile, const std::uint8_t* image,
                            std::uint32_t imageLen, std::uint8_t* signatureOut,
                            std::uint32_t* signatureLen) {
  const sealwright::Sb10SigningKey key = sealwright::load_sb10_stage2_private_key(privateKeyFile);
  const Status status = sealwright::sign_message_checked(
      {signatureOut, signature_bytes_1024}, {rsa_mode_plain, key.items},
      view_of(key.public_part).data(), {image, imageLen});
  if (status == ZEB_SUCCESS) *signatureLen = signature_bytes_1024;
  std::fputs(status == ZEB_SUCCESS ? stage2_signed_line : stage2_not_signed_line, stdout);
  return status;
}
