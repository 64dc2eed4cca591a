#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/bytes.h"

namespace sealwright {

/// A variable that a program finds in its environment.
struct EnvironmentVariable {
  std::string name;
  std::string value;
};

/// A program to run without a shell.
struct ProgramCall {
  /// Its name, looked for along PATH unless it has a slash, and its arguments.
  std::span<char* const> command;
  std::span<const EnvironmentVariable> environment;  // beside ours
  ByteView input;                                    // at most 4096 bytes, all that it can read
  std::size_t output_limit;                          // bytes; with more it is stopped
};

enum class ProgramEnd : std::uint8_t { succeeded, failed, not_started };

struct ProgramResult {
  ProgramEnd end;
  std::string reason;  // why not succeeded, as what comes after its name: "ended with status 3"
  std::vector<std::uint8_t> output;  // also what it wrote before it failed
};

/// Runs a program in the foreground of our terminal and waits for its end, however long that takes.
/// It finds the input on its standard input and the end after it, and its standard error is ours.
/// SIGPIPE, SIGXFSZ, SIGCHLD and SIGTERM have their usual effect on it and no signal is held back.
/// Of our descriptors it gets none; those that we were given stay open for it, as for any program.
/// It is sent SIGTERM when we die, whatever we die of. Its end ends the output, also where
/// something that it started holds the pipe open.
ProgramResult run_program(const ProgramCall& call);

}  // namespace sealwright
