#pragma once

#include <gmock/gmock.h>

#include "tests/e2e/end_to_end.h"

// Keys that are elsewhere. OpenSSL is the token; what it does wrong stands in text files.

inline std::string trimmed(const std::string& text) {
  const std::size_t first = text.find_first_not_of(' '), last = text.find_last_not_of(' ');
  return first == std::string::npos ? "" : text.substr(first, last - first + 1);
}

/// The rows of a text file, each of so many columns; the last one may hold the separator.
inline std::vector<std::vector<std::string>> read_rows(const std::string& name,
                                                       std::size_t columns) {
  std::ifstream file(TEST_DATA "/outside/" + name);
  std::vector<std::vector<std::string>> rows;
  for (std::string text; std::getline(file, text);) {
    if (text.empty() || text[0] == '#') continue;
    std::istringstream in(text);
    rows.emplace_back();
    for (std::string column; rows.back().size() + 1 < columns && std::getline(in, column, '|');) {
      rows.back().push_back(trimmed(column));
    }
    std::getline(in, text);
    rows.back().push_back(trimmed(text));
  }
  require(!rows.empty(), "no rows in " + name);
  return rows;
}

/// A folder with a root key and a stage-2 key whose private halves are PEM files, as a token has
/// them, and another key.
class Outside : public EndToEnd {
 protected:
  const std::string version = s.option.substr(2);
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
  const std::string bl1 = "bl1 --root . --stage2-key " + public_key + " BL1.bin out";
  const std::string bl2 = "bl2 --stage2-key " + public_key + " BL2.bin out";

  void SetUp() override {
    EndToEnd::SetUp();
    write_bytes("other.prv", device(1).at(s.root_private));
    must_seal("export-key " + s.root_private + " root.pem");
    must_seal("export-key " + private_key + " key.pem");
    must_seal("export-key other.prv other.pem");
    for (const std::string& name : {s.root_private, private_key, std::string("other.prv")}) {
      std::filesystem::remove(name);
    }
    must(
        "for k in root key other; do openssl pkey -in $k.pem -pubout -out $k.pub; done; "
        "openssl pkey -pubin -in root.pub -outform DER -out root.der; sha1sum <root.der");
    setenv("SCHEME", version.c_str(), 1);
    setenv("ROOT_SHA1", must("sha1sum <root.der").substr(0, 40).c_str(), 1);
  }

  std::string with_words(std::string text) const {
    for (const auto& [name, word] : words) {
      for (std::size_t at = 0; (at = text.find(name, at)) != std::string::npos;) {
        if (at > 0 && text[at - 1] == '$')
          ++at;  // a variable of the shell
        else
          text.replace(at, name.size(), word);
      }
    }
    return text;
  }
  static Outcome seal(const std::string& arguments) { return run(SEAL_TOOL " " + arguments); }
  static Outcome shell(const std::string& text) {
    write_script("script", text);
    return run("sh ./script");
  }
  static std::string must(const std::string& text) {
    const Outcome outcome = shell("set -e; " + text);
    require(outcome.status == 0, text + ": " + outcome.output);
    return outcome.output;
  }
  static std::string must_seal(const std::string& arguments) {
    const Outcome outcome = seal(arguments);
    require(outcome.status == 0, arguments + ": " + outcome.output);
    return outcome.output;
  }
  static void write_script(const std::string& name, const std::string& text) {
    const std::string script = "#!/bin/sh\n. " TEST_DATA "/outside/signers.sh\n" + text + "\n";
    write_bytes(name, Bytes(script.begin(), script.end()));
    std::filesystem::permissions(name, std::filesystem::perms::owner_all);
  }
  /// The files there are, but for those that the test itself writes.
  static Files files() {
    Files found;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(".")) {
      if (entry.is_regular_file()) found[entry.path()] = read_bytes(entry.path());
    }
    for (const char* own : {"script", "signer", "signature", "in", "conf", "copy"}) {
      found.erase(std::string("./") + own);
    }
    return found;
  }
  /// The command is refused and leaves everything as it was.
  static void expect_refusal(const std::string& arguments, int status, const std::string& text) {
    const Files before = files();
    const Outcome outcome = seal(arguments);
    EXPECT_EQ(outcome.status, status) << arguments << outcome.output;
    EXPECT_THAT(outcome.output, testing::HasSubstr(text)) << arguments;
    EXPECT_TRUE(files() == before) << arguments;
  }
  /// Makes a chain of keys and images in the folder "c", as `sign` has each step signed by a key.
  template <typename Sign>
  void make_chain(const Sign& sign) {
    const std::string spk = "c/s" + s.public_suffix, scheme = " --scheme " + version + " ";
    const std::string info = s.is_v11() ? "" : " --build-info";
    sign("root", "root-key --public-key root.pub c/k" + scheme, "c/k/" + s.root_info);
    sign("key", "stage2-key --public-key key.pub c/s" + scheme, spk);
    sign("root", "bl1 --root c/k BL1.bin c/1 --stage2-key " + spk + info, "c/1");
    sign("key", "bl2 BL2.bin c/2 --stage2-key " + spk, "c/2");
    EXPECT_EQ(run(INSPECT_TOOL " --boot --code BL1.bin c/k/" + s.efuse + " c/1 c/2").status, 0);
    EXPECT_EQ(run(INSPECT_TOOL " c/*/* c/*.spk c/1 c/2").status, 0);
    const std::string tool = full_tool + " " + s.option;
    EXPECT_EQ(run(tool + " c/1 c/k/" + s.efuse + " -VERIFY").status, 0);
    EXPECT_EQ(run(tool + " c/2 " + spk + " -STAGE2_VERIFY").status, 0);
    EXPECT_EQ(must("ls -A c/k c"), "c:\n1\n2\nk\ns" + s.public_suffix + "\n\nc/k:\n" + s.efuse +
                                       "\n" + s.root_info + "\n");
  }
};
