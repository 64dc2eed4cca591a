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

/// A row of bad_input.txt, by the names of its columns.
using Row = std::map<std::string, std::string>;

/// The rows that a row with lists, such as "1,2", stands for.
std::vector<Row> expand(const Row& row) {
  const auto list = std::ranges::find_if(row, [](const auto& field) {
    return field.first != "part" && field.second.find(',') != std::string::npos;
  });
  if (list == row.end()) return {row};
  std::vector<Row> rows;
  std::istringstream items(list->second);
  Row one = row;
  while (std::getline(items, one[list->first], ',')) {
    std::ranges::copy(expand(one), std::back_inserter(rows));
  }
  return rows;
}

std::vector<Row> read_bad_input() {
  std::ifstream file(TEST_DATA "/bad_input.txt");
  std::vector<std::string> columns;
  std::vector<Row> rows;
  for (std::string text; std::getline(file, text);) {
    std::istringstream words(text);
    if (text.starts_with("scheme")) {
      columns.assign(std::istream_iterator<std::string>(words), {});
    } else if (!text.empty() && text[0] != '#') {
      Row row;
      for (const std::string& column : columns) words >> row[column];
      std::ranges::copy(expand(row), std::back_inserter(rows));
    }
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
  /// Damages a file in the way that a row of bad_input.txt says.
  void damage_file(const std::string& name, const Row& row) const {
    const bool encrypted = row.contains("key_bit") || row.contains("key_word");
    const auto number = [&](const std::string& column) {
      return static_cast<std::uint32_t>(std::stoul(row.at(column), nullptr, 0));
    };
    const std::string instead = row.contains("instead") ? row.at("instead") : "";
    edit(name, encrypted, [&](Bytes& bytes) {
      if (row.contains("size")) bytes.resize(number("size"));
      for (const std::string key : {"", "key_"}) {
        if (row.contains(key + "bit")) bytes.at(number(key + "bit")) ^= 0x80;
        if (!row.contains(key + "word")) continue;
        store_le32(&bytes.at(number(key + "word")), number("value"));
      }
      if (instead == "noise") bytes = some_bytes(bytes.size());
      if (instead == "other") bytes = device(1).at(name);
    });
    if (instead == "nothing" || instead == "directory" || instead == "pipe") {
      std::filesystem::remove(name);
    }
    if (instead == "directory") std::filesystem::create_directory(name);
    require(instead != "pipe" || mkfifo(name.c_str(), 0600) == 0, "no pipe");
  }

  /// What a verification goes by in a file, at least.
  Bytes relied_on(const std::string& name, Bytes bytes) const {
    if (name == "sealed1" || name == "sealed_p") {
      bytes.resize(std::max(bytes.size(), s.context_length) - s.context_length + s.uncovered);
    }
    if (name == s.efuse) bytes.resize(s.efuse_length);
    if (name != public_key) return bytes;
    bytes.resize(s.stage2.proof);
    return joined(slice(bytes, s.stage2.n, s.length), slice(bytes, s.stage2.e, 4));
  }
  bool says(const Outcome& outcome, const std::string& text) const {
    return outcome.output == text_file("banner_" + s.name) + text;
  }
  /// A refusal: with a line that there is for it, or an abort in silence; no file has changed.
  void expect_refused(const Outcome& outcome, int stage, const Files& before) const {
    const bool aborted = outcome.status == -SIGABRT;
    EXPECT_TRUE(says(outcome, "") || (!aborted && (says(outcome, line("popp")) ||
                                                   says(outcome, line("not_signed", stage)) ||
                                                   says(outcome, line("refused", stage)))));
    EXPECT_TRUE(aborted || (outcome.status >= 0 && outcome.status != 124));
    EXPECT_TRUE(read_all_files() == before);
  }
  /// A verification that succeeds: what it goes by is undamaged.
  void expect_undamaged(const std::string& name, const Files& before) const {
    EXPECT_EQ(relied_on(name, before.at(name)), relied_on(name, device(0).at(name)));
  }
  /// A seal that succeeds: what was sealed holds under undamaged keys.
  void expect_sealed(const Outcome& outcome, int stage) const {
    EXPECT_EQ(outcome.status, 0);
    restore();
    expect_run("out" + (stage == 1 ? verify1 : verify2), 0, line("verified", stage));
  }
};
RUN_FOR_BOTH_SCHEMES(Input);

TEST_P(Input, DamagedFilesEndAsListed) {
  int count = 0;
  for (const Row& row : read_bad_input()) {
    const std::string &scheme = row.at("scheme"), &name = row.at("file"), &says = row.at("says");
    if (scheme != s.name && scheme != "both") continue;
    SCOPED_TRACE(testing::PrintToString(row));
    damage_file(files.contains(name) ? files.at(name) : name, row);
    const Command& command = commands.at(row.at("command"));
    // Checked before anything else, so that a private key is never missed.
    if (says == "popp") std::filesystem::remove(s.root_private);
    const std::string said = says == "silence" ? "" : line(says);
    const int status = status_of(row.at("status"));
    if (said == command.success) expect_run(command.line, status, said);
    if (said != command.success) expect_failure(command.line, status, said);
    std::filesystem::remove("out");
    restore();
    ++count;
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
  std::mt19937_64 engine = seeded_engine();
  const Choose choose = [&](std::size_t limit) { return engine() % limit; };
  const auto any_of = [&](const auto& set) {
    return *std::next(set.begin(), static_cast<std::ptrdiff_t>(choose(set.size())));
  };
  for (int i = 0; i < 150; ++i) {
    const Command command = any_of(commands).second;
    const int stage = command.stage;
    const std::string name = any_of(command.inputs),
                      tool = stage == 2 && choose(2) == 0 ? client_tool : full_tool;
    const bool is_private = name == private_key || name == s.root_private;
    edit(name, is_private && choose(3) != 0, [&](Bytes& bytes) {
      // What is as long or longer may rightly stand in for it: another key, another sealed image.
      const Bytes other = any_of(device(0)).second;
      if (choose(16) == 0 && other.size() < bytes.size()) bytes = other;
      damage(bytes, choose);
      if (is_private) bytes.resize((bytes.size() + 15) / 16 * 16);
    });
    const Files before = read_all_files();
    const Outcome outcome = run(tool + " " + s.option + " " + command.line);
    SCOPED_TRACE("run " + std::to_string(i) + ", " + command.line + ", damaged " + name + ": " +
                 outcome.output);
    if (!says(outcome, command.success)) {
      expect_refused(outcome, stage, before);
    } else if (command.success == line("verified", stage)) {
      expect_undamaged(name, before);
    } else {
      expect_sealed(outcome, stage);
    }
    std::filesystem::remove("out");
    restore();
  }
}

}  // namespace
