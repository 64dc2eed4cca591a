#include "tests/outside/outside_bench.h"

// What waits for a signature, and what a kill leaves.

namespace {

class Pending : public Outside {
 protected:
  const std::string root = "root-key --scheme " + version + " --public-key root.pub d";
  const std::string stage2 = "stage2-key --scheme " + version + " --public-key key.pub k";
  const std::string spk = "k" + s.public_suffix;
  const std::string info = s.is_v11() ? "" : " --build-info";

  /// The commands in two steps: what they make, and the key that signs it.
  struct Step {
    std::string command, made, key;
  };
  const std::vector<Step> steps = {
      {root, "d/" + s.root_info, "root"},
      {stage2, spk, "key"},
      {bl1_out + info, "out", "root"},
      {"bl2 --stage2-key " + public_key + " BL2.bin out2", "out2", "key"},
  };
  static void prepare(const Step& step) {
    must_seal(step.command + " --prepare");
    must("sign " + step.key + " <" + step.made + ".digest >signature");
  }
};
RUN_FOR_BOTH_SCHEMES(Pending);

TEST_P(Pending, NoticesEveryChangeToWhatWaits) {
  for (const Step& step : steps) {
    prepare(step);
    std::vector<std::string> waiting = {step.made + ".pending"};
    if (step.key == "root" && step.made != "out") waiting.push_back("d/" + s.efuse + ".pending");
    for (const std::string& name : waiting) {
      const Bytes whole = read_bytes(name);
      for (std::size_t at = 0; at < whole.size(); at += 1 + whole.size() / 70) {
        Bytes changed = whole;
        changed[at] ^= 0x40;
        write_bytes(name, changed);
        expect_complaint(step.command + " --signature signature", 1, "");
      }
      for (const Bytes& changed : {slice(whole, 0, whole.size() - 1), joined(whole, Bytes(1))}) {
        write_bytes(name, changed);
        expect_complaint(step.command + " --signature signature", 1, "");
      }
      write_bytes(name, whole);
    }
    must_seal(step.command + " --signature signature");
  }
}

TEST_P(Pending, Refusals) {
  std::map<std::string, std::string> all_words = words;
  all_words.insert({{"BL1 ", bl1_out + " "},
                    {"BL2 ", bl2_out + " "},
                    {"ROOT ", root + " "},
                    {"STAGE2 ", stage2 + " "},
                    {"SEAL ", "seal "},
                    {"INFO", s.root_info},
                    {"FUSES", s.efuse},
                    {"k_SPK", spk},
                    {"k_PRV", "k" + s.private_suffix}});
  for (const auto& row : read_rows("outside/pending_refusals.txt", 4)) {
    SCOPED_TRACE(row[1] + " | " + row[2]);
    must("rm -rf d k.* k_* out* x signature");
    start_afresh();
    must("touch signature; " + with_words(row[1], all_words));
    expect_complaint(with_words(row[2] + " ", all_words), std::stoi(row[0]),
                     with_words(row[3], all_words));
  }
}

TEST_P(Pending, FinishesAnInterruptedSecondStep) {
  const std::string fuses = "d/" + s.efuse, made = "d/" + s.root_info;
  prepare(steps[0]);
  const Bytes waiting_fuses = read_bytes(fuses + ".pending"),
              waiting = read_bytes(made + ".pending");
  const auto finish = [&] {
    must("touch d/other");
    must_seal(root + " --signature signature");
    EXPECT_EQ(must("ls -A d"), s.efuse + "\nother\n" + s.root_info + "\n");
    EXPECT_EQ(run(INSPECT_TOOL " " + fuses + " " + made).status, 0);
  };
  write_bytes(fuses, waiting_fuses);  // a kill between the two names
  finish();
  const Bytes key = read_bytes(made);
  write_bytes(made + ".pending", waiting);  // between the names and the end
  finish();
  write_bytes(made + ".pending", waiting);
  write_bytes(fuses + ".pending", waiting_fuses);
  std::filesystem::remove(made);
  finish();
  EXPECT_EQ(read_bytes(made), key);
  prepare(steps[1]);
  const Bytes waiting_stage2 = read_bytes(spk + ".pending");
  must_seal(stage2 + " --signature signature");
  write_bytes(spk + ".pending", waiting_stage2);
  must_seal(stage2 + " --signature signature");
  EXPECT_FALSE(std::filesystem::exists(spk + ".pending"));
}

TEST_P(Pending, KillsLeaveNothingHalf) {
  std::mt19937_64 random = seeded_engine();
  const auto killed_after = [](double seconds, const std::string& arguments) {
    // Only the program itself is killed, not who signs, and its caller ignores the other signal.
    run("timeout --foreground -s KILL " + std::to_string(seconds) +
        " env --ignore-signal=TERM " SEAL_TOOL " " + arguments);
  };
  const auto moment = [&] { return static_cast<double>(random() % 20) / 1000 + 0.001; };
  for (int i = 0; i < 40; ++i) {
    const Step& step = steps[static_cast<std::size_t>(i) % 4];
    must("rm -rf d k.* k_* out*");
    write_signer("sign " + step.key);
    if (i < 20) {
      killed_after(moment(), step.command + " -- ./signer");
    } else {
      prepare(step);
      killed_after(moment(), step.command + " --signature signature");
      // What was begun is there, or can be finished.
      if (std::filesystem::exists(step.made + ".pending")) {
        must_seal(step.command + " --signature signature");
      }
      EXPECT_TRUE(std::filesystem::exists(step.made));
    }
    if (std::filesystem::exists("d") || std::filesystem::exists(step.made)) {
      EXPECT_EQ(run("sh -c '" INSPECT_TOOL " d/" + s.efuse + " " + step.made +
                    " || " INSPECT_TOOL " " + step.made + " " + public_key + "'")
                    .status,
                0)
          << step.made;
    }
  }
  // Who signs ends with us, and what it started finds its pipe closed.
  write_signer(
      "(trap '' TERM PIPE; until [ -e killed ]; do sleep 0.05; done; echo x || echo closed >found)"
      " 2>/dev/null & echo $$ >pid; exec sleep 200 2>/dev/null");
  EXPECT_EQ(must("rm -rf out* pid; env --ignore-signal=TERM " SEAL_TOOL " " + bl1_out +
                 R"( -- ./signer 2>/dev/null &
                 until [ -s pid ]; do sleep 0.05; done
                 kill -KILL $!
                 touch killed
                 until [ -s found ]; do sleep 0.05; done
                 while grep -q -s ^State:.[^Z] /proc/$(cat pid)/status; do sleep 0.05; done
                 cat found; ls out* || true)"),
            "closed\nls: cannot access 'out*': No such file or directory\n");
}

}  // namespace
