#include "front/drivers.h"
#include "front/texts.h"
#include "util/process.h"

/// The tool for customers who make and check stage-2 keys and images alone.
int main(int argc, char** argv) {
  sealwright::forbid_core_dumps();
  return sealwright::run_main(argc, argv,
                              {sb10_main_client, sb20_main_client, print_SB20_Usage_Stage2});
}
