#include "tests/e2e/bench.h"

namespace {

std::string usage_of(const Scheme& scheme, const std::string& tool) {
  const bool v11_texts = scheme.is_v11();
  const std::string bl1 = v11_texts ? "secured_BL1_V11.bin" : "secured_BL1_V21.bin";
  const std::string bl2 = v11_texts ? "secured_BL2.bin" : "secured_BL2_V21.bin";
  const std::string spk = "stage2Key" + scheme.public_suffix;
  const std::string prv = "stage2Key" + scheme.private_suffix;
  const std::string in_brackets = "<" + bl1 + "> <" + scheme.efuse + "> -VERIFY";
  // The full text for 2.1 names the stage-1 image, on purpose.
  const std::string verified = v11_texts || tool == client_tool ? bl2 : bl1;
  const std::string blocks[][4] = {
      {"Vextral T.QRV's own Keypair generation", "-KEYGEN", "-KEYGEN",
       scheme.root_info + ", " + scheme.root_private + " and " + scheme.efuse + " are generated."},
      {"Customer's own Keypair generation", "<key file> -STAGE2_KEYGEN", "stage2Key -STAGE2_KEYGEN",
       spk + " and " + prv + " are generated."},
      {"For Secured BL1 code generation", "<source file> <destination file> -STAGE1",
       "BL1.bin " + bl1 + " -STAGE1", bl1 + " is generated."},
      {"For Secured BL2 code generation",
       "<source file> <destination file> <private key file> -STAGE2",
       "BL2.bin " + bl2 + " " + prv + " -STAGE2", bl2 + " is generated."},
      {"For Proof of Posession of Private Key", in_brackets,
       v11_texts ? in_brackets : bl1 + " " + scheme.efuse + " -VERIFY",
       "The Proof of Posession of Private Key is verified"},
      {"For Secured BL2 code verification", "<" + bl2 + "> <public key file> -STAGE2_VERIFY",
       verified + "  " + spk + " -STAGE2_VERIFY", bl2 + " is verified."}};
  const std::string prompt = "#>Sealwright_V21 " + scheme.option + " ";
  std::string text;
  for (const auto& [what, command, example, result] : blocks) {
    const bool for_customers = command.find("-STAGE2") != std::string::npos;
    if (tool == client_tool && !for_customers) continue;
    text += "Usage: " + what + "\n" + prompt + command + "\nex) " + prompt + example + "\n" +
            result + "\n\n\n";
  }
  return text;
}

TEST(Front, BannerHasATitleAndSixLines) {
  for (const Scheme& scheme : {v11, v21}) {
    std::string rest = banner_of(scheme);
    const std::string title =
        "\n***Sealwright " + scheme.option.substr(1) + " for Vextral Application Processor***\n";
    ASSERT_TRUE(rest.starts_with(title));
    rest.erase(0, title.size());
    EXPECT_TRUE(banner_of(v11).ends_with(rest));  // one notice for both
    EXPECT_EQ(std::count(rest.begin(), rest.end(), '\n'), 7);
    EXPECT_EQ(rest.find("\n\n"), rest.size() - 2);
  }
}

TEST(Front, WrongCountOrVersionPrintsNoBanner) {
  const std::string hint = "sealwright_V21 -v1.1(or -v2.1) -help\n";
  for (const std::string& tool : {full_tool, client_tool}) {
    for (const Args& args : {Args{}, {"-v2.1"}, {"-v1.1", "a", "b", "c", "d", "-STAGE2"}}) {
      expect_outcome(run_program(tool, args, "."), 255, hint);
    }
    for (const char* option : {"-v2.10", "-v1.1x", "v2.1", "-v1.0", ""}) {
      expect_outcome(run_program(tool, {option, "-help"}, "."), 255, usage_of(v21, tool));
    }
  }
}

TEST(Front, CommandTables) {
  struct Row {
    Args args;
    int status;
    std::string text;
  };
  for (const Scheme& scheme : {v11, v21}) {
    for (const std::string& tool : {full_tool, client_tool}) {
      const std::string usage = usage_of(scheme, tool);
      // With six arguments one driver succeeds in silence.
      const bool silent = scheme.is_v11() && tool == full_tool;
      std::vector<Row> rows = {{{"-help"}, 0, usage},
                               {{"-v"}, 0, version_line},
                               {{"-version"}, 0, version_line},
                               {{"a", "b", "c", "-STAGE2x"}, silent ? 0 : 255, silent ? "" : usage},
                               {{"a", "b", "c", "-VERIFY"}, silent ? 0 : 255, silent ? "" : usage}};
      if (scheme.is_v11() || tool == client_tool) {
        rows.push_back({{"a", "b", "c", "-P"}, silent ? 0 : 255, silent ? "" : usage});
      }
      std::vector<Args> unknown = {{"-foo"},
                                   {"-keygen"},
                                   {"-KEYGENx"},
                                   {"-STAGE2_KEYGEN"},
                                   {"a", "-STAGE2_KEYGENx"},
                                   {"-KEYGEN", "a"},
                                   {"a", "b", "-STAGE1x"},
                                   {"a", "b", "-stage1"},
                                   {"a", "b", "-STAGE2"},
                                   {"a", "b", "-P"},
                                   {"-VERIFY", "a", "b"}};
      if (tool == client_tool) {
        unknown.insert(unknown.end(), {{"-KEYGEN"}, {"a", "b", "-STAGE1"}, {"a", "b", "-VERIFY"}});
      }
      for (const Args& args : unknown) rows.push_back({args, 255, usage});
      for (const auto& [args, status, text] : rows) {
        SCOPED_TRACE(tool + testing::PrintToString(args));
        Scheme capital = scheme;
        capital.option[1] = 'V';
        for (const Scheme& spelling : {scheme, capital}) {
          expect_outcome(run_tool(tool, spelling, args, "."), status, banner_of(scheme) + text);
        }
      }
    }
  }
}

TEST(Front, MessagesStayOutOfFilesWhenTheOutputIsClosed) {
  const TempDirectory here;
  for (const auto& [name, bytes] : make_device(v11)) write_bytes(here / name, bytes);
  const Args args = {
      "-c",     "exec \"$0\" \"$@\" <&- >&- 2>&-", full_tool, "-v1.1", "BL2.bin", "out", "key.prv",
      "-STAGE2"};
  expect_outcome(run_program("/bin/sh", args, here.path()), 0, "");
  EXPECT_EQ(slice(read_bytes(here / "out"), 0, 1001), counted_bytes(1001));
  expect_outcome(run_tool(full_tool, v11, {"out", "key.spk", "-STAGE2_VERIFY"}, here.path()), 0,
                 banner_of(v11) + verified_line[2]);
}

TEST(Front, ClientHoldsNoCodeOfTheRootKey) {
  const std::string full = run_program(SYMBOL_LISTER, {"-C", full_tool}, ".").output;
  const std::string client = run_program(SYMBOL_LISTER, {"-C", client_tool}, ".").output;
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
