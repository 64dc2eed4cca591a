#pragma once

#include <cstdint>
#include <span>

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

/// Runs the action of the first row that matches. When none does, prints the usage and returns -1.
std::int32_t run_command(int argument_count, Arguments arguments, std::span<const Command> commands,
                         void (*print_usage)());
