// The client's tables stand in a file of their own, so that its program never links what it may not
// do: root keys, eFuse data and stage 1.

#include "front/customer_commands.h"
#include "front/drivers.h"
#include "front/texts.h"

namespace sealwright {

namespace {

// clang-format off
constexpr Command client_sb20_commands[] = {
    {3, 2, "-help",          nullptr},
    {3, 2, "-v",             show_version},
    {3, 2, "-version",       show_version},
    {4, 3, "-STAGE2_KEYGEN", generate_sb20_stage2_keys},
    {5, 4, "-STAGE2_VERIFY", verify_sb20_stage2},
    {6, 5, "-STAGE2",        sign_sb20_stage2},
};
constexpr Command client_sb10_commands[] = {
    {3, 2, "-help",          nullptr},
    {3, 2, "-v",             show_version},
    {3, 2, "-version",       show_version},
    {4, 3, "-STAGE2_KEYGEN", generate_sb10_stage2_keys},
    {5, 4, "-STAGE2_VERIFY", verify_sb10_stage2},
    {6, 5, "-STAGE2",        sign_sb10_stage2},
};
// clang-format on

}  // namespace

}  // namespace sealwright

std::int32_t sb20_main_client(int argument_count, sealwright::Arguments arguments) {
  return sealwright::run_command(
      argument_count, arguments,
      {sealwright::print_sb20_banner, sealwright::client_sb20_commands, print_SB20_Usage_Stage2});
}

std::int32_t sb10_main_client(int argument_count, sealwright::Arguments arguments) {
  return sealwright::run_command(
      argument_count, arguments,
      {sealwright::print_sb10_banner, sealwright::client_sb10_commands, print_SB10_Usage_Stage2});
}
