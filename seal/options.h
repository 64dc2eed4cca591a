#pragma once

#include <span>
#include <string>
#include <vector>

namespace sealwright {

enum class Request { make, help, version, refuse };
enum class Verb { none, root_key, stage2_key, bl1, bl2, export_key };

/// A command line. The pointers are those of the arguments; null for what was not given.
struct Options {
  Request request = Request::make;
  Verb verb = Verb::none;
  bool json = false;
  bool build_info = false;
  const char* scheme = nullptr;  // "2.1" or "1.1"
  const char* root = nullptr;
  const char* stage2_key = nullptr;
  const char* private_key = nullptr;
  const char* public_key = nullptr;
  bool padded = false;                  // whoever signs gets the encoded block, not the digest
  bool prepare = false;                 // what is made waits for its signature
  const char* signature = nullptr;      // the file that it came in
  std::span<char* const> program = {};  // that signs, and its arguments
  std::vector<const char*> names = {};  // after the verb, as many as it takes
  std::string complaint = {};           // why it is refused
};

/// Whether the key that signs is not in a file here.
[[nodiscard]] bool is_signed_elsewhere(const Options& options);

/// Reads what follows the program's name: the verb, its names and options in any order, and after
/// `--` a program with its arguments.
Options read_options(std::span<char* const> arguments);

/// The page that --help prints, alone or with a verb.
std::string help_text(Verb verb);

}  // namespace sealwright
