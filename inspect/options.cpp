#include "inspect/options.h"

#include <cstdio>
#include <string_view>

#include "artefact/escape.h"

namespace sealwright {

namespace {

Options refuse(const std::string& reason) {
  std::fprintf(stderr, "Sealwright_inspect: %s; see 'Sealwright_inspect --help'\n", reason.c_str());
  return {Action::refuse};
}

/// What goes with the action.
Options check(const Options& options) {
  const std::size_t count = options.names.size();
  if (options.action == Action::pem && (options.json || count != 1)) {
    return refuse("--pem takes one file and no other option");
  }
  if (options.action != Action::boot && options.code != nullptr) {
    return refuse("--code goes with --boot");
  }
  if (options.action == Action::boot && (count < 2 || count > 3)) {
    return refuse("--boot takes EFUSE_DATA BL1 [BL2]");
  }
  if (count == 0) return refuse("no file given");
  return options;
}

}  // namespace

Options read_options(std::span<char*> arguments) {
  Options options = {Action::describe};
  bool ended = false;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string_view word = arguments[i];
    if (ended || word.size() < 2 || word[0] != '-') {
      options.names.push_back(arguments[i]);
    } else if (word == "--") {
      ended = true;
    } else if (word == "--json") {
      options.json = true;
    } else if (word == "--help") {
      return {Action::help};
    } else if (word == "--version") {
      return {Action::version};
    } else if (word == "--code") {
      if (options.code != nullptr || ++i == arguments.size()) return refuse("--code FILE, once");
      options.code = arguments[i];
    } else if (word == "--boot" || word == "--pem") {
      if (options.action != Action::describe) return refuse("one of --boot and --pem, once");
      options.action = word == "--boot" ? Action::boot : Action::pem;
    } else {
      return refuse("wrong option " + show_name(word));
    }
  }
  return check(options);
}

}  // namespace sealwright
