#pragma once

#include <span>
#include <vector>

namespace sealwright {

enum class Action { describe, boot, pem, help, version, refuse };

struct Options {
  Action action;
  bool json = false;
  std::vector<const char*> names = {};  // of files
  const char* code = nullptr;           // the file that --code names
};

/// Reads what follows the program's name, options and names in any order. What is wrong is
/// complained about on standard error and becomes `refuse`.
Options read_options(std::span<char*> arguments);

/// The page that --help prints.
extern const char help_text[];

}  // namespace sealwright
