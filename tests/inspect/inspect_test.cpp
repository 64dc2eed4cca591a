#include <gmock/gmock.h>
#include <openssl/pem.h>
#include <openssl/x509.h>
#include <sys/stat.h>

#include <iomanip>

#include "artefact/escape.h"
#include "inspect/boot.h"
#include "inspect/describe.h"
#include "sb20/public_key_info.h"
#include "sb20/records.h"
#include "tests/e2e/bench.h"

namespace {

using sealwright::describe;
using sealwright::describe_boot;
using sealwright::escape;
using sealwright::to_public_key;
using testing::HasSubstr;

std::string hex(const Bytes& bytes) {
  std::ostringstream text;
  for (const unsigned byte : bytes) text << std::hex << std::setw(2) << std::setfill('0') << byte;
  return text.str();
}

std::string describe_json(const Bytes& file) {
  return to_json(describe("f", file));
}

Bytes damage(Bytes bytes, std::size_t at) {
  bytes.at(at) ^= 0x10;
  return bytes;
}

class Inspect : public Bench {
 protected:
  /// Adds what OpenSSL makes of the public key whose modulus lies at `n` of a file.
  void add_key(std::map<std::string, std::string>& texts, const std::string& key,
               const std::string& name, std::size_t n) const {
    const Bytes modulus = slice(read_bytes(name), n, s.length);
    const Owned<RSA> made = make_rsa(modulus, s.is_v11() ? 65537 : 3);
    Bytes der(512);
    unsigned char* end = der.data();
    der.resize(static_cast<std::size_t>(i2d_RSA_PUBKEY(made.get(), &end)));
    const std::unique_ptr<BIO, int (*)(BIO*)> pem(BIO_new(BIO_s_mem()), BIO_free);
    PEM_write_bio_RSA_PUBKEY(pem.get(), made.get());
    char* text = nullptr;
    const long length = BIO_get_mem_data(pem.get(), &text);
    texts[key + "_MODULUS"] = hex(reversed(modulus));
    texts[key + "_SHA1"] = hex(sha1(der));
    texts[key + "_PEM\n"] = std::string(text, static_cast<std::size_t>(length));
  }
};
RUN_FOR_BOTH_SCHEMES(Inspect);

TEST_P(Inspect, PrintsWhatFilesHold) {
  std::map<std::string, std::string> texts = {{"CODE_SHA1", hex(sha1(read_bytes("BL1.bin")))}};
  add_key(texts, "ROOT", s.root_info, s.root.n);
  add_key(texts, "STAGE2", public_key, s.stage2.n);
  std::string transcript = text_file("inspect_" + s.name) + text_file("inspect");
  for (const auto& [name, text] : texts) {
    for (std::size_t at = 0; (at = transcript.find(name, at)) != std::string::npos;) {
      transcript.replace(at, name.size(), text);
    }
  }
  mkfifo("pipe", 0600);
  write_bytes("large", {});
  std::filesystem::resize_file("large", std::uintmax_t{1} << 31);
  std::istringstream in(transcript);
  std::string command, output;
  for (std::getline(in, output, '$'); std::getline(in, command) && std::getline(in, output, '$');) {
    const auto [status, said] = run(INSPECT_TOOL + command);
    EXPECT_EQ(said + (status == 0 ? "" : "=> " + std::to_string(status) + "\n"), output);
  }
  EXPECT_EQ(command, " large");  // the last
}

TEST_P(Inspect, NoticesDamageToKeyFiles) {
  for (const std::string& name : {s.root_info, public_key}) {
    const Bytes file = read_bytes(name);
    for (std::size_t at = name == public_key ? s.stage2.proven : 0; at < file.size(); at += 7) {
      EXPECT_THAT(describe_json(damage(file, at)), HasSubstr(R"("proof_of_possession": false)"));
    }
  }
  for (const std::string& name : {s.root_private, private_key}) {
    const bool has_header = s.is_v11() && name == private_key;
    const std::size_t tail = s.is_v11() ? (has_header ? 0 : 4) : 12;
    const Bytes plain = open_key(name);
    for (std::size_t at = has_header ? 36 : 0; at < plain.size() - tail; at += 4) {
      Bytes damaged = damage(plain, at);
      do_PrivateKey_Encrypt(s.key_file_mode, damaged.data(), length_of(damaged));
      EXPECT_THAT(describe_json(damaged), HasSubstr(R"("sound": false)")) << name << at;
    }
  }
}

TEST(InspectKeys, MadeUpLengthsProveNothing) {
  // A proof of 128 bytes has the first 132 bytes of the file for its key. With e = 1 there, an
  // encoding is its own signature, and the verifier takes it.
  Bytes file = some_bytes(548);
  for (const auto& [at, word] : {std::pair{0, 256}, {128, 1}, {260, 4}, {264, 3}, {288, 128}}) {
    store_le32(&file[static_cast<std::size_t>(at)], static_cast<std::uint32_t>(word));
  }
  file[4] |= 1;
  file[127] |= 0x80;
  file[259] |= 0x80;
  const Bytes digest = sha1(slice(file, 0, 288));
  std::ranges::copy(reversed(pss_encode(slice(file, 0, 128), digest, 20)), &file[292]);
  Bytes checked = file;
  EXPECT_EQ(verify_sb20_proof(checked), 0U);
  EXPECT_THAT(describe_json(file), HasSubstr(R"("proof_of_possession": false)"));
}

TEST(InspectBuildInfo, IsRecognisedByTagAndZeros) {
  Bytes image(32 + 48 + 1024);
  store_le32(&image[32 + 4], 1234567890);
  std::ranges::copy(std::string("Vextral T.QRV Stage2Key"), &image[32 + 12]);
  std::ranges::copy(sb20_context_magic, &image[32 + 48 + 944]);
  EXPECT_THAT(describe_json(image),
              HasSubstr(R"("code_size": 32, "build_info": {"time": "2009-02-13T23:31:30Z", )"
                        R"("tag": "Vextral T.QRV Stage2Key"})"));
  for (const std::size_t at : {32, 43, 44, 67, 68, 79}) {
    EXPECT_THAT(describe_json(damage(image, at)), HasSubstr(R"("build_info": null)"));
  }
  EXPECT_THAT(describe_json(image), testing::ContainsRegex("root key is irr.*stage-2 key is irr"));
  EXPECT_THAT(to_text("f", describe("f", image)),
              testing::ContainsRegex("SHA-1( [0-9a-f]{4}){10}\n"));
}

TEST(InspectKeys, AreRegularOrNot) {
  RsaPublicKey2048 regular = {256, {1}, 4, {3}};
  regular.n[255] = 0x80;
  for (const auto& [at, bits] :
       {std::pair{1, 0}, {0, 4}, {4, 1}, {259, 128}, {260, 4}, {264, 1}, {264, 2}}) {
    RsaPublicKey2048 key = regular;
    writable_view_of(key)[static_cast<std::size_t>(at)] ^= static_cast<std::uint8_t>(bits);
    EXPECT_EQ(to_public_key(key).regular, bits == 0) << at;
  }
}

TEST(InspectNames, AreEscaped) {
  const std::string text = "\xc2\xa0\xe0\xa0\x80\xed\x9f\xbf\xf0\x90\x80\x80\xf4\x8f\xbf\xbf";
  EXPECT_EQ(escape("\"\\\x1f \x7f\xc2\x9f" + text), R"(\"\\\u001f \u007f\u009f)" + text);
  for (const std::string bytes : {"\x80", "\xc1\xbf", "\xe0\x9f\xbf", "\xed\xa0\x80", "\xf0\x8f",
                                  "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xf8\x88\x80\x80"}) {
    EXPECT_THAT(escape(bytes), testing::MatchesRegex(R"((\\ufffd)+)"));
  }
}

/// What is said of a chain of eFuse data, BL1 and BL2.
struct Verdicts {
  bool boots, fuses, bl1, bl2;
  bool keys = true;

  bool operator==(const Verdicts&) const = default;
};

void PrintTo(const Verdicts& said, std::ostream* out) {
  *out << "boots " << said.boots << ", fuses " << said.fuses << ", BL1 " << said.bl1 << ", BL2 "
       << said.bl2 << ", keys " << said.keys;
}

Verdicts verdicts(const Bytes& efuse, const Bytes& bl1, const Bytes& bl2) {
  const auto check = sealwright::check_boot_chain({efuse, bl1, bl2});
  return {boots(check), check.fuses, check.bl1_signature, *check.bl2_signature, check.keys};
}

TEST_P(Inspect, TellsWhetherADeviceBoots) {
  Bytes bl1 = read_bytes("sealed1");
  const Bytes bl2 = read_bytes("sealed2"), efuse = read_bytes(s.efuse),
              other = device(1).at(s.efuse);
  const std::size_t context = bl1.size() - s.context_length;
  const std::size_t signature = context + s.context_signature, end = context + s.uncovered;
  const std::size_t key = context + s.root.n, root = key + s.context_info;
  constexpr Verdicts all = {.boots = true, .fuses = true, .bl1 = true, .bl2 = true};
  constexpr Verdicts no_bl1 = {.boots = false, .fuses = true, .bl1 = false, .bl2 = true};
  constexpr Verdicts no_bl2 = {.boots = false, .fuses = true, .bl1 = true, .bl2 = false};
  constexpr Verdicts no_fuses = {.boots = false, .fuses = false, .bl1 = true, .bl2 = true};
  const struct {
    const char* damaged;
    Verdicts expected;
    std::vector<std::size_t> places;
  } parts[] = {
      {"code or signature",
       no_bl1,
       {0, context - 1, signature - (s.is_v11() ? 0 : 4), signature + s.length - 1}},
      {"stage-2 key", {.boots = false, .fuses = true, .bl1 = false, .bl2 = false}, {key + 4}},
      {"root key", {.boots = false, .fuses = false, .bl1 = false, .bl2 = true}, {root + 4}},
      {"HMAC", no_fuses, {end - 1}},
      {"what nothing covers", all, {end, bl1.size() - 1}}};
  for (const auto& [damaged, expected, places] : parts) {
    for (const auto at : places) {
      EXPECT_EQ(verdicts(efuse, damage(bl1, at), bl2), expected) << damaged << at;
    }
  }
  Bytes both = bl1;  // also with the mark of scheme 2.1, where scheme 1.1 covers nothing
  std::ranges::copy(sb20_context_magic, &both[bl1.size() - 80]);
  EXPECT_EQ(verdicts(efuse, both, bl2), all);
  const Bytes wrong[] = {damage(bl2, 0), damage(bl2, bl2.size() - 1), slice(bl2, 0, s.length - 1),
                         device(1).at("sealed2")};
  for (const Bytes& second : wrong) EXPECT_EQ(verdicts(efuse, bl1, second), no_bl2);
  EXPECT_EQ(verdicts(other, bl1, bl2), no_fuses);
  EXPECT_EQ(verdicts(joined(efuse, Bytes(1)), bl1, bl2), no_fuses);
  EXPECT_EQ(verdicts(efuse, slice(bl1, 0, bl1.size() - 1), bl2),
            (Verdicts{.boots = false, .fuses = false, .bl1 = false, .bl2 = false, .keys = false}));
  Bytes swapped = bl1;  // to a stage-2 key that the root key has not vouched for
  const Bytes foreign = slice(device(1).at("sealed1"), context, s.key_length());
  std::ranges::copy(foreign, &swapped[context]);
  EXPECT_EQ(verdicts(efuse, swapped, device(1).at("sealed2")), no_bl1);

  EXPECT_THAT(to_json(describe_boot({other, bl1})), HasSubstr(R"("code_sha1": null)"));
  const std::string ragged = to_json(describe_boot({efuse, slice(bl1, 1, bl1.size() - 1)}));
  EXPECT_EQ(ragged.find("code: it is no whole number of cipher blocks") < ragged.size(),
            !s.is_v11());
}

TEST_P(Inspect, ShowsTheCodeOfALongImage) {
  for (const std::size_t length : {16384, 32768 + 16, 100000}) {
    write_bytes("BL1.bin", some_bytes(length));
    ASSERT_EQ(run(full_tool + " " + s.option + " " + seal1).status, 0);
    EXPECT_THAT(to_json(describe_boot({read_bytes(s.efuse), read_bytes("out")})),
                HasSubstr(hex(sha1(some_bytes(length)))));
  }
}

TEST(InspectTool, EscapesNamesAndReportsAFullDisk) {
  const WorkingDirectory here;
  const std::string odd = "-\"\\\n\xff\xc3\xa9", quoted = "'" + odd + "'";
  write_bytes(odd, Bytes(20, 0x5A));
  EXPECT_THAT(run(INSPECT_TOOL " " + quoted).output, HasSubstr("--help"));
  const Outcome outcome = run(INSPECT_TOOL " --json -- " + quoted + " " + quoted);
  EXPECT_EQ(outcome.status, 0);
  EXPECT_THAT(outcome.output, HasSubstr(R"("-\"\\\u000a\ufffdé", "kind": "efuse-data")"));
  EXPECT_THAT(outcome.output, testing::Not(testing::ContainsRegex("ZZ|5a5a|5A5A")));
  const Outcome full = run("sh -c '" INSPECT_TOOL " --version >/dev/full'");
  EXPECT_EQ(full.status, 2);
  EXPECT_THAT(full.output, HasSubstr("No space left on device"));
}

}  // namespace
