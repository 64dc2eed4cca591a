#pragma once

#include "tests/e2e/end_to_end.h"

/// Keys and images of one scheme in a fresh folder, and runs of the companion that seals.
class SealEndToEnd : public EndToEnd {
 protected:
  const std::string version = s.option.substr(2);
  const std::string bl1 = "bl1 --root . --stage2-key " + public_key + " BL1.bin ";
  const std::string bl2 = "bl2 --stage2-key " + public_key + " BL2.bin ";

  static Outcome seal(const std::string& arguments) { return run(SEAL_TOOL " " + arguments); }
  /// What the texts call the files of a device, here or in a folder.
  std::map<std::string, std::string> file_names(const std::string& folder = "") const {
    return {{"INFO", folder + s.root_info}, {"ROOT", folder + s.root_private},
            {"FUSES", folder + s.efuse},    {"SPK", folder + public_key},
            {"PRV", folder + private_key},  {"VERSION", version}};
  }
  /// What a device with these fuses makes of a chain.
  static int boots(const std::string& chain) { return run(INSPECT_TOOL " --boot " + chain).status; }
  /// Whether each file is sound and goes with the others.
  static bool are_sound(const std::string& files) {
    return shell(INSPECT_TOOL " " + files).status == 0;
  }

  /// Everything under the working directory: kind, mode and content.
  static Files snapshot() {
    Files found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(".")) {
      const auto status = entry.symlink_status();
      const std::uint32_t words[] = {static_cast<std::uint32_t>(status.type()),
                                     static_cast<std::uint32_t>(status.permissions())};
      const bool is_file = status.type() == std::filesystem::file_type::regular;
      found[entry.path()] = joined(bytes_of(words), is_file ? read_bytes(entry.path()) : Bytes());
    }
    return found;
  }
  /// Runs a command that must fail like this, say so and change nothing.
  static void expect_refusal(const std::string& command, int status,
                             const testing::Matcher<std::string>& said) {
    const Files before = snapshot();
    const Outcome outcome = run(command);
    EXPECT_EQ(outcome.status, status) << command;
    EXPECT_THAT(outcome.output, said) << command;
    EXPECT_TRUE(snapshot() == before) << command;
  }
};
