// The road of a command, so that a newcomer finds the bytes in three hops:
//   main -> dispatch chooses the driver of a scheme; drivers.cpp and client_drivers.cpp are tables
//   -> root_holder_commands.cpp and customer_commands.cpp: each command, read from top to bottom
//   -> sb20/ (scheme 2.1) and sb10/ (1.1), alike: key_pair, stage1, stage2 load files and print;
//      public_key_info, boot_context, code_encryption compute; records.h is every byte layout
//   -> scheme/ is what both share, crypto/ the library, util/ files and how a run ends.

#include "front/drivers.h"
#include "front/texts.h"
#include "util/process.h"

/// The full tool. The exit status is the low byte of the command's status.
int main(int argc, char** argv) {
  sealwright::forbid_core_dumps();
  return sealwright::run_main(argc, argv, {sb10_main, sb20_main, print_SB20_Usage});
}
