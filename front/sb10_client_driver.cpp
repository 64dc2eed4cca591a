#include "front/banner.h"
#include "front/sb10_driver.h"
#include "front/sb10_stage2_commands.h"
#include "front/usage.h"

namespace {

// clang-format off
constexpr Command commands[] = {
    {3, 2, "-help",          nullptr},
    {3, 2, "-v",             print_version},
    {3, 2, "-version",       print_version},
    {4, 3, "-STAGE2_KEYGEN", generate_sb10_stage2_keys},
    {5, 4, "-STAGE2_VERIFY", verify_sb10_stage2},
    {6, 5, "-STAGE2",        sign_sb10_stage2},
};
// clang-format on

}  // namespace

std::int32_t sb10_main_client(int argument_count, Arguments arguments) {
  print_sb10_banner();
  return run_command(argument_count, arguments, commands, print_SB10_Usage_Stage2);
}
