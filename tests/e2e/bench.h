#pragma once

#include <gtest/gtest.h>

#include "scheme/private_key_file.h"
#include "tests/support/openssl_schemes.h"
#include "tests/support/schemes.h"

inline void expect_outcome(const Outcome& outcome, int status, const std::string& output,
                           int signal = 0) {
  EXPECT_TRUE(outcome.in_time);
  EXPECT_EQ(outcome.errors, "");
  EXPECT_EQ(outcome.signal, signal);
  EXPECT_EQ(outcome.status, signal == 0 ? status : -1);
  EXPECT_EQ(outcome.output, output);
}

/// A fresh directory with the keys and images of one scheme, and runs of both tools in it.
class Bench : public testing::TestWithParam<Scheme> {
 protected:
  const Scheme& scheme = GetParam();
  const TempDirectory here;
  const std::string private_key = "key" + scheme.private_suffix;
  const std::string public_key = "key" + scheme.public_suffix;
  const Args seal1 = {"BL1.bin", "out", "-STAGE1"};
  const Args seal2 = {"BL2.bin", "out", private_key, "-STAGE2"};
  const Args check1 = {"sealed1", scheme.efuse, "-VERIFY"};
  const Args check2 = {"sealed2", public_key, "-STAGE2_VERIFY"};

  void SetUp() override { restore(); }
  void restore() const {
    for (const auto& [name, bytes] : device(0)) write(name, bytes);
  }
  /// The files of one of two devices.
  const Snapshot& device(int which) const {
    static std::map<std::string, Snapshot> made;
    Snapshot& files = made[scheme.name + std::to_string(which)];
    if (files.empty()) files = make_device(scheme);
    return files;
  }
  Bytes read(const std::string& name) const { return read_bytes(here / name); }
  void write(const std::string& name, const Bytes& bytes) const { write_bytes(here / name, bytes); }
  void flip(const std::string& name, std::size_t position) const {
    Bytes bytes = read(name);
    bytes.at(position) ^= 0x08;
    write(name, bytes);
  }

  /// Runs a command, a stage-2 one with both tools.
  void expect_run(const Args& args, int status, const std::string& text, int signal = 0) const {
    for (const std::string& tool : {full_tool, client_tool}) {
      if (tool == client_tool && !is_client_command(args)) continue;
      SCOPED_TRACE(tool + testing::PrintToString(args));
      expect_outcome(run_tool(tool, scheme, args, here.path()), status, banner_of(scheme) + text,
                     signal);
    }
  }
  /// The run fails, leaves no output and changes no file.
  void expect_failure(const Args& args, int status, const std::string& text, int signal = 0) const {
    const Snapshot before = read_directory(here.path());
    expect_run(args, status, text, signal);
    EXPECT_TRUE(read_directory(here.path()) == before) << testing::PrintToString(args);
  }

  Bytes open_key(const std::string& name) const {
    Bytes bytes = read(name);
    const auto size = static_cast<std::uint32_t>(bytes.size());
    EXPECT_EQ(do_PrivateKey_Decrypt(scheme.key_file_mode, bytes.data(), size), 0U);
    return bytes;
  }
  void write_key(const std::string& name, Bytes bytes) const {
    const auto size = static_cast<std::uint32_t>(bytes.size());
    EXPECT_EQ(do_PrivateKey_Encrypt(scheme.key_file_mode, bytes.data(), size), 0U);
    write(name, bytes);
  }
};

#define RUN_FOR_SCHEMES(suite, ...)                               \
  INSTANTIATE_TEST_SUITE_P(, suite, testing::Values(__VA_ARGS__), \
                           [](const auto& run) { return run.param.name; })
