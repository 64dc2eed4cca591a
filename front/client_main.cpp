#include "front/entry.h"
#include "front/sb10_driver.h"
#include "front/sb20_driver.h"
#include "front/usage.h"

/// The tool for customers who make and check stage-2 keys and images alone.
int main(int argc, char** argv) {
  return run_driver(argc, argv, {sb10_main_client, sb20_main_client, print_SB20_Usage_Stage2});
}
