#include "sb20/stage2.h"

#include <cstdio>

#include "crypto/checked_signature.h"
#include "crypto/rsa.h"
#include "sb20/key_store.h"
#include "scheme/messages.h"

Status sb20_Generate_Stage2(const char* privateKeyFile, const std::uint8_t* image,
                            std::uint32_t imageLen, std::uint8_t* signatureOut,
                            std::uint32_t* signatureLen) {
  ByteView items;
  Status status = sealwright::load_sb20_private_key(items, privateKeyFile);
  if (status != ZEB_SUCCESS) return status;
  // The n and e items that a key record starts with are the public key as verifiers take it. Of a
  // file that is shorter than both, the rest is the zeros of the buffer.
  const std::uint8_t* public_key = items.data();
  status = sealwright::sign_message_checked({signatureOut, signature_bytes_2048},
                                            {rsa_mode_crt, items}, public_key, {image, imageLen});
  if (status == ZEB_SUCCESS) *signatureLen = signature_bytes_2048;
  std::fputs(status == ZEB_SUCCESS ? stage2_signed_line : stage2_not_signed_line, stdout);
  return status;
}
