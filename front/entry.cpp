#include "front/entry.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <string_view>

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

}  // namespace

std::int32_t run_driver(int argument_count, Arguments arguments, const Drivers& drivers) {
  occupy_standard_descriptors();
  if (argument_count < min_argument_count || argument_count > max_argument_count) {
    std::fputs("sealwright_V21 -v1.1(or -v2.1) -help\n", stdout);
    return -1;
  }
  const std::string_view version = arguments[1];
  if (version == "-v1.1" || version == "-V1.1") return drivers.v11(argument_count, arguments);
  if (version == "-v2.1" || version == "-V2.1") return drivers.v21(argument_count, arguments);
  // The usage of scheme 2.1, also for a mistyped 1.1, on purpose.
  drivers.print_usage();
  return -1;
}
