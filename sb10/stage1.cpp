#include "sb10/stage1.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iterator>

#include "crypto/rsa.h"
#include "sb10/key_buffers.h"
#include "sb10/key_files.h"
#include "sb20/key_buffers.h"
#include "sb20/messages.h"
#include "sb20/private_key_file.h"
#include "util/file.h"

namespace {

/// The stage-2 key's own signature over its n and e; both lengths are what the file says.
Status verify_proof_of_possession() {
  const auto* record = reinterpret_cast<const std::uint8_t*>(&sb10_pubkey_file);
  const std::uint32_t signed_length = sb10_pubkey_file.signed_length;
  // A block that runs past the file's record was never signed.
  if (signed_length > sizeof sb10_pubkey_file - sb10_signed_offset) return VERIFY_ERR_RSA;
  // What a longer signature would have past the record is zero.
  std::array<std::uint8_t, signature_bytes_2048> signature = {};
  std::copy(std::begin(sb10_pubkey_file.signature), std::end(sb10_pubkey_file.signature),
            signature.begin());
  return Verify_PSS_RSASignature2(publicKey, publicKeyLen, record + sb10_signed_offset,
                                  signed_length, signature.data(),
                                  sb10_pubkey_file.signature_length);
}

/// Builds the context for the image and checks it against the eFuse file.
Status make_and_check_context(const std::uint8_t* image, std::uint32_t imageLen) {
  const Status status =
      Generate_SB10_Context(privateKey, privateKeyLen, publicKey, image, imageLen, &sb10_Context);
  if (status != ZEB_SUCCESS) return status;
  sb10_eFuseDataLen = static_cast<std::uint32_t>(
      read_record(sb10_efuse_file, sb10_eFuseData, sizeof sb10_eFuseData));
  return Check_SB10_Context(sb10_eFuseData, sb10_eFuseDataLen, &sb10_Context, image, imageLen);
}

}  // namespace

Status sb10_Generate_Stage1(const std::uint8_t* image, std::uint32_t imageLen) {
  read_sb10_public_key_file(sb10_stage2_public_key_file);
  Status status = verify_proof_of_possession();
  if (status != ZEB_SUCCESS) {
    std::fputs(popp_failure_line, stdout);
    return status;
  }
  // The status is not looked at, on purpose: a key that did not decrypt fails in signing.
  read_private_key_file(sb10_private_key_file, key_file_mode_v11, sb10_key_file_tail);

  sb10_Context = {};
  read_record(sb10_public_key_info_file,
              reinterpret_cast<std::uint8_t*>(&sb10_Context.publicKeyInfo),
              sizeof sb10_Context.publicKeyInfo);
  status = make_and_check_context(image, imageLen);
  std::fputs(status == ZEB_SUCCESS ? stage1_signed_line : stage1_not_signed_line, stdout);
  return status;
}
