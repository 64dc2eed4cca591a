#pragma once

#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <csignal>
#include <cstdio>

#include "scheme/private_key_file.h"
#include "tests/support/keys.h"

using testing::HasSubstr;

// The two schemes as a user meets them, and runs of the real programs in a directory of their own.

/// Where the numbers of a public-key file stand, what its proof of possession covers, the proof.
struct PublicFile {
  std::size_t n, e, proven, proven_end, proof;
};

struct Scheme {
  std::string name, option;
  std::size_t length;                                         // of a modulus in bytes
  std::string root_info, root_private, efuse, stage2_public;  // fixed names
  std::string public_suffix, private_suffix;                  // of a stage-2 pair
  std::size_t efuse_length;
  PublicFile root, stage2;
  // Boot context: stage-2 key, signature, root public-key info, then what nothing covers.
  std::size_t context_length, context_signature, context_info, uncovered;
  std::size_t block;           // a stage-1 image is whole blocks of so many bytes
  std::int32_t key_file_mode;  // of do_PrivateKey_Encrypt

  bool is_v11() const { return key_file_mode == 1; }
  std::size_t key_length() const { return is_v11() ? 132 : 268; }
};

// clang-format off
inline const Scheme v21 = {
    .name = "V21", .option = "-v2.1", .length = 256,
    .root_info = "publicKeyInfo_V21.dat", .root_private = "privateKey_V21.dat",
    .efuse = "eFuseData_V21.dat", .stage2_public = "publicKeyInfo_V21_stage2.dat",
    .public_suffix = "_V21.spk", .private_suffix = "_V21.prv", .efuse_length = 20,
    .root = {.n = 4, .e = 264, .proven = 0, .proven_end = 288, .proof = 292},
    .stage2 = {.n = 4, .e = 264, .proven = 0, .proven_end = 288, .proof = 292},
    .context_length = 1024, .context_signature = 272, .context_info = 528, .uncovered = 816,
    .block = 16, .key_file_mode = 2};
inline const Scheme v11 = {
    .name = "V11", .option = "-v1.1", .length = 128,
    .root_info = "publicKeyInfo.dat", .root_private = "privateKey.dat",
    .efuse = "eFuseData.dat", .stage2_public = "stage2_key.spk",
    .public_suffix = ".spk", .private_suffix = ".prv", .efuse_length = 16,
    .root = {.n = 0, .e = 128, .proven = 0, .proven_end = 152, .proof = 152},
    .stage2 = {.n = 40, .e = 172, .proven = 36, .proven_end = 176, .proof = 180},
    .context_length = 512, .context_signature = 132, .context_info = 260, .uncovered = 412,
    .block = 1, .key_file_mode = 1};
// clang-format on

/// A program of this build, or of another machine's where a variable says so.
inline std::string tool(const char* variable, const char* built) {
  const char* other = std::getenv(variable);
  return other == nullptr ? built : other;
}
inline const std::string full_tool = tool("SEALWRIGHT_FULL_TOOL", FULL_TOOL);
inline const std::string client_tool = tool("SEALWRIGHT_CLIENT_TOOL", CLIENT_TOOL);

inline std::string text_file(const std::string& name) {
  const Bytes bytes = read_bytes(TEST_DATA "/texts/" + name + ".txt");
  return std::string(bytes.begin(), bytes.end());
}

/// What is printed, by its name in lines.txt; lines of a stage have its number.
inline const std::string& line(const std::string& name, int stage = 0) {
  static const auto lines = [] {
    std::map<std::string, std::string> made;
    std::istringstream in(text_file("lines"));
    for (std::string key, text; in >> key && std::getline(in >> std::ws, text);)
      made[key] = text + "\n";
    return made;
  }();
  return lines.at(stage == 0 ? name : name + std::to_string(stage));
}

/// The rows of a text file, each of so many columns; the last one may hold the separator.
inline std::vector<std::vector<std::string>> read_rows(const std::string& name,
                                                       std::size_t columns) {
  std::ifstream file(TEST_DATA "/" + name);
  std::vector<std::vector<std::string>> rows;
  for (std::string text; std::getline(file, text);) {
    if (text.empty() || text[0] == '#') continue;
    std::istringstream in(text);
    rows.emplace_back();
    for (std::size_t i = 1; std::getline(in, text, i < columns ? '|' : '\n'); ++i) {
      const std::size_t end = text.find_last_not_of(' ') + 1;
      rows.back().push_back(text.substr(0, end).substr(std::min(text.find_first_not_of(' '), end)));
    }
    rows.back().resize(columns);
  }
  require(!rows.empty(), "no rows in " + name);
  return rows;
}

/// A text with what each of these words stands for, but for variables of the shell.
inline std::string with_words(std::string text, const std::map<std::string, std::string>& words) {
  for (const auto& [name, word] : words) {
    for (std::size_t at = 0; (at = text.find(name, at)) != std::string::npos;) {
      const bool is_variable = at > 0 && text[at - 1] == '$';
      if (!is_variable) text.replace(at, name.size(), word);
      at += is_variable ? name.size() : word.size();
    }
  }
  return text;
}

struct Outcome {
  int status;  // exit status, or the signal that ended it, negative; 124 for a hang
  std::string output;
};

/// Runs a shell command; what it says on standard error is part of its output.
inline Outcome run(const std::string& command) {
  static constexpr rlimit no_core = {0, 0};
  setrlimit(RLIMIT_CORE, &no_core);  // some abort, as they should
  std::FILE* pipe = popen(("exec 2>&1 timeout 240 " + command).c_str(), "r");
  require(pipe != nullptr, "cannot run " + command);
  Outcome outcome;
  for (int c = 0; (c = std::fgetc(pipe)) != EOF;) outcome.output += static_cast<char>(c);
  const int status = pclose(pipe);
  outcome.status = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
  return outcome;
}

/// Runs a script.
inline Outcome shell(const std::string& script) {
  return run("sh -c '" + with_words(script, {{"'", R"('\'')"}}) + "'");
}

/// Random numbers that differ from run to run where --gtest_shuffle or --gtest_random_seed asks.
inline std::mt19937_64 seeded_engine() {
  return std::mt19937_64(
      static_cast<std::uint64_t>(testing::UnitTest::GetInstance()->random_seed()));
}

/// How often a trial of chance is made here: a tenth, unless a variable asks for all.
inline int trials(int all) {
  return std::getenv("SEALWRIGHT_ALL_TRIALS") == nullptr ? all / 10 : all;
}

/// A fresh directory with the keys and images of one scheme, and runs of both tools in it.
class EndToEnd : public testing::TestWithParam<Scheme> {
 protected:
  const Scheme& s = GetParam();
  const WorkingDirectory here;
  const std::string private_key = "key" + s.private_suffix, public_key = "key" + s.public_suffix;
  const std::string seal1 = "BL1.bin out -STAGE1";
  const std::string seal2 = "BL2.bin out " + private_key + " -STAGE2";
  const std::string verify1 = " " + s.efuse + " -VERIFY";  // after the image
  const std::string verify2 = " " + public_key + " -STAGE2_VERIFY";

  void SetUp() override { restore(); }
  void restore() const {
    for (const auto& [name, bytes] : device(0)) write_bytes(name, bytes);
  }
  const Files& device(int which) const { return device(which, s); }
  /// The files of one of two devices, made by the tool itself.
  static const Files& device(int which, const Scheme& s) {
    static std::map<std::string, Files> made;
    Files& files = made[s.name + std::to_string(which)];
    if (!files.empty()) return files;
    const WorkingDirectory there;
    write_bytes("BL1.bin", some_bytes(1024));
    write_bytes("BL2.bin", some_bytes(1001));
    std::filesystem::create_symlink("key" + s.public_suffix, s.stage2_public);
    const std::string tool = full_tool + " " + s.option + " ";
    const std::string sealed_p = s.is_v11() ? "BL1.bin sealed_p -STAGE1" : "BL1.bin sealed_p x -P";
    const Outcome outcome = shell("set -e; " + tool + "-KEYGEN; " + tool + "key -STAGE2_KEYGEN; " +
                                  tool + "BL1.bin sealed1 -STAGE1; " + tool + sealed_p + "; " +
                                  tool + "BL2.bin sealed2 key" + s.private_suffix + " -STAGE2");
    require(outcome.status == 0, outcome.output);
    return files = read_all_files();
  }

  const Scheme& other_scheme() const { return s.is_v11() ? v21 : v11; }

  /// Runs a command, a stage-2 one with both tools. A negative status is the signal that ends it.
  void expect_run(const std::string& command, int status, const std::string& text) const {
    for (const std::string& tool : {full_tool, client_tool}) {
      if (tool == client_tool && command.find("-STAGE2") == std::string::npos) continue;
      SCOPED_TRACE(tool + " " + s.option + " " + command);
      const Outcome outcome = run(tool + " " + s.option + " " + command);
      EXPECT_EQ(outcome.status, status);
      EXPECT_EQ(outcome.output, text_file("banner_" + s.name) + text);
    }
  }
  /// The run fails, leaves no output and changes no file.
  void expect_failure(const std::string& command, int status, const std::string& text) const {
    const Files before = read_all_files();
    expect_run(command, status, text);
    EXPECT_TRUE(read_all_files() == before) << command;
  }

  /// The key that eFuse data and a root public-key info hide from each other.
  Bytes hmac_key(Bytes efuse, const Bytes& info) const {
    for (std::size_t i = 0; i < efuse.size(); ++i) efuse[i] ^= info.at(s.key_length() + i);
    return efuse;
  }
  Bytes open_key(const std::string& name) const {
    Bytes bytes = read_bytes(name);
    EXPECT_EQ(do_PrivateKey_Decrypt(s.key_file_mode, bytes.data(), length_of(bytes)), 0U);
    return bytes;
  }
};

#define RUN_FOR_BOTH_SCHEMES(suite)                            \
  INSTANTIATE_TEST_SUITE_P(, suite, testing::Values(v11, v21), \
                           [](const auto& test) { return test.param.name; })
