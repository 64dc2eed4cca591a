#include <algorithm>
#include <cstdio>
#include <cstring>

#include "front/commands.h"
#include "front/image.h"
#include "sb10/boot_context.h"
#include "sb10/key_pair.h"
#include "sb10/key_store.h"
#include "sb10/stage1.h"
#include "sb20/boot_context.h"
#include "sb20/key_pair.h"
#include "sb20/key_store.h"
#include "sb20/stage1.h"
#include "scheme/key_pair.h"
#include "scheme/messages.h"
#include "util/build_info.h"

std::int32_t generate_sb20_root_keys(Arguments /*arguments*/) {
  require_randomness();
  std::fputs(generating_2048_line, stdout);
  sb20_Generate_KeyPair(root_key_mode, nullptr);
  return 0;
}

std::int32_t generate_sb10_root_keys(Arguments /*arguments*/) {
  require_randomness();
  std::fputs(generating_1024_line, stdout);
  sb10_Generate_KeyPair(root_key_mode, nullptr);
  return 0;
}

std::int32_t seal_sb20_stage1(Arguments arguments) {
  require_randomness();
  Image image = read_image(arguments[2], sizeof sb20_Context);
  const Status status = sb20_Generate_Stage1(image.buffer.data(), image.length);
  if (status == ZEB_SUCCESS) std::memcpy(end_of(image), &sb20_Context, sizeof sb20_Context);
  return publish(arguments[3], image, status);
}

std::int32_t seal_sb20_stage1_with_build_info(Arguments arguments) {
  require_randomness();
  Image image = read_image(arguments[2], sizeof(BuildInfo) + sizeof sb20_Context);
  const std::uint32_t total = image.length + sizeof(BuildInfo);
  const Status status = sb20_Generate_Stage1_Polymorphic(image.buffer.data(), total);
  std::uint8_t* context = image.buffer.data() + total;
  if (status == ZEB_SUCCESS) std::memcpy(context, &sb20_Context, sizeof sb20_Context);
  return publish(arguments[3], image, status);
}

std::int32_t seal_sb10_stage1(Arguments arguments) {
  require_randomness();
  Image image = read_image(arguments[2], sizeof sb10_Context);
  const Status status = sb10_Generate_Stage1(image.buffer.data(), image.length);
  if (status == ZEB_SUCCESS) std::memcpy(end_of(image), &sb10_Context, sizeof sb10_Context);
  return publish(arguments[3], image, status);
}

std::int32_t verify_sb20_stage1(Arguments arguments) {
  Image image = read_image(arguments[2], 0);
  const EfuseData efuse = load_sb20_efuse_data(arguments[3], EfuseLength::of_fuses);
  const SecuredImage secured = split(image, sizeof(SB20_CONTEXT));
  SB20_CONTEXT context = {};
  std::copy(secured.tail.begin(), secured.tail.end(), writable_view_of(context).begin());
  const bool valid = !secured.tail.empty() &&
                     Check_SB20_Context(efuse.bytes, efuse.length, &context, secured.body.data(),
                                        length_of(secured.body)) == ZEB_SUCCESS;
  return print_verdict(valid, stage1_verified_line, stage1_refused_line);
}

std::int32_t verify_sb10_stage1(Arguments arguments) {
  Image image = read_image(arguments[2], 0);
  const EfuseData efuse = load_sb10_efuse_data(arguments[3], EfuseLength::of_fuses);
  const SecuredImage secured = split(image, sizeof(SB10_CONTEXT));
  SB10_CONTEXT context = {};
  std::copy(secured.tail.begin(), secured.tail.end(), writable_view_of(context).begin());
  const bool valid = !secured.tail.empty() &&
                     Check_SB10_Context(efuse.bytes, efuse.length, &context, secured.body.data(),
                                        length_of(secured.body)) == ZEB_SUCCESS;
  return print_verdict(valid, stage1_verified_line, stage1_refused_line);
}

std::int32_t succeed_in_silence(Arguments /*arguments*/) {
  return 0;
}
