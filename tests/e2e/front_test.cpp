#include "tests/e2e/bench.h"

namespace {

TEST(Front, CommandsEndAsListed) {
  std::ifstream rows(TEST_DATA "/commands.txt");
  int count = 0;
  for (std::string row; std::getline(rows, row);) {
    std::istringstream in(row);
    std::string scheme, program, status, text, words;
    if (!(in >> scheme >> program >> status >> text) || scheme == "#") continue;
    std::getline(in, words);
    for (const Scheme& s : {v11, v21}) {
      const bool has_version = scheme == "-", capital = count % 2 != 0;
      if (!has_version && scheme != "both" && scheme != s.name) continue;
      for (const std::string& tool : {full_tool, client_tool}) {
        if (program == (tool == full_tool ? "client" : "full")) continue;
        // What is no known version gets the usage of 2.1.
        const std::string usage =
            "usage_" + (has_version ? v21 : s).name + (tool == full_tool ? "" : "_client");
        const std::map<std::string, std::string> texts = {
            {"usage", text_file(usage)},
            {"version", version_line},
            {"silence", ""},
            {"hint", "sealwright_V21 -v1.1(or -v2.1) -help\n"}};
        const std::string version =
            has_version ? "" : (capital ? " -V" : " -v") + s.option.substr(2);
        const Outcome outcome = run(tool + version + words);
        EXPECT_EQ(outcome.status, std::stoi(status)) << tool << row;
        EXPECT_EQ(outcome.output, (has_version ? "" : banner_of(s)) + texts.at(text))
            << tool << row;
        ++count;
      }
    }
  }
  EXPECT_GT(count, 90);
}

TEST(Front, ClientHoldsNoCodeOfTheRootKey) {
  const std::string full = run(SYMBOL_LISTER " -C " + full_tool).output;
  const std::string client = run(SYMBOL_LISTER " -C " + client_tool).output;
  for (const char* name :
       {"sb20_Generate_Stage1(", "Check_SB20_Context(", "Validate_SB20_PublicKeyInfo(",
        "Encrypt_Code(", "sb10_Generate_Stage1(", "Check_SB10_Context(", "mk_BL_Info("}) {
    EXPECT_NE(full.find(std::string(" T ") + name), std::string::npos) << name;
    EXPECT_EQ(client.find(name), std::string::npos) << name;
  }
  // It is not stripped.
  EXPECT_NE(client.find(" T sb20_Generate_Stage2("), std::string::npos);
  EXPECT_NE(client.find(" T sb10_Generate_Stage2("), std::string::npos);
}

}  // namespace
