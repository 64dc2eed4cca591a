#include "sb10/stage1.h"

#include <cstdio>

#include "sb10/boot_context.h"
#include "sb10/key_store.h"
#include "sb10/public_key_info.h"
#include "scheme/messages.h"

namespace sealwright {

namespace {

/// Builds the context for the image and checks it against the eFuse file.
Status make_and_check_context(ByteView root_items, ByteView stage2_key, ByteView image) {
  SB10_CONTEXT& context = load_sb10_root_info();
  const Status status =
      Generate_SB10_Context(root_items.data(), length_of(root_items), stage2_key.data(),
                            image.data(), length_of(image), &context);
  if (status != ZEB_SUCCESS) return status;
  const EfuseData efuse = load_sb10_efuse_data(sb10_efuse_file, EfuseLength::of_file);
  return Check_SB10_Context(efuse.bytes, efuse.length, &context, image.data(), length_of(image));
}

Status generate_stage1(ByteView image) {
  const ByteView stage2_key = load_sb10_stage2_public_key(sb10_stage2_public_key_file);
  const Status proof = verify_sb10_proof(sb10_pubkey_file, stage2_key);
  if (proof != ZEB_SUCCESS) {
    std::fputs(popp_failure_line, stdout);
    return proof;
  }
  const ByteView root_items = load_sb10_root_private_key();
  const Status status = make_and_check_context(root_items, stage2_key, image);
  std::fputs(status == ZEB_SUCCESS ? stage1_signed_line : stage1_not_signed_line, stdout);
  return status;
}

}  // namespace

}  // namespace sealwright

Status sb10_Generate_Stage1(const std::uint8_t* image, std::uint32_t imageLen) {
  return sealwright::generate_stage1({image, imageLen});
}
