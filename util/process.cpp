#include "util/process.h"

#include <sys/prctl.h>
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>

// The address sanitizer's leak check has to attach to the process.
#if defined(__SANITIZE_ADDRESS__)
#define SEALWRIGHT_LEAK_CHECK 1
#elif defined(__has_feature)
#define SEALWRIGHT_LEAK_CHECK __has_feature(address_sanitizer)
#else
#define SEALWRIGHT_LEAK_CHECK 0
#endif

namespace sealwright {

namespace {

constexpr int exit_status_of_failure = 255;

}  // namespace

void forbid_core_dumps() {
  // Where the kernel refuses, which it has no reason to, the command is still worth running.
  const rlimit no_core = {0, 0};
  setrlimit(RLIMIT_CORE, &no_core);
#if !SEALWRIGHT_LEAK_CHECK
  prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
#endif
}

void abort_run() {
  std::fflush(stdout);
  std::abort();
}

int print_file_open_error() {
  return std::printf("file open error\n");
}

void fail_file_open() {
  print_file_open_error();
  std::exit(exit_status_of_failure);
}

}  // namespace sealwright
