#pragma once

#include <cstdint>
#include <span>

namespace sealwright {

/// Arguments of the process, program name first.
using Arguments = const char* const*;
/// Runs one command; the result becomes the exit status.
using Action = std::int32_t (*)(Arguments arguments);

/// One row of a driver's command table.
struct Command {
  int argument_count;  // the program name counts
  int word_index;      // which argument is the command word
  const char* word;    // matched exactly; null matches any
  Action action;       // null: print the usage and return 0
};

/// What a driver does for one scheme.
struct Driver {
  void (*print_banner)();
  std::span<const Command> commands;
  void (*print_usage)();
};

/// Prints the banner and runs the action of the first row that matches. When none does, prints the
/// usage and returns -1.
[[nodiscard]] std::int32_t run_command(int argument_count, Arguments arguments,
                                       const Driver& driver);

/// A scheme's driver: runs the whole command line and returns the status of the command.
using Main = std::int32_t (*)(int argument_count, Arguments arguments);

/// What an executable hands its command line to.
struct Mains {
  Main sb10;
  Main sb20;
  void (*print_usage)();  // for an unknown version option
};

/// Checks the argument count (3 to 6) and runs the driver that argument 1 chooses. Key buffers and
/// random state are cleared when the process ends, but for an abort.
/// @return the driver's status, or -1 when there is none to run; no banner is printed then.
[[nodiscard]] std::int32_t run_main(int argument_count, Arguments arguments, const Mains& mains);

}  // namespace sealwright
