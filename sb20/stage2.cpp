#include "sb20/stage2.h"

#include <cstdio>

#include "crypto/rsa.h"
#include "sb20/checked_signature.h"
#include "sb20/key_buffers.h"
#include "sb20/key_files.h"
#include "sb20/messages.h"
#include "sb20/private_key_file.h"

Status sb20_Generate_Stage2(const char* privateKeyFile, const std::uint8_t* image,
                            std::uint32_t imageLen, std::uint8_t* signatureOut,
                            std::uint32_t* signatureLen) {
  Status status = read_private_key_file(privateKeyFile, key_file_mode_v21, sb20_key_file_tail);
  if (status != ZEB_SUCCESS) return status;
  // The n and e items that a key record starts with are the public key as verifiers take it.
  const std::uint8_t* public_key = privateKey;
  status = sign_message_checked(rsa_mode_crt, privateKey, privateKeyLen, public_key, image,
                                imageLen, signatureOut, signature_bytes_2048);
  if (status == ZEB_SUCCESS) *signatureLen = signature_bytes_2048;
  std::fputs(status == ZEB_SUCCESS ? stage2_signed_line : stage2_not_signed_line, stdout);
  return status;
}
