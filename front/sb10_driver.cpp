#include "front/sb10_driver.h"

#include <cstring>

#include "front/banner.h"
#include "front/image_commands.h"
#include "front/sb10_stage2_commands.h"
#include "front/usage.h"
#include "sb10/key_buffers.h"
#include "sb10/stage1.h"
#include "sb20/key_pair.h"
#include "sb20/messages.h"
#include "util/file.h"

namespace {

constexpr std::uint32_t context_length = sizeof(SB10_CONTEXT);

std::int32_t succeed_in_silence(Arguments /*arguments*/) {
  return 0;
}

std::int32_t generate_root_keys(Arguments /*arguments*/) {
  return generate_sb10_keys(root_key_mode, nullptr);
}

Status seal_stage1(Arguments /*arguments*/, std::uint8_t* image, std::uint32_t length) {
  const Status status = sb10_Generate_Stage1(image, length);
  if (status == ZEB_SUCCESS) std::memcpy(image + length, &sb10_Context, context_length);
  return status;
}

std::int32_t sign_stage1(Arguments arguments) {
  return seal_image(arguments, context_length, seal_stage1);
}

void read_efuse_data(const char* path) {
  sb10_eFuseDataLen = sizeof sb10_eFuseData;
  read_record(path, sb10_eFuseData, sizeof sb10_eFuseData);
}

Status verify_stage1(const std::uint8_t* image, std::uint32_t length, std::uint8_t* context) {
  std::memcpy(&sb10_Context, context, context_length);
  return Check_SB10_Context(sb10_eFuseData, sb10_eFuseDataLen, &sb10_Context, image, length);
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
    {4, 3, "-STAGE2_KEYGEN", generate_sb10_stage2_keys},
    {5, 4, "-STAGE1",        sign_stage1},
    {5, 4, "-VERIFY",        verify_stage1_image},
    {5, 4, "-STAGE2_VERIFY", verify_sb10_stage2},
    {6, 5, "-STAGE2",        sign_sb10_stage2},
    {6, 5, nullptr,          succeed_in_silence},  // any other word, on purpose
};
// clang-format on

}  // namespace

std::int32_t sb10_main(int argument_count, Arguments arguments) {
  print_sb10_banner();
  return run_command(argument_count, arguments, commands, print_SB10_Usage);
}
