#include "util/abort.h"

#include <cstdio>
#include <cstdlib>

void abort_on_overflow() {
  std::fflush(stdout);
  std::abort();
}
