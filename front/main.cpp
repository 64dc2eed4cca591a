#include "front/entry.h"
#include "front/sb10_driver.h"
#include "front/sb20_driver.h"
#include "front/usage.h"

/// The full tool. The exit status is the low byte of the command's status.
int main(int argc, char** argv) {
  return run_driver(argc, argv, {sb10_main, sb20_main, print_SB20_Usage});
}
