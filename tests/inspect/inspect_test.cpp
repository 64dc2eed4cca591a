#include <openssl/pem.h>
#include <sys/stat.h>

#include "artefact/escape.h"
#include "sb20/public_key_info.h"
#include "tests/inspect/reports.h"

namespace {

using sealwright::to_hex;
using sealwright::to_public_key;

class Inspect : public EndToEnd {
 protected:
  /// Adds what OpenSSL makes of the public key whose modulus lies at `n` of a file.
  void add_key(std::map<std::string, std::string>& texts, const std::string& key,
               const std::string& name, std::size_t n) const {
    const Bytes modulus = slice(read_bytes(name), n, s.length);
    const Owned<RSA> made = make_rsa(modulus, s.is_v11() ? 65537 : 3);
    const Owned<BIO> pem(BIO_new(BIO_s_mem()));
    PEM_write_bio_RSA_PUBKEY(pem.get(), made.get());
    char* text = nullptr;
    const auto length = BIO_get_mem_data(pem.get(), &text);
    texts[key + "_MODULUS"] = to_hex(reversed(modulus));
    texts[key + "_SHA1"] = to_hex(sha1(der_of(made.get())));
    texts[key + "_PEM\n"] = std::string(text, static_cast<std::size_t>(length));
  }
};
RUN_FOR_BOTH_SCHEMES(Inspect);

TEST_P(Inspect, PrintsWhatFilesHold) {
  std::map<std::string, std::string> texts = {{"CODE_SHA1", to_hex(sha1(read_bytes("BL1.bin")))},
                                              {"SCHEME", s.option.substr(2)},
                                              {"BITS", std::to_string(8 * s.length)},
                                              {"EXPONENT", s.is_v11() ? "65537" : "3"},
                                              {"EFUSE_SIZE", std::to_string(s.efuse_length)}};
  add_key(texts, "ROOT", s.root_info, s.root.n);
  add_key(texts, "STAGE2", public_key, s.stage2.n);
  const std::string transcript =
      with_words(text_file("inspect_" + s.name) + text_file("inspect"), texts);
  Bytes words = read_bytes(s.efuse);
  write_bytes("turned_bytes", reversed(words));
  for (auto word = words.begin(); word != words.end(); word += 4) std::reverse(word, word + 4);
  write_bytes("turned_words", words);
  write_bytes("foreign_fuses", device(1).at(s.efuse));
  for (const auto& [name, alias] : {std::pair<std::string, std::string>{s.efuse, "fuses"},
                                    {"sealed1", "bl1"},
                                    {"sealed2", "bl2"},
                                    {"BL1.bin", "code"}}) {
    write_bytes(alias, read_bytes(name));
  }
  mkfifo("pipe", 0600);
  write_bytes("large", {});
  std::filesystem::resize_file("large", std::uintmax_t{1} << 31);
  std::istringstream in(transcript);
  std::string command, output;
  for (std::getline(in, output, '$'); std::getline(in, command) && std::getline(in, output, '$');) {
    const auto [status, said] = run(inspect_tool + command);
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
  const WorkingDirectory here;
  // A proof of 128 bytes has the first 132 bytes of the file for its key. With e = 1 there, an
  // encoding is its own signature, and the verifier takes it.
  Bytes short_proof = padded(
      joined(bytes_of(stored_key(some_bytes(256), 256, 3, 4)), some_bytes(20), bytes_of(128U)),
      548);
  store_le32(&short_proof[128], 1);
  for (const std::size_t at : {127U, 259U}) short_proof[at] |= 0x80;
  short_proof[4] |= 1;
  const Bytes digest = sha1(slice(short_proof, 0, 288));
  std::ranges::copy(reversed(pss_encode(slice(short_proof, 0, 128), digest, 20)),
                    &short_proof[292]);
  // An exponent of 256 bytes reads on over the proof itself, which can be made to suit.
  const Big n = some_prime();
  Bytes short_modulus = joined(bytes_of(stored_key(n.bytes(256), 32, 3, 256)), some_bytes(20));
  const Bytes ahead = joined(slice(short_modulus, 264, 24), bytes_of(256U));
  short_modulus =
      joined(short_modulus, bytes_of(256U), fit_signature(n, sha1(short_modulus), ahead));
  for (const Bytes& file : {short_proof, short_modulus}) {
    Bytes checked = file;
    EXPECT_EQ(sealwright::verify_sb20_proof(checked), 0U);
    write_bytes("forged.spk", file);
    EXPECT_THAT(run(inspect_tool + " --json forged.spk").output,
                HasSubstr(R"("proof_of_possession": false)"));
  }
}

TEST(InspectBuildInfo, IsRecognisedByTagAndZeros) {
  Bytes image(32 + 48 + 1024);
  store_le32(&image[32 + 4], 1234567890);
  std::ranges::copy(std::string("Vextral T.QRV Stage2Key"), &image[32 + 12]);
  std::ranges::copy(sb20_context_magic, &image[32 + 48 + 944]);
  EXPECT_THAT(describe_json(image),
              HasSubstr(R"("code_size": 32, "build_info": {"time": "2009-02-13T23:31:30Z", )"
                        R"("tag": "Vextral T.QRV Stage2Key"})"));
  for (const std::size_t at : {32U, 43U, 44U, 67U, 68U, 79U}) {
    EXPECT_THAT(describe_json(damage(image, at)), HasSubstr(R"("build_info": null)"));
  }
  EXPECT_THAT(describe_json(image), testing::ContainsRegex("root key is irr.*stage-2 key is irr"));
  EXPECT_THAT(to_text("f", describe_all({{"f", image}}).front()),
              testing::ContainsRegex("SHA-1 [0-9a-f]{40}\n"));
}

TEST_P(Inspect, TellsTheSchemeOfAnImageWithBothMarks) {
  // Each mark stands where the other scheme covers nothing.
  Bytes image = read_bytes("sealed1");
  std::ranges::copy(sb20_context_magic, &image[image.size() - 1024 + 944]);
  std::ranges::copy(sb10_context_magic, &image[image.size() - 512 + 476]);
  const std::string own = R"("scheme": ")" + s.option.substr(2) + '"';
  EXPECT_THAT(describe_json(image), testing::AllOf(HasSubstr(own), HasSubstr(R"("sound": true)")));
  EXPECT_THAT(describe_json(damage(image, 0)), HasSubstr(R"("scheme": "2.1")"));
}

TEST(InspectKeys, HaveTheLargerPrimeFirstWhereAllNumbersSign) {
  const Key key = test_key(2048), swapped = make_key(key[4], key[3], key[1]);
  for (const auto& [numbers, sound] : {std::pair{key, true}, {swapped, false}}) {
    Bytes file = padded(key_list(numbers, full_widths(256), true), 1200);
    do_PrivateKey_Encrypt(2, file.data(), length_of(file));
    EXPECT_THAT(describe_json(file), HasSubstr(sound ? R"("sound": true)" : R"("sound": false)"));
  }
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
  EXPECT_EQ(sealwright::escape("\"\\\x1f \x7f\xc2\x9f" + text),
            R"(\"\\\u001f \u007f\u009f)" + text);
  const std::string hidden = "\u00ad\u061c\u2028\u2029\ufeff\U000e0001\U000e007f";
  EXPECT_EQ(sealwright::escape("\u061b" + hidden + "\u2027"),
            "\u061b"
            R"(\u00ad\u061c\u2028\u2029\ufeff\udb40\udc01\udb40\udc7f)"
            "\u2027");
  for (const std::string bytes : {"\x80", "\xc1\xbf", "\xe0\x9f\xbf", "\xed\xa0\x80", "\xf0\x8f",
                                  "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xf8\x88\x80\x80"}) {
    EXPECT_THAT(sealwright::escape(bytes), testing::MatchesRegex(R"((\\ufffd)+)"));
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
