#include "sb20/stage1.h"

#include <cstdio>

#include "sb20/boot_context.h"
#include "sb20/code_encryption.h"
#include "sb20/key_store.h"
#include "sb20/public_key_info.h"
#include "scheme/messages.h"
#include "util/build_info.h"

namespace sealwright {

namespace {

constexpr std::uint32_t build_info_length = sizeof(BuildInfo);

/// Finishes a context that holds the root public-key info, for code as it is stored, and checks it
/// against the eFuse file, read afresh.
Status sign_and_check(SB20_CONTEXT& context, ByteView root_items, ByteView stage2_key,
                      ByteView sealed) {
  const Status status =
      Generate_SB20_Context(root_items.data(), length_of(root_items), stage2_key.data(),
                            sealed.data(), length_of(sealed), &context);
  if (status != ZEB_SUCCESS) return status;
  const EfuseData efuse = load_sb20_efuse_data(sb20_efuse_file, EfuseLength::of_file);
  return Check_SB20_Context(efuse.bytes, efuse.length, &context, sealed.data(), length_of(sealed));
}

/// Reads the root public-key info into the context and encrypts the code under it.
Status load_info_and_encrypt(SB20_CONTEXT& context, WritableBytes code) {
  load_sb20_root_info(context);
  const EfuseData efuse = load_sb20_efuse_data(sb20_efuse_file, EfuseLength::of_file);
  // Quirk: cleared and read once more; whoever traces the file accesses depends on their order.
  load_sb20_root_info(context);
  return Encrypt_Code(efuse.bytes, efuse.length, &context, code.data(), length_of(code));
}

/// `code_length` bytes are encrypted; `info_length`, 0 or 48, bytes of build information follow.
Status generate_stage1(std::uint8_t* code, std::uint32_t code_length, std::uint32_t info_length) {
  const WritableBytes stage2_file = load_public_key_file(sb20_stage2_public_key_file);
  Status status = verify_sb20_proof(stage2_file);
  if (status != ZEB_SUCCESS) {
    std::fputs(popp_failure_line, stdout);
    return status;
  }
  // Also where the private key cannot be decrypted, no older context is left.
  SB20_CONTEXT& context = store_sb20_context({});
  ByteView root_items;
  status = load_sb20_private_key(root_items, sb20_root_private_key_file);
  if (status != ZEB_SUCCESS) return status;
  status = load_info_and_encrypt(context, {code, code_length});
  if (status != ZEB_SUCCESS) return status;
  if (info_length != 0) mk_BL_Info(code + code_length);

  const ByteView sealed = {code, code_length + info_length};
  status = sign_and_check(context, root_items, stage2_file, sealed);
  std::fputs(status == ZEB_SUCCESS ? stage1_signed_line : stage1_not_signed_line, stdout);
  return status;
}

}  // namespace

}  // namespace sealwright

Status sb20_Generate_Stage1(std::uint8_t* code, std::uint32_t codeLen) {
  return sealwright::generate_stage1(code, codeLen, 0);
}

Status sb20_Generate_Stage1_Polymorphic(std::uint8_t* code, std::uint32_t totalLen) {
  using sealwright::build_info_length;
  return sealwright::generate_stage1(code, totalLen - build_info_length, build_info_length);
}

Status do_Encrypt(std::uint8_t* code, std::uint32_t codeLen) {
  const EfuseData efuse = sealwright::load_sb20_efuse_data(sb20_efuse_file, EfuseLength::of_file);
  sealwright::load_sb20_root_info(sb20_Context);
  return Encrypt_Code(efuse.bytes, efuse.length, &sb20_Context, code, codeLen);
}

Status do_Decrypt(std::uint8_t* code, std::uint32_t codeLen) {
  const EfuseData efuse = sealwright::load_sb20_efuse_data(sb20_efuse_file, EfuseLength::of_file);
  // Quirk: the whole file is read, as far as the context has room; whoever keeps a longer file
  // under this name depends on its end being ignored.
  constexpr std::uint32_t room = sizeof(SB20_CONTEXT) - offsetof(SB20_CONTEXT, publicKeyInfo);
  sealwright::load_sb20_root_info(sb20_Context, room);
  return Decrypt_Code(efuse.bytes, efuse.length, &sb20_Context, code, codeLen);
}
