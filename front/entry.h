#pragma once

#include <cstdint>

#include "front/command_table.h"

/// A scheme's driver: takes the whole command line and returns the status of the command.
using Driver = std::int32_t (*)(int argument_count, Arguments arguments);

/// What an executable hands its command line to.
struct Drivers {
  Driver v11;
  Driver v21;
  void (*print_usage)();  // for an unknown version option
};

/// Checks the argument count (3 to 6) and runs the driver that argument 1 chooses.
/// @return the driver's status, or -1 when there is none to run; no banner is printed then.
std::int32_t run_driver(int argument_count, Arguments arguments, const Drivers& drivers);
