#include "front/dispatch.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string_view>
#include <tuple>

#include "crypto/prng.h"
#include "front/texts.h"
#include "sb10/key_store.h"
#include "sb20/key_store.h"
#include "scheme/key_store.h"

namespace sealwright {

namespace {

constexpr int min_argument_count = 3;
constexpr int max_argument_count = 6;

/// Fills standard descriptors that the caller left closed: otherwise a key or image file would get
/// the number of standard output, and the tool's messages could end up inside it.
void occupy_standard_descriptors() {
  int descriptor = open("/dev/null", O_RDWR);
  while (descriptor >= STDIN_FILENO && descriptor <= STDERR_FILENO) {
    descriptor = open("/dev/null", O_RDWR);
  }
  if (descriptor >= 0) close(descriptor);
}

void forget_secrets() {
  sealwright::forget_random_state();
  wipe_key_store();
  wipe_sb20_key_store();
  wipe_sb10_key_store();
}

}  // namespace

std::int32_t run_command(int argument_count, Arguments arguments, const Driver& driver) {
  driver.print_banner();
  for (const Command& command : driver.commands) {
    if (command.argument_count != argument_count) continue;
    if (command.word == nullptr || std::strcmp(arguments[command.word_index], command.word) == 0) {
      if (command.action != nullptr) return command.action(arguments);
      driver.print_usage();
      return 0;
    }
  }
  driver.print_usage();
  return -1;
}

std::int32_t run_main(int argument_count, Arguments arguments, const Mains& mains) {
  occupy_standard_descriptors();
  // A handler, since some commands end the process by `exit`. The C library has room for at least
  // 32, so this one finds its place.
  std::ignore = std::atexit(forget_secrets);
  if (argument_count < min_argument_count || argument_count > max_argument_count) {
    print_short_usage();
    return -1;
  }
  const std::string_view version = arguments[1];
  if (version == "-v1.1" || version == "-V1.1") return mains.sb10(argument_count, arguments);
  if (version == "-v2.1" || version == "-V2.1") return mains.sb20(argument_count, arguments);
  // Quirk: the usage of scheme 2.1, also for a mistyped 1.1; scripts depend on it.
  mains.print_usage();
  return -1;
}

}  // namespace sealwright
