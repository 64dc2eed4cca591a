#include "util/early_end.h"

#include <sys/prctl.h>
#include <sys/resource.h>

#include <cstdio>
#include <cstdlib>

namespace {

constexpr int exit_status_of_failure = 255;

}  // namespace

void forbid_core_dumps() {
  // Where the kernel refuses, which it has no reason to, the command is still worth running.
  const rlimit no_core = {0, 0};
  setrlimit(RLIMIT_CORE, &no_core);
#if !defined(__SANITIZE_ADDRESS__)  // its leak check has to attach to the process
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
