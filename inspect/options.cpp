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
  for (const char* argument : arguments) {
    const std::string_view word = argument;
    if (ended || word.size() < 2 || word[0] != '-') {
      options.names.push_back(argument);
    } else if (word == "--") {
      ended = true;
    } else if (word == "--json") {
      options.json = true;
    } else if (word == "--help") {
      return {Action::help};
    } else if (word == "--version") {
      return {Action::version};
    } else if (word == "--boot" || word == "--pem") {
      if (options.action != Action::describe) return refuse("one of --boot and --pem, once");
      options.action = word == "--boot" ? Action::boot : Action::pem;
    } else {
      return refuse("wrong option " + show_name(word));
    }
  }
  return check(options);
}

// clang-format off
const char help_text[] =
    "Usage: Sealwright_inspect [--json] FILE...\n"
    "       Sealwright_inspect [--json] --boot EFUSE_DATA BL1 [BL2]\n"
    "       Sealwright_inspect --pem FILE\n"
    "       Sealwright_inspect --help | --version\n"
    "\n"
    "Says what a file of Sealwright is and whether a fused device would boot an image.\n"
    "It writes no file and shows no secret.\n"
    "\n"
    "  FILE...   what each file is, what it holds and whether it is sound: eFuse data,\n"
    "            public-key and private-key files and secured BL1 of both schemes\n"
    "  --boot    whether a device with these fuses boots BL1 and, when it is given, BL2:\n"
    "            does the root key in BL1 go with the fuses, did it sign BL1, and did\n"
    "            the stage-2 key in BL1 sign BL2; and the SHA-1 of the first-stage code\n"
    "            as the device runs it, to compare with that of the image before sealing\n"
    "  --pem     the public key in a key file, or the root key and the stage-2 key in a\n"
    "            secured BL1, in the form that other tools read\n"
    "  --json    the same as JSON, for programs\n"
    "  --        what follows is a file, also when it starts with a dash\n"
    "\n"
    "Exit status: 0 all sound, or boots; 1 some file unsound or not recognised, or would\n"
    "not boot; 2 wrong usage, a file that cannot be read, or output that cannot be written.\n"
    "\n"
    "Examples:\n"
    "  Sealwright_inspect *.dat *.spk *.prv\n"
    "  Sealwright_inspect --boot eFuseData_V21.dat secured_BL1_V21.bin secured_BL2_V21.bin\n"
    "  Sealwright_inspect --pem stage2Key_V21.spk | openssl pkey -pubin -noout -text\n"
    "  Sealwright_inspect --json secured_BL1_V21.bin | jq -r '.[0].stage2_key.sha1'\n";
// clang-format on

}  // namespace sealwright
