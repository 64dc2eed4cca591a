#include <chrono>

#include "tests/outside/outside_bench.h"

// Who signs, and what is said of a wrong signature.

namespace {

RUN_FOR_BOTH_SCHEMES(Outside);

TEST_P(Outside, ChainsBootHoweverTheyAreSigned) {
  for (const std::string& padded : {std::string(), std::string(" --padded")}) {
    const std::string as = padded.empty() ? "sign " : "bare ",
                      ext = padded.empty() ? "digest" : "block";
    make_chain([&](const std::string& key, const std::string& command, const std::string&) {
      write_signer(as + key);
      EXPECT_THAT(must_seal(command + padded + " --json -- ./signer"),
                  HasSubstr(R"("signer": "program")"));
    });
    make_chain([&](const std::string& key, const std::string& command, const std::string& made) {
      const std::string waiting = made + ".pending", goes_out = made + "." + ext;
      const std::string said = must_seal(command + padded + " --json --prepare");
      EXPECT_THAT(said, HasSubstr(R"("signer": "pending")"));
      EXPECT_THAT(said, HasSubstr('"' + waiting + '"'));
      EXPECT_FALSE(std::filesystem::exists(made));
      // An image may be prepared again, a key may not.
      if (command[0] == 'b') {
        must_seal(command + " --prepare --padded");
        must_seal(command + padded + " --prepare");
      } else {
        expect_complaint(command + " --prepare", 1, waiting + ": waits for its signature already");
      }
      must(as + key + " <" + goes_out + " >signature");
      if (key == "root") std::filesystem::remove(goes_out);
      EXPECT_THAT(must_seal(command + padded + " --json --signature signature"),
                  HasSubstr(R"("signer": "signature")"));
      EXPECT_FALSE(std::filesystem::exists(waiting) || std::filesystem::exists(goes_out));
    });
  }
}

TEST_P(Outside, SaysWhatIsWrongWithASignature) {
  for (const auto& row : read_rows("outside/wrong_signatures.txt", 4)) {
    SCOPED_TRACE(row[3]);
    const std::string padded = row[0] == "block" ? " --padded" : "";
    const int status = std::stoi(row[1]);
    write_signer(row[3]);
    const bool about_start = row[3].find("signer") != std::string::npos;
    if (about_start) must(row[3]);
    expect_complaint(bl1_out + padded + " -- ./signer", status, with_words(row[2], words));
    if (row[0] == "one") continue;
    must_seal(bl1_out + padded + " --prepare");
    must("./signer <out." + std::string(padded.empty() ? "digest" : "block") + " >signature");
    expect_complaint(bl1_out + padded + " --signature signature", status,
                     with_words(row[2], words));
    must("rm out.*");
  }
}

TEST_P(Outside, LeavesARightSignerItsWays) {
  must_seal(bl1_out + " --prepare");
  for (const auto& row : read_rows("outside/right_signers.txt", 1)) {
    write_signer(row[0]);
    const auto start = std::chrono::steady_clock::now();
    const Outcome outcome = seal(bl1_out + " -- ./signer");
    EXPECT_EQ(outcome.status, 0) << row[0] << outcome.output;
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(80)) << row[0];
  }
  write_signer("read pin </dev/tty; [ \"$pin\" = 1234 ]; sign root");
  EXPECT_EQ(
      shell("echo 1234 | script -qec '" SEAL_TOOL " " + bl1_out + " -- ./signer' /dev/null").status,
      0);
}

TEST_P(Outside, TakesNoOtherKeys) {
  for (const auto& row : read_rows("outside/foreign_keys.txt", 2)) {
    must("rm -f in; " + with_words(row[1], words));
    expect_complaint("root-key --public-key in d -- ./signer --scheme " + version, 1, "");
    expect_complaint("root-key --scheme " + version + " --public-key in d -- ./signer", 1,
                     "in: " + with_words(row[0], words));
  }
}

TEST_P(Outside, MakesNoKeyBesideAPrivateOneThatCameMeanwhile) {
  write_signer("touch k" + s.private_suffix + "; sign key");
  const std::string command = "stage2-key --scheme " + version + " --public-key key.pub k";
  EXPECT_THAT(seal(command + " -- ./signer").output,
              HasSubstr("k" + s.private_suffix + ": exists already"));
  EXPECT_FALSE(std::filesystem::exists("k" + s.public_suffix));
}

}  // namespace
