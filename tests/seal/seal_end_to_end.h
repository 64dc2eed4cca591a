#pragma once

#include "tests/e2e/end_to_end.h"

/// Keys and images of one scheme in a fresh folder, with those of another device in "other" and of
/// the other scheme in "alien", and runs of the companion that seals.
class SealEndToEnd : public EndToEnd {
 public:
  const Scheme& alien = s.is_v11() ? v21 : v11;
  const std::string version = s.is_v11() ? "1.1" : "2.1";
  const std::string bl1 = "bl1 --root . --stage2-key " + public_key + " BL1.bin ";
  const std::string bl2 = "bl2 --stage2-key " + public_key + " BL2.bin ";

  void SetUp() override { start_afresh(); }
  void start_afresh() const {
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
      std::filesystem::remove_all(entry);
    }
    restore();
    std::filesystem::create_directory("other");
    for (const auto& [name, bytes] : device(1)) write_bytes("other/" + name, bytes);
    static std::map<std::string, Files> made;
    if (made[alien.name].empty()) {
      const WorkingDirectory there;
      require(seal("root-key --scheme " + alien.option.substr(2) + " .x").status == 0 &&
                  seal("stage2-key --scheme " + alien.option.substr(2) + " .x/key").status == 0,
              "keys of the other scheme");
      std::filesystem::current_path(".x");
      made[alien.name] = read_all_files();
      std::filesystem::current_path("..");
    }
    std::filesystem::create_directory("alien");
    for (const auto& [name, bytes] : made[alien.name]) write_bytes("alien/" + name, bytes);
  }

  static Outcome seal(const std::string& arguments) { return run(SEAL_TOOL " " + arguments); }
  static Outcome shell(const std::string& script) { return run("sh -c '" + script + "'"); }

  /// What a device with these fuses makes of a chain.
  static int boots(const std::string& chain) { return run(INSPECT_TOOL " --boot " + chain).status; }
  /// Whether each file is sound and goes with the others.
  static bool are_sound(const std::string& files) {
    return run(INSPECT_TOOL " " + files).status == 0;
  }

  /// Everything under the working directory: kind, mode and content.
  static std::map<std::string, Bytes> snapshot() {
    std::map<std::string, Bytes> found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(".")) {
      const auto status = entry.symlink_status();
      const std::uint32_t words[] = {static_cast<std::uint32_t>(status.type()),
                                     static_cast<std::uint32_t>(status.permissions())};
      found[entry.path()] =
          joined(bytes_of(words), status.type() == std::filesystem::file_type::regular
                                      ? read_bytes(entry.path())
                                      : Bytes());
    }
    return found;
  }
};
