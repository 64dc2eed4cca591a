#pragma once

#include "tests/seal/seal_end_to_end.h"

// Keys that are elsewhere. OpenSSL is the token; what it does wrong stands in text files.

/// A folder with a root key and a stage-2 key whose private halves are PEM files, as a token has
/// them, and another key.
class Outside : public SealEndToEnd {
 protected:
  const std::map<std::string, std::string> words = {
      {"KEY_FILE", public_key},
      {"MAX_SALT", std::to_string(s.length - 22)},
      {"SHORT", std::to_string(s.length - 1)},
      {"LONG", std::to_string(s.length + 1)},
      {"FOREIGN", std::to_string(8 * (s.is_v11() ? 256 : 128))},
      {"BITS", std::to_string(8 * s.length)},
      {"EXPONENT", s.is_v11() ? "65537" : "3"},
      {"SCHEME", version},
  };
  const std::string bl1_out = bl1 + "out", bl2_out = bl2 + "out";

  void SetUp() override {
    start_afresh();
    setenv("SCHEME", version.c_str(), 1);
    setenv("ROOT_SHA1", must("sha1sum <root.der").substr(0, 40).c_str(), 1);
  }
  void start_afresh() const {
    static std::map<std::string, Files> made;
    Files& files = made[s.name];
    if (files.empty()) {
      const WorkingDirectory there;
      restore();
      write_bytes("other.prv", device(1).at(s.root_private));
      must("seal export-key " + s.root_private + " root.pem; seal export-key " + private_key +
           " key.pem; seal export-key other.prv other.pem; for k in root key other; do " +
           "openssl pkey -in $k.pem -pubout -out $k.pub; done; " +
           "openssl pkey -pubin -in root.pub -outform DER -out root.der; rm other.prv " +
           s.root_private + " " + private_key);
      files = read_all_files();
    }
    for (const auto& [name, bytes] : files) write_bytes(name, bytes);
  }

  /// Runs a script in which the signers are at hand.
  static std::string must(const std::string& text) {
    const Outcome outcome = shell("seal() { " SEAL_TOOL " \"$@\"; }; " + signers + text);
    require(outcome.status == 0, text + ": " + outcome.output);
    return outcome.output;
  }
  static std::string must_seal(const std::string& arguments) { return must("seal " + arguments); }
  static void write_signer(const std::string& text) {
    const std::string script = "#!/bin/sh\n" + signers + text + "\n";
    write_bytes("signer", Bytes(script.begin(), script.end()));
    std::filesystem::permissions("signer", std::filesystem::perms::owner_all);
  }
  /// The arguments are refused and leave everything as it was.
  static void expect_complaint(const std::string& arguments, int status, const std::string& text) {
    expect_refusal(SEAL_TOOL " " + arguments, status, testing::HasSubstr(text));
  }
  /// Makes a chain of keys and images in the folder "c", as `sign` has each step signed by a key.
  template <typename Sign>
  void make_chain(const Sign& sign) {
    std::filesystem::remove_all("c");
    std::filesystem::create_directory("c");
    const std::string spk = "c/s" + s.public_suffix, scheme = " --scheme " + version + " ";
    const std::string info = s.is_v11() ? "" : " --build-info";
    sign("root", "root-key --public-key root.pub c/k" + scheme, "c/k/" + s.root_info);
    sign("key", "stage2-key --public-key key.pub c/s" + scheme, spk);
    sign("root", "bl1 --root c/k BL1.bin c/1 --stage2-key " + spk + info, "c/1");
    sign("key", "bl2 BL2.bin c/2 --stage2-key " + spk, "c/2");
    EXPECT_EQ(boots("--code BL1.bin c/k/" + s.efuse + " c/1 c/2"), 0);
    EXPECT_TRUE(are_sound("c/*/* c/*.spk c/1 c/2"));
    const std::string tool = full_tool + " " + s.option;
    EXPECT_EQ(run(tool + " c/1 c/k/" + s.efuse + " -VERIFY").status, 0);
    EXPECT_EQ(run(tool + " c/2 " + spk + " -STAGE2_VERIFY").status, 0);
    EXPECT_EQ(must("ls -A c/k c"), "c:\n1\n2\nk\ns" + s.public_suffix + "\n\nc/k:\n" + s.efuse +
                                       "\n" + s.root_info + "\n");
  }

 private:
  static inline const std::string signers = ". " TEST_DATA "/outside/signers.sh\n";
};
