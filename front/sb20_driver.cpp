#include "front/sb20_driver.h"

#include <cstring>

#include "front/banner.h"
#include "front/image_commands.h"
#include "front/sb20_stage2_commands.h"
#include "front/usage.h"
#include "sb20/key_buffers.h"
#include "sb20/key_pair.h"
#include "sb20/messages.h"
#include "sb20/stage1.h"
#include "util/build_info.h"
#include "util/file.h"

namespace {

constexpr std::uint32_t context_length = sizeof(SB20_CONTEXT);
constexpr std::uint32_t build_info_length = sizeof(BuildInfo);

std::int32_t generate_root_keys(Arguments /*arguments*/) {
  return generate_sb20_keys(root_key_mode, nullptr);
}

Status seal_stage1(Arguments /*arguments*/, std::uint8_t* image, std::uint32_t length) {
  const Status status = sb20_Generate_Stage1(image, length);
  if (status == ZEB_SUCCESS) std::memcpy(image + length, &sb20_Context, context_length);
  return status;
}

Status seal_stage1_with_build_info(Arguments /*arguments*/, std::uint8_t* image,
                                   std::uint32_t length) {
  const std::uint32_t total = length + build_info_length;
  const Status status = sb20_Generate_Stage1_Polymorphic(image, total);
  if (status == ZEB_SUCCESS) std::memcpy(image + total, &sb20_Context, context_length);
  return status;
}

std::int32_t sign_stage1(Arguments arguments) {
  return seal_image(arguments, context_length, seal_stage1);
}

std::int32_t sign_stage1_with_build_info(Arguments arguments) {
  return seal_image(arguments, build_info_length + context_length, seal_stage1_with_build_info);
}

void read_efuse_data(const char* path) {
  sb20_eFuseDataLen = sizeof sb20_eFuseData;
  read_record(path, sb20_eFuseData, sizeof sb20_eFuseData);
}

Status verify_stage1(const std::uint8_t* image, std::uint32_t length, std::uint8_t* context) {
  std::memcpy(&sb20_Context, context, context_length);
  return Check_SB20_Context(sb20_eFuseData, sb20_eFuseDataLen, &sb20_Context, image, length);
}

std::int32_t verify_stage1_image(Arguments arguments) {
  return check_image(arguments, {context_length, read_efuse_data, verify_stage1,
                                 stage1_verified_line, stage1_refused_line});
}

// clang-format off
constexpr Command commands[] = {
    {3, 2, "-KEYGEN",        generate_root_keys},
    {3, 2, "-help",          nullptr},
    {3, 2, "-v",             print_version},
    {3, 2, "-version",       print_version},
    {4, 3, "-STAGE2_KEYGEN", generate_sb20_stage2_keys},
    {5, 4, "-STAGE1",        sign_stage1},
    {5, 4, "-VERIFY",        verify_stage1_image},
    {5, 4, "-STAGE2_VERIFY", verify_sb20_stage2},
    {6, 5, "-P",             sign_stage1_with_build_info},  // argument 4 is not looked at, on purpose
    {6, 5, "-STAGE2",        sign_sb20_stage2},
};
// clang-format on

}  // namespace

std::int32_t sb20_main(int argument_count, Arguments arguments) {
  print_sb20_banner();
  return run_command(argument_count, arguments, commands, print_SB20_Usage);
}
