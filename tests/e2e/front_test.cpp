#include "tests/e2e/bench.h"

namespace {

std::string usage_of(const Scheme& s, const std::string& tool) {
  return text_file("usage_" + s.name + (tool == client_tool ? "_client" : ""));
}

void expect_outcome(const std::string& command, int status, const std::string& output) {
  const Outcome outcome = run(command);
  EXPECT_EQ(outcome.status, status) << command;
  EXPECT_EQ(outcome.output, output) << command;
}

TEST(Front, WrongCountOrVersionPrintsNoBanner) {
  const std::string hint = "sealwright_V21 -v1.1(or -v2.1) -help\n";
  for (const std::string& tool : {full_tool, client_tool}) {
    for (const char* arguments : {"", " -v2.1", " -v1.1 a b c d -STAGE2"}) {
      expect_outcome(tool + arguments, 255, hint);
    }
    for (const char* option : {" -v2.10", " -v1.1x", " v2.1", " -v1.0", " ''"}) {
      expect_outcome(tool + option + " -help", 255, usage_of(v21, tool));
    }
  }
}

TEST(Front, CommandTables) {
  for (const Scheme& s : {v11, v21}) {
    for (const std::string& tool : {full_tool, client_tool}) {
      const bool by_client = tool == client_tool;
      const auto expect = [&](const std::string& command, int status, const std::string& text) {
        const std::string capital = s.is_v11() ? " -V1.1 " : " -V2.1 ";
        expect_outcome(tool + " " + s.option + " " + command, status, banner_of(s) + text);
        expect_outcome(tool + capital + command, status, banner_of(s) + text);
      };
      const std::string usage = usage_of(s, tool);
      expect("-help", 0, usage);
      expect("-v", 0, version_line);
      expect("-version", 0, version_line);
      // With six arguments one driver succeeds in silence.
      const bool silent = s.is_v11() && !by_client;
      for (const char* word : {"-STAGE2x", "-VERIFY", "-P"}) {
        if (*word == '-' && word[1] == 'P' && !s.is_v11() && !by_client) continue;
        expect(std::string("a b c ") + word, silent ? 0 : 255, silent ? "" : usage);
      }
      std::vector<std::string> unknown = {"-foo",           "-keygen",           "-KEYGENx",
                                          "-STAGE2_KEYGEN", "a -STAGE2_KEYGENx", "-KEYGEN a",
                                          "a b -STAGE1x",   "a b -stage1",       "a b -STAGE2",
                                          "a b -P",         "-VERIFY a b"};
      if (by_client) unknown.insert(unknown.end(), {"-KEYGEN", "a b -STAGE1", "a b -VERIFY"});
      for (const std::string& command : unknown) expect(command, 255, usage);
    }
  }
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
