#include <gmock/gmock.h>
#include <openssl/x509.h>

#include <chrono>

#include "tests/seal/seal_end_to_end.h"

namespace {

using testing::HasSubstr;

class Seal : public SealEndToEnd {
 protected:
  static std::string hex(const Bytes& bytes) {
    std::string text;
    for (const std::uint8_t byte : bytes) {
      text += "0123456789abcdef"[byte >> 4];
      text += "0123456789abcdef"[byte & 15];
    }
    return text;
  }
  /// What OpenSSL makes of the public key whose modulus lies at `n`.
  std::string key_sha1(const Bytes& file, std::size_t n) const {
    const Owned<RSA> made = make_rsa(slice(file, n, s.length), s.is_v11() ? 65537 : 3);
    Bytes der(512);
    unsigned char* end = der.data();
    der.resize(static_cast<std::size_t>(i2d_RSA_PUBKEY(made.get(), &end)));
    return '"' + hex(sha1(der)) + '"';
  }
  std::string file_json(const std::string& name, bool is_secret) const {
    const Bytes bytes = read_bytes(name);
    return R"({"file": ")" + name + R"(", "size": )" + std::to_string(bytes.size()) +
           R"(, "sha1": )" + (is_secret ? "null" : '"' + hex(sha1(bytes)) + '"') + "}";
  }
  std::string object(const std::string& made, const std::string& files, const std::string& root,
                     const std::string& stage2, const std::string& code, const std::string& digest,
                     const std::string& key) const {
    return R"({"made": ")" + made + R"(", "scheme": ")" + version + R"(", "files": [)" + files +
           R"(], "root_key": )" + root + R"(, "stage2_key": )" + stage2 + R"(, "code_sha1": )" +
           code + R"(, "signed_digest": )" + digest + R"(, "signer": "file", "key": )" + key +
           "}\n";
  }
  static std::string mode(const std::string& name) { return run("stat -c %a " + name).output; }
  bool signed_by(const Bytes& key, std::size_t n, const Bytes& covered, const Bytes& proof) const {
    return pss_verify(slice(key, n, s.length), s.is_v11() ? 65537 : 3, sha1(covered), proof, 20);
  }
};
RUN_FOR_BOTH_SCHEMES(Seal);

TEST_P(Seal, SaysWhatItMade) {
  const auto quoted = [&](const Bytes& bytes) { return '"' + hex(sha1(bytes)) + '"'; };
  const auto said = [](const Outcome& outcome) {
    EXPECT_EQ(outcome.status, 0);
    return outcome.output;
  };
  const std::string scheme = " --json --scheme " + version;
  std::string json = said(seal("root-key" + scheme + " d"));
  Bytes file = read_bytes("d/" + s.root_info);
  const std::string root = key_sha1(file, s.root.n);
  EXPECT_EQ(json,
            object("root-key",
                   file_json("d/" + s.efuse, true) + ", " + file_json("d/" + s.root_info, false) +
                       ", " + file_json("d/" + s.root_private, true),
                   root, "null", "null", quoted(slice(file, 0, s.root.proven_end)), root));
  json = said(seal("stage2-key" + scheme + " d/k"));
  const std::string spk = "d/k" + s.public_suffix, prv = "d/k" + s.private_suffix;
  file = read_bytes(spk);
  const std::string stage2 = key_sha1(file, s.stage2.n);
  const Bytes proven = slice(file, s.stage2.proven, s.stage2.proven_end - s.stage2.proven);
  EXPECT_EQ(json, object("stage2-key", file_json(prv, true) + ", " + file_json(spk, false), "null",
                         stage2, "null", quoted(proven), stage2));
  json = said(seal("bl1 --json --root d/ --stage2-key " + spk + " BL1.bin out1"));
  file = read_bytes("out1");
  const Bytes covered = slice(file, 0, file.size() - s.context_length + s.key_length());
  EXPECT_EQ(json, object("bl1", file_json("out1", false), root, stage2,
                         quoted(read_bytes("BL1.bin")), quoted(covered), "null"));
  json = said(seal("--json bl2 BL2.bin --stage2-key=" + spk + " out2"));
  const std::string code = quoted(read_bytes("BL2.bin"));
  EXPECT_EQ(json, object("bl2", file_json("out2", false), "null", stage2, code, code, "null"));
  json = said(seal("export-key --json " + prv + " pem"));
  EXPECT_EQ(json,
            object("private-key", file_json("pem", true), "null", "null", "null", "null", stage2));
  EXPECT_THAT(
      said(seal("bl1 --root d --stage2-key " + spk + " BL1.bin out1")),
      HasSubstr("out1: secured BL1 of scheme " + version + ", " + std::to_string(file.size()) +
                " bytes; a device fused with d/" + s.efuse + " boots it\n"));
  EXPECT_EQ(mode("d d/" + s.efuse + " d/" + s.root_info + " d/" + s.root_private + " " + prv + " " +
                 spk + " pem out1"),
            s.is_v11() ? "700\n644\n644\n600\n600\n644\n600\n644\n"
                       : "700\n600\n644\n600\n600\n644\n600\n644\n");
}

TEST_P(Seal, WhatItMakesIsWhatTheMainProgramMakes) {
  std::mt19937_64 random(
      static_cast<std::uint64_t>(testing::UnitTest::GetInstance()->random_seed()));
  const std::string tool = full_tool + " " + s.option + " ", spk = "key" + s.public_suffix;
  for (int i = 0; i < trials(150); ++i) {
    // Each time new keys, made by either program, in a folder of their own.
    std::filesystem::remove_all("d");
    const bool by_main = random() % 2 == 0;
    const Outcome keys =
        by_main ? shell("mkdir d; cd d; " + tool + "-KEYGEN; " + tool + "key -STAGE2_KEYGEN")
                : shell(SEAL_TOOL " root-key --scheme " + version +
                        " d && " SEAL_TOOL " stage2-key --scheme " + version + " d/key");
    ASSERT_EQ(keys.status, 0) << keys.output;
    std::filesystem::create_symlink(spk, "d/" + s.stage2_public);
    std::filesystem::current_path("d");
    const Bytes code = random_bytes(random, random() % 5000 / s.block * s.block);
    const Bytes second = random_bytes(random, random() % 5000);
    write_bytes("BL1", code);
    write_bytes("BL2", second);
    const bool with_info = !s.is_v11() && random() % 2 == 0;
    const std::string options =
        std::string(with_info ? "--build-info " : "") + "--stage2-key " + spk;
    ASSERT_EQ(seal("bl1 --root . " + options + " BL1 out1").status, 0);
    ASSERT_EQ(seal("bl2 --stage2-key " + spk + " BL2 out2").status, 0);
    ASSERT_EQ(run(tool + "BL1 main1 -STAGE1" + (with_info ? " -P" : "")).status, 0);
    for (const std::string& image : {std::string("out1"), std::string("main1")}) {
      EXPECT_EQ(run(tool + image + verify1).status, 0);
      EXPECT_EQ(boots("--code BL1 " + s.efuse + " " + image + " out2"), 0);
    }
    EXPECT_EQ(run(tool + "out2 " + spk + " -STAGE2_VERIFY").status, 0);
    EXPECT_TRUE(are_sound(s.root_info + " " + s.root_private + " " + s.efuse + " " + spk + " " +
                          private_key));
    // Of one form, but for the signature, the time and the table of functions.
    Bytes ours = read_bytes("out1"), theirs = read_bytes("main1");
    const std::size_t context = ours.size() - s.context_length;
    ASSERT_EQ(ours.size(), theirs.size());
    EXPECT_TRUE(signed_by(read_bytes(s.root_info), s.root.n,
                          slice(ours, 0, context + s.key_length()),
                          slice(ours, context + s.context_signature, s.length)));
    for (Bytes* image : {&ours, &theirs}) {
      if (with_info) std::fill_n(&image->at(code.size() + 4), 4, 0);
      std::fill_n(&image->at(context + s.context_signature), s.length, 0);
      EXPECT_NE(slice(*image, context + s.uncovered, 4), Bytes(4));
      std::fill_n(&image->at(context + s.uncovered), s.is_v11() ? 48 : 96, 0);
    }
    EXPECT_EQ(ours, theirs);
    const Bytes signed2 = read_bytes("out2");
    EXPECT_EQ(slice(signed2, 0, second.size()), second);
    EXPECT_TRUE(
        signed_by(read_bytes(spk), s.stage2.n, second, slice(signed2, second.size(), s.length)));
    std::filesystem::current_path("..");
  }
}

TEST_P(Seal, ExportsKeysThatOpensslTakes) {
  for (const std::string& name : {s.root_private, private_key}) {
    const std::string key = name == private_key ? public_key : s.root_info;
    ASSERT_EQ(shell(SEAL_TOOL " export-key " + name + " pem > said").status, 0);
    EXPECT_EQ(run("openssl pkey -in pem -check -noout").output, "Key is valid\n");
    EXPECT_EQ(run("openssl pkey -in pem -pubout").output, run(INSPECT_TOOL " --pem " + key).output);
    EXPECT_EQ(shell(SEAL_TOOL " export-key " + name + " - | cmp - pem").output, "");
    EXPECT_EQ(run("openssl pkcs8 -topk8 -nocrypt -in pem").output, run("cat pem").output);
    std::filesystem::remove("pem");
  }
  const Outcome shown =
      run("script -qec \"" SEAL_TOOL " export-key " + private_key + " -\" /dev/null");
  EXPECT_EQ(shown.status, 1);
  EXPECT_THAT(shown.output,
              testing::AllOf(HasSubstr("terminal"), testing::Not(HasSubstr("BEGIN"))));
}

TEST_P(Seal, TakesRootInfoOutOfBl1AndNamesOfAnyLength) {
  // As restored from an image, without its proof.
  const Bytes sealed = read_bytes("sealed1");
  const std::size_t info = sealed.size() - s.context_length + s.context_info;
  write_bytes(s.root_info, slice(sealed, info, s.root.proven_end));
  const std::string deep = "a/" + std::string(200, 'b') + "/" + std::string(200, 'c');
  std::filesystem::create_directories(deep);
  const std::string longest = deep + "/" + std::string(255, 'o');
  EXPECT_EQ(seal(bl1 + longest).output.substr(0, longest.size()), longest);
  EXPECT_EQ(boots(s.efuse + " " + longest), 0);
  const std::string stem = deep + "/" + std::string(255 - s.public_suffix.size(), 'k');
  EXPECT_EQ(seal("stage2-key --scheme " + version + " " + stem).status, 0);
  EXPECT_TRUE(are_sound(stem + s.public_suffix + " " + stem + s.private_suffix));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(deep), {}), 3);
  // A link is replaced, and where it leads is not.
  std::filesystem::create_symlink("BL1.bin", "link");
  EXPECT_EQ(seal(bl2 + "link").status, 0);
  EXPECT_FALSE(std::filesystem::is_symlink("link"));
  EXPECT_EQ(read_bytes("BL1.bin"), some_bytes(1024));
}

TEST_P(Seal, KeepsWhatItMadeWhenStandardOutputIsGone) {
  const std::string option = " --scheme " + version;
  for (const char* output : {" >/dev/full", " >&-"}) {
    for (const std::string& command :
         {bl1 + "out", "root-key" + option + " d", "stage2-key" + option + " k",
          "export-key " + private_key + " pem"}) {
      EXPECT_EQ(shell(SEAL_TOOL " " + command + output).status, 2) << command;
    }
    EXPECT_EQ(boots(s.efuse + " out"), 0);
    EXPECT_TRUE(are_sound("d/* k*.*"));
    EXPECT_EQ(shell("rm -r d k.* k_* out; openssl pkey -in pem -noout; rm pem").status, 0);
  }
  EXPECT_EQ(shell(SEAL_TOOL " export-key " + private_key + " - >/dev/full").status, 2);
}

/// Runs a command that must fail like this, say so and change nothing.
void expect_refusal(const std::string& command, int status, const std::string& said) {
  const auto before = SealEndToEnd::snapshot();
  const Outcome outcome = run(command);
  EXPECT_EQ(outcome.status, status) << command;
  EXPECT_THAT(outcome.output, testing::StartsWith("Sealwright_seal: " + said)) << command;
  EXPECT_EQ(std::ranges::count(outcome.output, '\n'), 1) << outcome.output;
  EXPECT_TRUE(SealEndToEnd::snapshot() == before) << command;
}

TEST_P(Seal, RefusesWhatDoesNotFit) {
  const std::pair<std::string, std::string> names[] = {{"ALIEN_SPK", "key" + alien.public_suffix},
                                                       {"ALIEN_PRV", "key" + alien.private_suffix},
                                                       {"INFO", s.root_info},
                                                       {"ROOT", s.root_private},
                                                       {"FUSES", s.efuse},
                                                       {"SPK", public_key},
                                                       {"PRV", private_key},
                                                       {"VERSION", version}};
  std::ifstream file(TEST_DATA "/seal_refusals.txt");
  int rows = 0;
  for (std::string row; std::getline(file, row);) {
    if (row.empty() || row[0] == '#' ||
        (row.substr(0, 4) != "both" && row.substr(0, 3) != s.name)) {
      continue;
    }
    for (const auto& [name, text] : names) {
      for (std::size_t at = 0; (at = row.find(name, at)) != std::string::npos;) {
        row.replace(at, name.size(), text);
      }
    }
    SCOPED_TRACE(row);
    std::istringstream columns(row);
    std::string head, setup, command, said;
    std::getline(columns, head, '|');
    std::getline(columns, setup, '|');
    std::getline(columns >> std::ws, command, '|');
    std::getline(columns.ignore(), said);
    if (command.substr(0, 4) == "BL1 ") command = bl1 + command.substr(4);
    if (command.substr(0, 4) == "BL2 ") command = bl2 + command.substr(4);
    start_afresh();
    ASSERT_EQ(shell(setup).output, "");
    expect_refusal(SEAL_TOOL " " + command, head.at(5) - '0', said);
    ++rows;
  }
  EXPECT_GT(rows, 60);
}

TEST_P(Seal, RefusesDamagedFiles) {
  const std::tuple<std::string, std::size_t, std::string> files[] = {
      {s.root_info, s.root.proven_end, bl1},
      {s.root_private, 9999, bl1},
      {s.efuse, 9999, bl1},
      {public_key, 9999, bl1},
      {public_key, 9999, bl2},
      {private_key, 9999, bl2},
      {private_key, 9999, "export-key " + private_key + " "}};
  for (const auto& [name, covered, command] : files) {
    const Bytes good = read_bytes(name);
    const std::size_t end = std::min(good.size(), covered);
    for (std::size_t at = 0; at <= end + 2; at += at < 44 ? 4 : 37) {
      Bytes bad = good;
      // A bit, or the length.
      at < end ? void(bad[at] ^= at % 8 == 0 ? 0x80 : 1) : bad.resize(good.size() + at - end + 1);
      write_bytes(name, bad);
      expect_refusal(SEAL_TOOL " " + command + "out", 1, "");
    }
    write_bytes(name, good);
  }
}

TEST_P(Seal, LeavesNothingOnAFullDisk) {
  write_bytes("out", Bytes(3));
  const std::string keys = " --scheme " + version + " ";
  const std::pair<std::string, std::string> outputs[] = {{bl1, "out"},
                                                         {bl2, "out"},
                                                         {"root-key" + keys, "d"},
                                                         {"stage2-key" + keys, "k"},
                                                         {"export-key " + private_key + " ", "p"}};
  for (const auto& [command, name] : outputs) {
    expect_refusal("prlimit --fsize=150 " SEAL_TOOL " " + command + name, 2, name);
  }
  if (run("unshare -m true").status != 0) GTEST_SKIP() << "may not mount a small disk";
  write_bytes("BL1.bin", some_bytes(32000));
  write_bytes("BL2.bin", some_bytes(32000));
  for (const auto& [command, name] : outputs) {
    // One page, which is taken; folders and empty files take none.
    expect_refusal(
        "unshare -m sh -c 'mount -t tmpfs -o size=4k none alien && echo x >alien/x && " SEAL_TOOL
        " " +
            command + "alien/" + name + "; status=$?; [ \"$(ls -A alien)\" = x ] && exit $status'",
        2, "alien/");
  }
}

TEST_P(Seal, IsKilledAtAnyMoment) {
  std::mt19937_64 random(
      static_cast<std::uint64_t>(testing::UnitTest::GetInstance()->random_seed()));
  const std::string new_public = "new" + s.public_suffix, new_private = "new" + s.private_suffix;
  const Bytes older = {1, 2, 3};
  const auto is_older = [&](const char* name) { return read_bytes(name) == older; };
  const std::string option = " --scheme " + version;
  const std::pair<std::string, std::function<bool()>> verbs[] = {
      {"root-key" + option + " d",
       [&] {
         return !std::filesystem::exists("d") ||
                shell(INSPECT_TOOL " d/* | grep -c sound").output == "3\n";
       }},
      {"stage2-key" + option + " new",
       [&] {
         const bool has_public = std::filesystem::exists(new_public);
         const bool has_private = std::filesystem::exists(new_private);
         return (has_private || !has_public) &&
                (!has_private || are_sound(new_private + (has_public ? " " + new_public : "")));
       }},
      {bl1 + "o1", [&] { return is_older("o1") || boots(s.efuse + " o1") == 0; }},
      {bl2 + "o2", [&] { return is_older("o2") || boots(s.efuse + " sealed1 o2") == 0; }},
      {"export-key " + private_key + " pem",
       [&] {
         return !std::filesystem::exists("pem") ||
                run("openssl pkey -in pem -check -noout").status == 0;
       }},
  };
  for (const auto& [command, holds] : verbs) {
    SCOPED_TRACE(command);
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_EQ(seal(command).status, 0);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    for (int i = 0; i < trials(150); ++i) {
      for (const std::string& name :
           {std::string("d"), new_public, new_private, std::string("pem")}) {
        std::filesystem::remove_all(name);
      }
      for (const char* name : {"o1", "o2"}) write_bytes(name, older);
      const double moment = took.count() * static_cast<double>(random() % 1200) / 1000;
      run("timeout -s KILL " + std::to_string(moment) + " " SEAL_TOOL " " + command);
      EXPECT_TRUE(holds()) << moment;
    }
  }
}

TEST_P(Seal, WorksManyTimesAtOnce) {
  const std::string count = std::to_string(trials(100));
  const Outcome many = shell("for i in $(seq " + count + "); do " SEAL_TOOL " " + bl1 +
                             "out$i & " SEAL_TOOL " " + bl2 + "second$i & done; wait");
  for (int i = 1; i <= trials(100); ++i) {
    const std::string number = std::to_string(i);
    EXPECT_EQ(boots(s.efuse + " out" + number + " second" + number), 0) << many.output;
  }
  // Of two that want one name, one gets it.
  for (int i = 0; i < trials(50); ++i) {
    for (const char* command : {"root-key", "stage2-key"}) {
      const std::string one = "(" SEAL_TOOL " " + std::string(command) + " --scheme " + version +
                              " d/../new >/dev/null; echo $?)";
      std::filesystem::create_directory("d");
      const Outcome race = shell("{ " + one + " & " + one + " & wait; } 2>/dev/null | sort");
      EXPECT_EQ(race.output, "0\n1\n") << command;
      EXPECT_TRUE(are_sound(command == std::string("root-key") ? "new/*" : "new?*")) << command;
      shell("rm -rf d new*");
    }
  }
}

}  // namespace
