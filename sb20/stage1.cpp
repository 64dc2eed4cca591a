#include "sb20/stage1.h"

#include <cstdio>
#include <cstring>

#include "crypto/rsa.h"
#include "sb20/code_encryption.h"
#include "sb20/efuse_file.h"
#include "sb20/key_buffers.h"
#include "sb20/key_files.h"
#include "sb20/messages.h"
#include "sb20/private_key_file.h"
#include "util/build_info.h"
#include "util/file.h"

namespace {

constexpr std::uint32_t build_info_length = sizeof(BuildInfo);

/// The stage-2 key's own signature over its info; its length is what the file says.
Status check_proof_of_possession() {
  Sb20PublicKeyFile file;
  std::memcpy(&file, publicKey, sizeof file);
  const Status status = Verify_PSS_RSASignature2(
      publicKey, sizeof file.publicKeyInfo.key, publicKey, sizeof file.publicKeyInfo,
      publicKey + offsetof(Sb20PublicKeyFile, popSignature), file.popSignatureLen);
  if (status != ZEB_SUCCESS) std::fputs(popp_failure_line, stdout);
  return status;
}

void read_root_public_key_info() {
  sb20_Context = {};
  read_record(sb20_public_key_info_file,
              reinterpret_cast<std::uint8_t*>(&sb20_Context.publicKeyInfo),
              sizeof sb20_Context.publicKeyInfo);
}

/// Builds the context for the sealed code and checks it against the eFuse file, read afresh.
Status make_and_check_context(const std::uint8_t* code, std::uint32_t signed_length) {
  const Status status = Generate_SB20_Context(privateKey, privateKeyLen, publicKey, code,
                                              signed_length, &sb20_Context);
  if (status != ZEB_SUCCESS) return status;
  read_sb20_efuse_file();
  return Check_SB20_Context(sb20_eFuseData, sb20_eFuseDataLen, &sb20_Context, code, signed_length);
}

/// `code_length` bytes are encrypted; `info_length`, 0 or 48, bytes of build information follow.
Status generate_stage1(std::uint8_t* code, std::uint32_t code_length, std::uint32_t info_length) {
  publicKeyLen = static_cast<std::uint32_t>(
      read_whole_or_abort(sb20_stage2_public_key_file, publicKey, sizeof publicKey));
  Status status = check_proof_of_possession();
  if (status != ZEB_SUCCESS) return status;
  status = read_private_key_file(sb20_private_key_file, key_file_mode_v21, sb20_key_file_tail);
  if (status != ZEB_SUCCESS) return status;

  read_root_public_key_info();
  read_sb20_efuse_file();
  read_root_public_key_info();  // read once more, on purpose
  status = Encrypt_Code(sb20_eFuseData, sb20_eFuseDataLen, &sb20_Context, code, code_length);
  if (status != ZEB_SUCCESS) return status;
  if (info_length != 0) mk_BL_Info(code + code_length);

  status = make_and_check_context(code, code_length + info_length);
  std::fputs(status == ZEB_SUCCESS ? stage1_signed_line : stage1_not_signed_line, stdout);
  return status;
}

}  // namespace

Status sb20_Generate_Stage1(std::uint8_t* code, std::uint32_t codeLen) {
  return generate_stage1(code, codeLen, 0);
}

Status sb20_Generate_Stage1_Polymorphic(std::uint8_t* code, std::uint32_t totalLen) {
  return generate_stage1(code, totalLen - build_info_length, build_info_length);
}
