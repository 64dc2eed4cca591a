#pragma once

#include "tests/support/process.h"

// The two schemes as a user meets them: the tools, the names and layouts of their files, the lines.

struct Scheme {
  std::string name, option;
  std::uint32_t modulus_bits;
  std::string root_info, root_private, efuse, stage2_public;  // fixed names
  std::string public_suffix, private_suffix;                  // of a stage-2 pair
  std::size_t efuse_length, signature_length;
  // Boot context: stage-2 key, signature, root public-key info, then what nothing covers.
  std::size_t context_length, context_key_length, context_signature, context_info, uncovered;
  // Stage-2 public-key file: n, e, what the proof of possession covers, the proof.
  std::size_t n, e, proven, proven_length, proof;
  std::size_t root_n;  // in the root public-key info and so in the context's keys; e ends the key
  std::size_t root_proven_length, root_proof;
  std::size_t block;  // a stage-1 image is whole blocks of so many bytes
  std::int32_t key_file_mode;

  friend std::ostream& operator<<(std::ostream& out, const Scheme& s) { return out << s.name; }
  bool is_v11() const { return key_file_mode == 1; }
  std::string making_line() const {
    return "RSA " + std::to_string(modulus_bits) + " bits key is generating...\n";
  }
};

// clang-format off
inline const Scheme v21 = {
    "V21", "-v2.1", 2048,
    "publicKeyInfo_V21.dat", "privateKey_V21.dat", "eFuseData_V21.dat", "publicKeyInfo_V21_stage2.dat",
    "_V21.spk", "_V21.prv", 20, 256,
    1024, 268, 272, 528, 816,
    4, 264, 0, 288, 292,
    4, 288, 292, 16, 2};
inline const Scheme v11 = {
    "V11", "-v1.1", 1024,
    "publicKeyInfo.dat", "privateKey.dat", "eFuseData.dat", "stage2_key.spk",
    ".spk", ".prv", 16, 128,
    512, 132, 132, 260, 412,
    40, 172, 36, 140, 180,
    0, 152, 152, 1, 1};

// By stage.
inline const std::string signed_line[] = {"",
    "Stage 1: Signature generation is successful.\n", "Stage 2: Signature generation is successful.\n"};
inline const std::string not_signed_line[] = {"",
    "Stage 1: Signature generation is failed.\n", "Stage 2: Signature generation is failed.\n"};
inline const std::string verified_line[] = {"",
    "Stage 1: Signature verification is successful.\n", "Stage 2: Signature verification is successful.\n"};
inline const std::string refused_line[] = {"",
    "Stage 1: Signature verification is failed.\n", "Stage 2: Signature verification is failed.\n"};
inline const std::string popp_line =
    "Invalid Stage 2 Public Key: POPP(Proof of Posession Private Key) Failure\n";
inline const std::string open_error = "file open error\n";
inline const std::string version_line = "sealWright version 2.1\n";
// clang-format on

/// A program of this build, or of another machine's where a variable says so.
inline std::string tool(const char* variable, const char* built) {
  const char* other = std::getenv(variable);
  return other == nullptr ? built : other;
}
inline const std::string full_tool = tool("SEALWRIGHT_FULL_TOOL", FULL_TOOL);
inline const std::string client_tool = tool("SEALWRIGHT_CLIENT_TOOL", CLIENT_TOOL);

inline bool is_client_command(const Args& args) {
  return args.back().starts_with("-STAGE2");
}

inline Outcome run_tool(const std::string& tool, const Scheme& scheme, Args args,
                        const Path& directory) {
  args.insert(args.begin(), scheme.option);
  return run_program(tool, args, directory);
}

/// What a driver prints before anything else: all that -v prints but the version line.
inline const std::string& banner_of(const Scheme& scheme) {
  static std::map<std::string, std::string> banners;
  std::string& banner = banners[scheme.name];
  if (banner.empty()) {
    banner = run_tool(full_tool, scheme, {"-v"}, ".").output;
    banner.resize(banner.rfind(version_line));
  }
  return banner;
}

/// Keys of a device, images and sealed images, made by the tool itself.
inline Snapshot make_device(const Scheme& scheme) {
  const TempDirectory there;
  write_bytes(there / "BL1.bin", counted_bytes(1024));
  write_bytes(there / "BL2.bin", counted_bytes(1001));
  const Args commands[] = {{"-KEYGEN"},
                           {"key", "-STAGE2_KEYGEN"},
                           {"BL2.bin", "sealed2", "key" + scheme.private_suffix, "-STAGE2"},
                           {"BL1.bin", "sealed1", "-STAGE1"}};
  for (const Args& args : commands) {
    const Outcome outcome = run_tool(full_tool, scheme, args, there.path());
    if (outcome.status != 0) throw std::runtime_error(outcome.output + outcome.errors);
    if (args.size() != 2) continue;
    write_bytes(there / scheme.stage2_public, read_bytes(there / ("key" + scheme.public_suffix)));
  }
  return read_directory(there.path());
}
