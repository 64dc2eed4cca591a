#include "tests/support/schemes.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "crypto/mem.h"
#include "sb10/key_pair.h"
#include "sb20/code_encryption.h"
#include "sb20/stage1.h"
#include "scheme/entry_table.h"
#include "scheme/private_key_file.h"
#include "util/dump.h"
#include "util/file.h"

// What the commands never ask of scheme and util: functions under arguments of any kind, and those
// that no command calls.

namespace {

template <typename S>
class Schemes : public testing::Test {};
using BothSchemes = testing::Types<V11, V21>;
TYPED_TEST_SUITE(Schemes, BothSchemes);

TYPED_TEST(Schemes, PublicKeyInfoTakesAnHmacKey) {
  using S = TypeParam;
  Sealed<S> made;
  constexpr std::uint32_t words = S::length / 4, room = S::efuse_length;
  const auto& info = made.context.publicKeyInfo;
  const Bytes given = made.hmac_key, hmac = bytes_of(info.hmac);
  EXPECT_EQ(bytes_of(info.key), public_key_of(made.key, S::length));
  EXPECT_EQ(hmac, hmac_sha1(given, bytes_of(info.key)));
  for (std::size_t i = 0; i < room; ++i) EXPECT_EQ(made.efuse[i], hmac[i] ^ given[i]);
  EXPECT_EQ(made.make_info(given, words, room - 1), 0xFFF50000);
  EXPECT_EQ(made.make_info(given, words + 1, room), 0xFFF50000);
  EXPECT_EQ(made.make_info(given, 4 * words, room), 0xFFF50000);
  EXPECT_EQ(made.make_info(some_bytes(room - 1), words, room), 0xFFF50000);
  EXPECT_EQ(made.make_info(some_bytes(room + 1), words, room), 0xFFF50000);
}

TYPED_TEST(Schemes, ChecksWipeWhatTheyRefuse) {
  using S = TypeParam;
  const Sealed<S> good;
  const Bytes info = bytes_of(good.context.publicKeyInfo);
  EXPECT_EQ(bytes_of(good.context.stage2PublicKey), slice(info, 0, info.size() - 20));  // stands in
  Sealed<S> tried = good;
  EXPECT_EQ(tried.check(), 0U);
  EXPECT_EQ(tried.context.funcPtrTable[0], entry_word(tmkx_memcmp));
  tried = good;
  tried.code = Bytes();  // a null pointer
  EXPECT_EQ(tried.check(), 0xFFF30071);
  for (const std::size_t length : {0U, 36 - S::efuse_length, S::efuse_length + 1}) {
    tried.efuse = some_bytes(length);
    EXPECT_EQ(tried.check(), 0xFFF30000);
    EXPECT_EQ(tried.validate(), 0xFFF50000);
  }
  EXPECT_EQ(bytes_of(tried.context.publicKeyInfo), info);
  tried.efuse = tried.hmac_key;
  EXPECT_EQ(tried.check(), 0xFFF10050);
  EXPECT_EQ(bytes_of(tried.context.publicKeyInfo), Bytes(info.size()));
  tried = good;
  ++tried.code[0];
  EXPECT_EQ(tried.check(), 0xFFF30090);
  EXPECT_EQ(bytes_of(tried.context.signature), Bytes(S::length));
  // Nothing covers the end, and no check reads it.
  const Bytes magic =
      joined(bytes_of(std::string(S::length == 256 ? "SB20_CONTEXT" : "SB10_CONTEXT")), Bytes(4));
  const Bytes fill(sizeof good.context.fill, 0xAA), all = bytes_of(good.context);
  EXPECT_EQ(slice(all, all.size() - fill.size() - 16, 16 + fill.size()), joined(magic, fill));
  const std::uint8_t* list = good.list.data();
  EXPECT_EQ(S::generate(list, 9, nullptr, nullptr, 0, &tried.context), 0xFFF60031);
  EXPECT_EQ(S::generate(list, 9, nullptr, list, 1, &tried.context), 0xFFF40000);
}

TEST(CodeEncryption, RefusesBadParametersAndRaggedCode) {
  const Sealed<V21> made;
  const std::uint8_t* efuse = made.efuse.data();
  Bytes code = some_bytes(33);
  EXPECT_EQ(Encrypt_Code(efuse, 20, &made.context, code.data(), 17), 0xFFF7C000);
  EXPECT_EQ(code, some_bytes(33));
  EXPECT_EQ(Decrypt_Code(efuse, 20, &made.context, code.data(), 17), 0xFFF7D000);
}

TEST(CodeEncryption, StandaloneHelpersTakeTheFiles) {
  const WorkingDirectory here;
  const Bytes info = some_bytes(288), plain = some_bytes(48);
  const Bytes iv = slice(sha1(slice(info, 0, 268)), 0, 16);
  Bytes key = slice(info, 268, 16);
  for (std::uint8_t& byte : key) byte ^= 0x5A;
  for (const std::size_t length : {19, 20, 21}) {
    write_bytes("publicKeyInfo_V21.dat",
                padded(info, 200 * length));  // a longer file's end is ignored
    write_bytes("eFuseData_V21.dat", Bytes(length, 0x5A));
    const Status expected = length == 20 ? 0 : 0xFFF7A000;
    Bytes code = padded(plain, 64);
    EXPECT_EQ(do_Encrypt(code.data(), 48), expected);
    EXPECT_EQ(slice(code, 0, 48), length == 20 ? aes_cbc(true, key, iv, plain) : plain);
    EXPECT_EQ(do_Decrypt(code.data(), 48), expected);
    EXPECT_EQ(slice(code, 0, 48), plain);
  }
}

Bytes encrypted(std::int32_t mode, Bytes bytes) {
  EXPECT_EQ(do_PrivateKey_Encrypt(mode, bytes.data(), length_of(bytes)), 0U);
  return bytes;
}

// Key files that were made before depend on the fixed parameters.
TEST(PrivateKeyFile, ProtectionNeverChanges) {
  EXPECT_EQ(encrypted(1, Bytes(16)), parse_hex("cdba2b666bff002b94b337bc31feac8a"));
  EXPECT_EQ(encrypted(2, Bytes(16)), parse_hex("b680ca6f0bca5d2c1329e33370343343"));
  EXPECT_EQ(encrypted(7, Bytes(16)), encrypted(2, Bytes(16)));
  for (const std::int32_t mode : {1, 2}) {
    Bytes bytes = encrypted(mode, some_bytes(1200));
    EXPECT_EQ(do_PrivateKey_Decrypt(mode, bytes.data(), 1200), 0U);
    EXPECT_EQ(do_PrivateKey_Encrypt(mode, bytes.data(), 1190), 0xFFF7C000);
    EXPECT_EQ(bytes, some_bytes(1200));
    EXPECT_EQ(do_PrivateKey_Decrypt(mode, bytes.data(), 1190), 0xFFF7C000);
  }
}

TEST(PrivateKeyFile, OldFormatHoldsSevenItemsInTheirSlots) {
  constexpr std::uint32_t slots[] = {128, 128, 64, 64, 64, 64, 64};
  const Bytes text = bytes_of(std::string("1.0, Priv, RSA-1024, CRT"));
  const Bytes header = joined(joined(bytes_of(28U), padded(text, 28)), bytes_of(604U));
  for (std::size_t i = 0; i < 7 * 3; ++i) {
    const std::uint32_t change = std::array{0U, 4U, -4U}[i % 3];    // of one item's length
    const std::size_t shorter = change == 4 ? (i / 3 + 1) % 7 : 7;  // of the same list's
    Bytes record, expected = header, out(640);
    for (std::size_t k = 0; k < 7; ++k) {
      const std::uint32_t length = slots[k] + (k == i / 3 ? change : 0) - (k == shorter ? 4 : 0);
      const Bytes item = joined(bytes_of(length), some_bytes(length));
      record = joined(record, item);
      expected = joined(expected, padded(item, 4 + slots[k]));
    }
    EXPECT_EQ(convert_To_OldPrivateKey(record.data(), 0, out.data()), change == 4 ? 0xFFF7B000 : 0);
    EXPECT_EQ(out, change == 4 ? Bytes(640) : encrypted(1, expected));
  }
  const Bytes endless(604, 0xFF);
  Bytes out(640);
  EXPECT_EQ(convert_To_OldPrivateKey(endless.data(), 0, out.data()), 0xFFF7B000);
}

template <typename Print>
std::string printed_by(Print print) {
  testing::internal::CaptureStdout();
  print();
  return testing::internal::GetCapturedStdout();
}

TEST(Dump, PrintsLinesOfBytesAndWholeRowsOfWords) {
  const Bytes bytes = parse_hex("0F1E2D3C4B5A69788796A5B4C3D2E1F0A5");
  const std::pair<std::int32_t, std::string> dumps[] = {
      {0, ""},
      {3, "0F1E2D\n"},
      {-3, "\n"},
      {-32, ""},
      {17, "0F1E2D3C4B5A69788796A5B4C3D2E1F0\nA5\n"}};
  for (const auto& dump : dumps) {
    EXPECT_EQ(printed_by([&] { mem_dump(bytes.data(), dump.first); }), dump.second);
  }
  const std::uint32_t words[] = {0, 0xDEADBEEF, 10, 1, 2, 3, 4, 0xFFFFFFFF};
  const std::string rows =
      "title\n0x00000000, 0xDEADBEEF, 0x0000000A, 0x00000001, \n"
      "0x00000002, 0x00000003, 0x00000004, 0xFFFFFFFF, \n";
  for (const std::int32_t count : {0, 1, 4, 5}) {
    EXPECT_EQ(printed_by([&] { print_DWORD("title", words, count); }),
              rows.substr(0, count == 0  ? 6
                             : count < 5 ? 55
                                         : rows.size()));
  }
}

TEST(Files, ReaderKeepsAskingAShortFile) {
  const WorkingDirectory here;
  write_bytes("file", some_bytes(4));
  const pid_t child = fork();
  if (child == 0) {
    alarm(60);
    Bytes read(10);
    _exit(read_file("file", read.data(), 10) == 0 && read == read_bytes("file") ? 0 : 1);
  }
  usleep(100'000);
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, WNOHANG), 0);  // still at it
  ASSERT_EQ(system("echo more >> file"), 0);
  ASSERT_EQ(system("echo >> file"), 0);
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST(Files, EndsThatCommandsNeverMeet) {
  const WorkingDirectory here;
  write_bytes("file", some_bytes(10));
  Bytes read(11);
  EXPECT_EXIT(read_whole_or_fail(read, "file"), testing::ExitedWithCode(255), "");  // it has shrunk
  std::filesystem::resize_file("file", (std::uintmax_t{1} << 31) - 1);  // all of it a hole
  EXPECT_EQ(get_file_length("file"), 0x7FFFFFFF);
  EXPECT_EQ(printed_by([] { EXPECT_EQ(write_file("/missing/file", nullptr, 0), 16); }),
            "file open error\n");
  EXPECT_EQ(write_file("file", read.data(), -1), 0);  // no byte at all
  EXPECT_EQ(read_bytes("file"), Bytes());
}

}  // namespace
