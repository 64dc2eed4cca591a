#include "front/drivers.h"

#include "front/customer_commands.h"
#include "front/root_holder_commands.h"
#include "front/texts.h"

namespace sealwright {

namespace {

// clang-format off
constexpr Command sb20_commands[] = {
    {3, 2, "-KEYGEN",        generate_sb20_root_keys},
    {3, 2, "-help",          nullptr},
    {3, 2, "-v",             show_version},
    {3, 2, "-version",       show_version},
    {4, 3, "-STAGE2_KEYGEN", generate_sb20_stage2_keys},
    {5, 4, "-STAGE1",        seal_sb20_stage1},
    {5, 4, "-VERIFY",        verify_sb20_stage1},
    {5, 4, "-STAGE2_VERIFY", verify_sb20_stage2},
    // Quirk: argument 4 is ignored; scripts that put any word there depend on it.
    {6, 5, "-P",             seal_sb20_stage1_with_build_info},
    {6, 5, "-STAGE2",        sign_sb20_stage2},
};
constexpr Command sb10_commands[] = {
    {3, 2, "-KEYGEN",        generate_sb10_root_keys},
    {3, 2, "-help",          nullptr},
    {3, 2, "-v",             show_version},
    {3, 2, "-version",       show_version},
    {4, 3, "-STAGE2_KEYGEN", generate_sb10_stage2_keys},
    {5, 4, "-STAGE1",        seal_sb10_stage1},
    {5, 4, "-VERIFY",        verify_sb10_stage1},
    {5, 4, "-STAGE2_VERIFY", verify_sb10_stage2},
    {6, 5, "-STAGE2",        sign_sb10_stage2},
    // Quirk: any other word succeeds in silence; scripts depend on the exit status.
    {6, 5, nullptr,          succeed_in_silence},
};
// clang-format on

}  // namespace

}  // namespace sealwright

std::int32_t sb20_main(int argument_count, sealwright::Arguments arguments) {
  return sealwright::run_command(
      argument_count, arguments,
      {sealwright::print_sb20_banner, sealwright::sb20_commands, print_SB20_Usage});
}

std::int32_t sb10_main(int argument_count, sealwright::Arguments arguments) {
  return sealwright::run_command(
      argument_count, arguments,
      {sealwright::print_sb10_banner, sealwright::sb10_commands, print_SB10_Usage});
}
