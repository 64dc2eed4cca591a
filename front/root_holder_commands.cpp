#include "front/root_holder_commands.h"

#include <algorithm>

#include "front/command_steps.h"
#include "front/image.h"
#include "front/texts.h"
#include "sb10/boot_context.h"
#include "sb10/key_pair.h"
#include "sb10/key_store.h"
#include "sb10/stage1.h"
#include "sb20/boot_context.h"
#include "sb20/key_pair.h"
#include "sb20/key_store.h"
#include "sb20/stage1.h"
#include "scheme/key_pair.h"
#include "util/build_info.h"

namespace sealwright {

namespace {

/// Seals an image: `seal` works on it and on the `info_length` bytes after it, and fills
/// `context`, which is put after them.
template <typename Seal>
std::int32_t seal_stage1(Arguments arguments, Seal seal, std::uint32_t info_length,
                         ByteView context) {
  require_randomness();
  Image image = read_image(arguments[2], info_length + length_of(context));
  const Status status = seal(image.buffer.data(), image.length + info_length);
  if (status == ZEB_SUCCESS) {
    std::copy(context.begin(), context.end(), end_of(image) + info_length);
  }
  return publish(arguments[3], image, status);
}

/// In what the checks differ between the schemes.
template <typename Context>
struct Stage1Check {
  EfuseData (*load_efuse_data)(const char* path, EfuseLength rule);
  Context& (*store_context)(ByteView stored);
  Status (*check)(const std::uint8_t* efuse, std::uint32_t efuse_length, Context* context,
                  const std::uint8_t* image, std::uint32_t image_length);
};
constexpr Stage1Check<SB20_CONTEXT> sb20_check = {load_sb20_efuse_data, store_sb20_context,
                                                  Check_SB20_Context};
constexpr Stage1Check<SB10_CONTEXT> sb10_check = {load_sb10_efuse_data, store_sb10_context,
                                                  Check_SB10_Context};

template <typename Context>
std::int32_t verify_stage1(Arguments arguments, const Stage1Check<Context>& scheme) {
  const Image image = read_image(arguments[2], 0);
  const EfuseData efuse = scheme.load_efuse_data(arguments[3], EfuseLength::of_fuses);
  const SecuredImage secured = split(image, sizeof(Context));
  Context& context = scheme.store_context(secured.tail);
  const bool valid = !secured.tail.empty() &&
                     scheme.check(efuse.bytes, efuse.length, &context, secured.body.data(),
                                  length_of(secured.body)) == ZEB_SUCCESS;
  return print_verdict(valid, stage1_verified_line, stage1_refused_line);
}

}  // namespace

std::int32_t generate_sb20_root_keys(Arguments /*arguments*/) {
  return make_key_pair(generating_2048_line, sb20_Generate_KeyPair, root_key_mode, nullptr);
}

std::int32_t generate_sb10_root_keys(Arguments /*arguments*/) {
  return make_key_pair(generating_1024_line, sb10_Generate_KeyPair, root_key_mode, nullptr);
}

std::int32_t seal_sb20_stage1(Arguments arguments) {
  return seal_stage1(arguments, sb20_Generate_Stage1, 0, view_of(sb20_Context));
}

std::int32_t seal_sb20_stage1_with_build_info(Arguments arguments) {
  return seal_stage1(arguments, sb20_Generate_Stage1_Polymorphic, sizeof(BuildInfo),
                     view_of(sb20_Context));
}

std::int32_t seal_sb10_stage1(Arguments arguments) {
  return seal_stage1(arguments, sb10_Generate_Stage1, 0, view_of(sb10_Context));
}

std::int32_t verify_sb20_stage1(Arguments arguments) {
  return verify_stage1(arguments, sb20_check);
}

std::int32_t verify_sb10_stage1(Arguments arguments) {
  return verify_stage1(arguments, sb10_check);
}

std::int32_t succeed_in_silence(Arguments /*arguments*/) {
  return 0;
}

}  // namespace sealwright
