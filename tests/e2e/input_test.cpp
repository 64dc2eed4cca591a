#include <sys/stat.h>

#include "tests/e2e/end_to_end.h"

namespace {

struct Command {
  std::string line, success;
  int stage;
  std::vector<std::string> inputs;
};

int status_of(const std::string& word) {
  return word == "abort" ? -SIGABRT : std::stoi(word);
}

/// The rows that a row with lists in it, such as "a 1,2", stands for.
std::vector<std::string> expand(const std::string& row) {
  const std::size_t comma = row.substr(0, row.find('#')).find(',');
  if (comma == std::string::npos) return {row};
  const std::size_t from = row.rfind(' ', comma) + 1, to = row.find(' ', comma);
  std::istringstream list(row.substr(from, to - from));
  std::vector<std::string> rows;
  for (std::string item; std::getline(list, item, ',');) {
    std::ranges::copy(expand(row.substr(0, from) + item + row.substr(to)),
                      std::back_inserter(rows));
  }
  return rows;
}

class Input : public EndToEnd {
 protected:
  const std::vector<std::string> for_stage1 = {"BL1.bin", s.stage2_public, s.root_private,
                                               s.root_info, s.efuse};
  const std::map<std::string, Command> commands = {
      {"seal1", {seal1, line("signed", 1), 1, for_stage1}},
      {"seal_p", {"BL1.bin out x -P", line("signed", 1), 1, for_stage1}},
      {"seal2", {seal2, line("signed", 2), 2, {"BL2.bin", private_key}}},
      {"check1", {"sealed1" + verify1, line("verified", 1), 1, {"sealed1", s.efuse}}},
      {"check_p", {"sealed_p" + verify1, line("verified", 1), 1, {"sealed_p", s.efuse}}},
      {"check2", {"sealed2" + verify2, line("verified", 2), 2, {"sealed2", public_key}}}};
  const std::map<std::string, std::string> files = {{"efuse", s.efuse},
                                                    {"root_info", s.root_info},
                                                    {"root_private", s.root_private},
                                                    {"stage2_public", s.stage2_public},
                                                    {"public_key", public_key},
                                                    {"private_key", private_key}};

  /// Changes a file, a private-key file under its encryption when asked to.
  template <typename Change>
  void edit(const std::string& name, bool encrypted, Change change) const {
    Bytes bytes = encrypted ? open_key(name) : read_bytes(name);
    change(bytes);
    if (encrypted) do_PrivateKey_Encrypt(s.key_file_mode, bytes.data(), length_of(bytes));
    write_bytes(name, bytes);
  }
  /// Damages a file in one of the ways of bad_input.txt.
  void damage_file(const std::string& name, std::string how, std::uint32_t place,
                   std::uint32_t value) const {
    const bool encrypted = how.starts_with("key-");
    if (encrypted) how.erase(0, 4);
    edit(name, encrypted, [&](Bytes& bytes) {
      if (how == "size") bytes.resize(value);
      if (how == "bit") bytes.at(place) ^= 0x80;
      if (how == "word") store_le32(&bytes.at(place), value);
      if (how == "noise") bytes = some_bytes(bytes.size());
      if (how == "other") bytes = device(1).at(name);
    });
    if (how == "gone" || how == "directory" || how == "pipe") std::filesystem::remove(name);
    if (how == "directory") std::filesystem::create_directory(name);
    require(how != "pipe" || mkfifo(name.c_str(), 0600) == 0, "no pipe");
  }
};
RUN_FOR_BOTH_SCHEMES(Input);

TEST_P(Input, DamagedFilesEndAsListed) {
  std::ifstream file(TEST_DATA "/bad_input.txt");
  int count = 0;
  for (std::string lists; std::getline(file, lists);) {
    for (const std::string& row : expand(lists)) {
      std::istringstream in(row);
      in.unsetf(std::ios::basefield);
      std::string scheme, name, damage, word, status, text;
      std::uint32_t place = 0, value = 0;
      in >> scheme >> name >> damage >> place >> value >> word >> status >> text;
      if (scheme != s.name && scheme != "both") continue;
      SCOPED_TRACE(row);
      damage_file(files.contains(name) ? files.at(name) : name, damage, place, value);
      const Command& command = commands.at(word);
      // Checked before anything else, so that a private key is never missed.
      if (text == "popp") std::filesystem::remove(s.root_private);
      const std::string said = text == "silence" ? "" : line(text);
      if (said == command.success) expect_run(command.line, status_of(status), said);
      if (said != command.success) expect_failure(command.line, status_of(status), said);
      std::filesystem::remove("out");
      restore();
      ++count;
    }
  }
  EXPECT_GT(count, 130);
}

// Files that are holes: an image that passes 2^31 - 1 bytes with its signature, a key that does
// alone.
TEST_P(Input, FilesThatAreTooLong) {
  for (const auto& [name, length] :
       {std::pair(private_key, 1U << 31), {"BL2.bin", (1U << 31) - s.length}}) {
    std::filesystem::resize_file(name, length);
    expect_run(seal2, 255, line("open_error"));
    EXPECT_FALSE(std::filesystem::exists("out"));
    restore();
  }
}

TEST_P(Input, MessagesStayOutOfFilesWhenTheOutputIsClosed) {
  const Outcome outcome =
      run("sh -c '" + full_tool + " " + s.option + " " + seal2 + " <&- >&- 2>&-'");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.output, "");
  EXPECT_EQ(slice(read_bytes("out"), 0, 1001), some_bytes(1001));
  expect_run("out" + verify2, 0, line("verified", 2));
}

// None of them writes a file.
TEST_P(Input, CommandsEndAsListed) {
  std::filesystem::create_directory("directory");
  ASSERT_EQ(mkfifo("pipe", 0600), 0);
  const Files before = read_all_files();
  std::ifstream rows(TEST_DATA "/commands.txt");
  for (std::string row; std::getline(rows, row);) {
    std::istringstream in(row);
    std::string scheme, program, status, texts, words;
    in >> scheme >> program >> status >> texts;
    std::getline(in, words);
    const bool has_version = scheme == "-";
    if (!has_version && scheme != "both" && scheme != s.name) continue;
    for (const std::string& tool : {full_tool, client_tool}) {
      if (program == (tool == full_tool ? "client" : "full")) continue;
      // What is no known version gets the usage of 2.1.
      const std::string usage =
          "usage_" + (has_version ? v21 : s).name + (tool == full_tool ? "" : "_client");
      std::string said = has_version ? "" : text_file("banner_" + s.name);
      std::istringstream names(texts);
      for (std::string name; std::getline(names, name, '+');) {
        said += name == "usage" ? text_file(usage) : name == "silence" ? "" : line(name);
      }
      for (const std::string version : {" -v", " -V"}) {
        const Outcome outcome =
            run(tool + (has_version ? "" : version + s.option.substr(2)) + words);
        EXPECT_EQ(outcome.status, status_of(status)) << tool << row;
        EXPECT_EQ(outcome.output, said) << tool << row;
      }
    }
  }
  EXPECT_TRUE(read_all_files() == before);
}

TEST(Programs, TheClientHoldsNoCodeOfTheRootKey) {
  const auto count = [](const std::string& tool, const std::string& names) {
    return run("sh -c '" SYMBOL_LISTER " -C " + tool + " | grep -cE \" T (" + names + ")[(]\"'")
        .output;
  };
  const std::string root =
      "sb[12]0_Generate_Stage1|Check_SB[12]0_Context|Validate_SB[12]0_PublicKeyInfo|Encrypt_Code|"
      "mk_BL_Info";
  EXPECT_EQ(count(full_tool, root), "8\n");
  EXPECT_EQ(count(client_tool, root), "0\n");
  EXPECT_EQ(count(client_tool, "sb[12]0_Generate_Stage2"), "2\n");  // not stripped
}

// The same 150 runs of a scheme each time. For more, and others:
// --gtest_filter=*RandomDamage* --gtest_shuffle --gtest_repeat=100.
TEST_P(Input, RandomDamageIsNeverTakenForGood) {
  std::mt19937_64 engine(static_cast<unsigned>(testing::UnitTest::GetInstance()->random_seed()));
  const Choose choose = [&](std::size_t limit) { return engine() % limit; };
  const auto any_of = [&](const auto& set) {
    return *std::next(set.begin(), static_cast<std::ptrdiff_t>(choose(set.size())));
  };
  // What a verification goes by in a file, at least.
  const auto relied_on = [&](const std::string& name, Bytes bytes) {
    if (name == "sealed1" || name == "sealed_p") {
      bytes.resize(std::max(bytes.size(), s.context_length) - s.context_length + s.uncovered);
    }
    if (name == s.efuse) bytes.resize(s.efuse_length);
    if (name != public_key) return bytes;
    bytes.resize(s.stage2.proof);
    return joined(slice(bytes, s.stage2.n, s.length), slice(bytes, s.stage2.e, 4));
  };
  for (int i = 0; i < 150; ++i) {
    const Command command = any_of(commands).second;
    const int stage = command.stage;
    const std::string name = any_of(command.inputs),
                      tool = stage == 2 && choose(2) == 0 ? client_tool : full_tool;
    const bool is_private = name == private_key || name == s.root_private;
    edit(name, is_private && choose(3) != 0, [&](Bytes& bytes) {
      if (choose(16) == 0) bytes = any_of(device(0)).second;
      damage(bytes, choose);
      if (is_private) bytes.resize((bytes.size() + 15) / 16 * 16);
    });
    const Files before = read_all_files();
    const Outcome outcome = run(tool + " " + s.option + " " + command.line);
    SCOPED_TRACE("run " + std::to_string(i) + ", " + command.line + ", damaged " + name + ": " +
                 outcome.output);
    const auto says = [&](const std::string& text) {
      return outcome.output == text_file("banner_" + s.name) + text;
    };
    if (!says(command.success)) {
      EXPECT_TRUE(says("") || says(line("popp")) || says(line("not_signed", stage)) ||
                  says(line("refused", stage)));
      EXPECT_TRUE(outcome.status == -SIGABRT ? says("")
                                             : outcome.status >= 0 && outcome.status != 124);
      EXPECT_TRUE(read_all_files() == before);
    } else if (command.success == line("verified", stage)) {
      EXPECT_EQ(relied_on(name, before.at(name)), relied_on(name, device(0).at(name)));
    } else {  // what was sealed holds under undamaged keys
      EXPECT_EQ(outcome.status, 0);
      restore();
      expect_run("out" + (stage == 1 ? verify1 : verify2), 0, line("verified", stage));
    }
    std::filesystem::remove("out");
    restore();
  }
}

}  // namespace
