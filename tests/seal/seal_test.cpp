#include <chrono>

#include "artefact/hex.h"
#include "tests/seal/seal_end_to_end.h"

namespace {

using sealwright::to_hex;

/// The files of another device lie in "other", those of the other scheme in "alien".
class Seal : public SealEndToEnd {
 protected:
  const Scheme& alien = other_scheme();

  void SetUp() override { start_afresh(); }
  void start_afresh() const {
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
      std::filesystem::remove_all(entry);
    }
    restore();
    for (const auto& [folder, files] :
         {std::pair(std::string("other/"), device(1)), {"alien/", device(0, alien)}}) {
      std::filesystem::create_directory(folder);
      for (const auto& [name, bytes] : files) write_bytes(folder + name, bytes);
    }
  }
  static std::string quoted_sha1(const Bytes& bytes) { return '"' + to_hex(sha1(bytes)) + '"'; }
  /// What OpenSSL makes of the public key whose modulus lies at `n`.
  std::string key_sha1(const Bytes& file, std::size_t n) const {
    const Owned<RSA> made = make_rsa(slice(file, n, s.length), s.is_v11() ? 65537 : 3);
    return quoted_sha1(der_of(made.get()));
  }
  bool signed_by(const Bytes& key, std::size_t n, const Bytes& covered, const Bytes& proof) const {
    return pss_verify(slice(key, n, s.length), s.is_v11() ? 65537 : 3, sha1(covered), proof, 20);
  }
};
RUN_FOR_BOTH_SCHEMES(Seal);

TEST_P(Seal, SaysWhatItMade) {
  const auto names = file_names("d/");
  const std::string info = names.at("INFO"), spk = names.at("SPK");
  const auto rows = read_rows("seal_reports.txt", 2);
  std::vector<std::string> said;
  for (const auto& row : rows) {
    const Outcome outcome = seal(with_words(row[0], names));
    EXPECT_EQ(outcome.status, 0) << row[0];
    said.push_back(outcome.output);
  }
  std::map<std::string, std::string> words;
  for (const std::string name : {"INFO", "ROOT", "FUSES", "SPK", "PRV", "pem", "out1", "out2"}) {
    const Bytes file = read_bytes(with_words(name, names));
    words["<size of " + name + ">"] = std::to_string(file.size());
    words["<SHA-1 of " + name + ">"] = quoted_sha1(file);
  }
  const auto proven = [](const Bytes& file, const PublicFile& place) {
    return quoted_sha1(slice(file, place.proven, place.proven_end - place.proven));
  };
  const Bytes sealed = read_bytes("out1");
  words["<proven in INFO>"] = proven(read_bytes(info), s.root);
  words["<proven in SPK>"] = proven(read_bytes(spk), s.stage2);
  words["<signed in out1>"] =
      quoted_sha1(slice(sealed, 0, sealed.size() - s.context_length + s.key_length()));
  words["<root key>"] = key_sha1(read_bytes(info), s.root.n);
  words["<stage-2 key>"] = key_sha1(read_bytes(spk), s.stage2.n);
  words["<code of BL1>"] = quoted_sha1(read_bytes("BL1.bin"));
  words["<code of BL2>"] = quoted_sha1(read_bytes("BL2.bin"));
  for (std::size_t i = 0; i < rows.size(); ++i) {
    EXPECT_THAT(said[i],
                testing::EndsWith(with_words(with_words(rows[i][1], words), names) + "\n"));
  }
  EXPECT_EQ(run(with_words("stat -c %a d FUSES INFO ROOT PRV SPK pem out1", names)).output,
            s.is_v11() ? "700\n644\n644\n600\n600\n644\n600\n644\n"
                       : "700\n600\n644\n600\n600\n644\n600\n644\n");
}

TEST_P(Seal, WhatItMakesIsWhatTheMainProgramMakes) {
  std::mt19937_64 random = seeded_engine();
  const std::string tool = full_tool + " " + s.option + " ", spk = "key" + s.public_suffix;
  for (int i = 0; i < trials(150); ++i) {
    // Keys of either program, in a folder of their own, for a few images.
    if (i % 4 == 0) {
      const std::string scheme = " --scheme " + version + " ";
      const Outcome keys = i % 8 == 0 ? shell("rm -rf d; mkdir d; cd d; " + tool + "-KEYGEN; " +
                                              tool + "key -STAGE2_KEYGEN")
                                      : shell("rm -rf d; " SEAL_TOOL " root-key" + scheme +
                                              "d && " SEAL_TOOL " stage2-key" + scheme + "d/key");
      ASSERT_EQ(keys.status, 0) << keys.output;
      std::filesystem::create_symlink(spk, "d/" + s.stage2_public);
    }
    std::filesystem::current_path("d");
    const Bytes code = random_bytes(random, (random() % 5000 / s.block + 1) * s.block);
    const Bytes second = random_bytes(random, 1 + random() % 5000);
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

/// One line that begins like this.
testing::Matcher<std::string> complaint(const std::string& begin) {
  return testing::AllOf(testing::StartsWith("Sealwright_seal: " + begin),
                        testing::MatchesRegex("[^\n]*\n"));
}

TEST_P(Seal, RefusesWhatDoesNotFit) {
  std::map<std::string, std::string> names = file_names();
  names["ALIEN_SPK"] = "key" + alien.public_suffix;
  names["ALIEN_PRV"] = "key" + alien.private_suffix;
  int rows = 0;
  for (const auto& row : read_rows("seal_refusals.txt", 4)) {
    const std::string scheme = row[0].substr(0, row[0].find(' '));
    if (scheme != "both" && scheme != s.name) continue;
    SCOPED_TRACE(testing::PrintToString(row));
    start_afresh();
    ASSERT_EQ(shell(with_words(row[1], names)).output, "");
    const std::string command = with_words(row[2] + " ", {{"BL1 ", bl1}, {"BL2 ", bl2}});
    expect_refusal(SEAL_TOOL " " + with_words(command, names), row[0].back() - '0',
                   complaint(with_words(row[3], names)));
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
      if (at < end) {
        bad[at] = static_cast<std::uint8_t>(bad[at] ^ (at % 8 == 0 ? 0x80U : 1U));
      } else {
        bad.resize(good.size() + at - end + 1);
      }
      write_bytes(name, bad);
      expect_refusal(SEAL_TOOL " " + command + "out", 1, complaint(""));
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
    expect_refusal("prlimit --fsize=150 " SEAL_TOOL " " + command + name, 2, complaint(name));
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
        2, complaint("alien/"));
  }
}

TEST_P(Seal, IsKilledAtAnyMoment) {
  std::mt19937_64 random = seeded_engine();
  const std::string option = " --scheme " + version, inspect = INSPECT_TOOL " ";
  // What holds after a kill. The images stand over older ones.
  const std::pair<std::string, std::string> verbs[] = {
      {"root-key" + option + " d", "[ ! -e d ] || [ $(" + inspect + "d/* | grep -c sound) = 3 ]"},
      {"stage2-key" + option + " new",
       with_words("if [ -e newPRV ]; then " + inspect + "new*; else [ ! -e newSPK ]; fi",
                  {{"PRV", s.private_suffix}, {"SPK", s.public_suffix}})},
      {bl1 + "o1", "cmp -s o1 older || " + inspect + "--boot " + s.efuse + " o1"},
      {bl2 + "o2", "cmp -s o2 older || " + inspect + "--boot " + s.efuse + " sealed1 o2"},
      {"export-key " + private_key + " pem", "[ ! -e pem ] || openssl pkey -in pem -check -noout"}};
  for (const auto& [command, holds] : verbs) {
    SCOPED_TRACE(command);
    const auto begin = std::chrono::steady_clock::now();
    ASSERT_EQ(seal(command).status, 0);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    for (int i = 0; i < trials(150); ++i) {
      shell("rm -rf d new* pem; echo 123 >older; cp older o1; cp older o2");
      const double moment = took.count() * static_cast<double>(random() % 1200) / 1000;
      run("timeout -s KILL " + std::to_string(moment) + " " SEAL_TOOL " " + command);
      EXPECT_EQ(shell(holds).status, 0) << moment;
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
