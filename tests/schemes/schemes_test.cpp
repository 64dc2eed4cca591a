#include "tests/support/schemes.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <future>
#include <tuple>

#include "crypto/mem.h"
#include "crypto/status.h"
#include "sb10/key_pair.h"
#include "sb20/stage1.h"
#include "scheme/entry_table.h"
#include "scheme/private_key_file.h"
#include "scheme/status.h"
#include "util/block_reader.h"
#include "util/dump.h"
#include "util/file.h"

// What the commands never ask of scheme and util: functions under arguments of any kind, and those
// that no command calls.

namespace {

// Exit statuses are the low bytes of these, and callers of the library compare the whole.
TEST(Status, NumbersNeverChange) {
  // clang-format off
  constexpr Status numbers[][2] = {
      {ZEB_SUCCESS, 0},                         {ZEB_ERR_FAIL, 0xFFFF0000},
      {ZEB_ERR_NULL_POINTER, 0xFFFF0010},       {ZEB_ERR_BUFFER_ARRANGEMENT, 0xFFFF0011},
      {ZEB_ERR_PARAMETER, 0xFFFF0020},          {ZEB_ERR_NO_ENC_KEY, 0xFFFF0021},
      {ZEB_ERR_NO_DEC_KEY, 0xFFFF0022},         {ZEB_ERR_NO_IV, 0xFFFF0023},
      {ZEB_ERR_NO_ROOM, 0xFFFF0024},            {ZEB_ERR_BAD_PADDING, 0xFFFF0031},
      {ZEB_ERR_KEY_LENGTH, 0xFFFF0040},         {ZEB_ERR_IV_LENGTH, 0xFFFF0041},
      {ZEB_ERR_NOT_WHOLE_BLOCKS, 0xFFFF0042},   {ZEB_ERR_HELD_COUNT, 0xFFFF0043},
      {ZEB_ERR_STATE, 0xFFFF00FF},              {VERIFY_ERR_SIGNATURE_LENGTH, 0xFFF20000},
      {VERIFY_ERR_SHA1_INIT, 0xFFF20060},       {VERIFY_ERR_SHA1_UPDATE, 0xFFF20070},
      {VERIFY_ERR_SHA1_FINAL, 0xFFF20080},      {VERIFY_ERR_RSA, 0xFFF20090},
      {SIGN_ERR_SHA1_INIT, 0xFFF40060},         {SIGN_ERR_SHA1_UPDATE, 0xFFF40070},
      {SIGN_ERR_SHA1_FINAL, 0xFFF40080},        {SIGN_ERR_RSA, 0xFFF40090},
      {INFO_ERR_HMAC_SETUP, 0xFFF10010},        {INFO_ERR_HMAC_INIT, 0xFFF10020},
      {INFO_ERR_HMAC_UPDATE, 0xFFF10030},       {INFO_ERR_HMAC_FINAL, 0xFFF10040},
      {INFO_ERR_MISMATCH, 0xFFF10050},          {CHECK_ERR_LENGTH, 0xFFF30000},
      {CHECK_ERR_SHA1_INIT, 0xFFF30060},        {CHECK_ERR_SHA1_IMAGE, 0xFFF30071},
      {CHECK_ERR_SHA1_KEY, 0xFFF30072},         {CHECK_ERR_SHA1_FINAL, 0xFFF30080},
      {CHECK_ERR_SIGNATURE, 0xFFF30090},        {CONTEXT_ERR_SIGNING, 0xFFF40000},
      {INFO_ERR_ARGUMENT, 0xFFF50000},          {INFO_ERR_GEN_HMAC_SETUP, 0xFFF50010},
      {INFO_ERR_GEN_HMAC_INIT, 0xFFF50020},     {INFO_ERR_GEN_HMAC_UPDATE, 0xFFF50030},
      {INFO_ERR_GEN_HMAC_FINAL, 0xFFF50040},    {CONTEXT_ERR_SHA1_INIT, 0xFFF60020},
      {CONTEXT_ERR_SHA1_IMAGE, 0xFFF60031},     {CONTEXT_ERR_SHA1_KEY, 0xFFF60032},
      {CONTEXT_ERR_SHA1_FINAL, 0xFFF60040},     {CIPHER_ERR_PARAMETER, 0xFFF7A000},
      {CIPHER_ERR_SETUP, 0xFFF7B000},           {CIPHER_ERR_RUN, 0xFFF7C000},
      {CIPHER_ERR_DECRYPT, 0xFFF7D000},
  };
  // clang-format on
  for (const auto& [named, number] : numbers) EXPECT_EQ(named, number);
}

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
  EXPECT_EQ(made.make_info(given, words, room - 1), INFO_ERR_ARGUMENT);
  EXPECT_EQ(made.make_info(given, words + 1, room), INFO_ERR_ARGUMENT);
  EXPECT_EQ(made.make_info(given, 4 * words, room), INFO_ERR_ARGUMENT);
  EXPECT_EQ(made.make_info(some_bytes(room - 1), words, room), INFO_ERR_ARGUMENT);
  EXPECT_EQ(made.make_info(some_bytes(room + 1), words, room), INFO_ERR_ARGUMENT);
}

TYPED_TEST(Schemes, ChecksWipeWhatTheyRefuse) {
  using S = TypeParam;
  const Sealed<S> good;
  const Bytes info = bytes_of(good.context.publicKeyInfo);
  EXPECT_EQ(bytes_of(good.context.stage2PublicKey), slice(info, 0, info.size() - 20));  // stands in
  Sealed<S> tried = good;
  EXPECT_EQ(tried.check(), 0U);
  EXPECT_EQ(tried.context.funcPtrTable[0], sealwright::entry_word(tmkx_memcmp));
  tried = good;
  tried.code = Bytes();  // a null pointer
  EXPECT_EQ(tried.check(), CHECK_ERR_SHA1_IMAGE);
  for (const std::uint32_t length : {0U, 36 - S::efuse_length, S::efuse_length + 1}) {
    tried.efuse = some_bytes(length);
    EXPECT_EQ(tried.check(), CHECK_ERR_LENGTH);
    EXPECT_EQ(S::validate_info(tried.efuse.data(), length, &tried.context.publicKeyInfo),
              INFO_ERR_ARGUMENT);
  }
  EXPECT_EQ(bytes_of(tried.context.publicKeyInfo), info);
  tried.efuse = tried.hmac_key;
  EXPECT_EQ(tried.check(), INFO_ERR_MISMATCH);
  EXPECT_EQ(bytes_of(tried.context.publicKeyInfo), Bytes(info.size()));
  tried = good;
  ++tried.code[0];
  EXPECT_EQ(tried.check(), CHECK_ERR_SIGNATURE);
  EXPECT_EQ(bytes_of(tried.context.signature), Bytes(S::length));
  // Nothing covers the end, and no check reads it.
  const std::string magic = S::length == 256 ? "SB20_CONTEXT" : "SB10_CONTEXT";
  const Bytes all = bytes_of(good.context), fill(sizeof good.context.fill, 0xAA);
  const Bytes end = joined({}, magic, Bytes(4), fill);
  EXPECT_EQ(slice(all, all.size() - end.size(), end.size()), end);
  const std::uint8_t* list = good.list.data();
  EXPECT_EQ(S::generate(list, 9, nullptr, nullptr, 0, &tried.context), CONTEXT_ERR_SHA1_IMAGE);
  EXPECT_EQ(S::generate(list, 9, nullptr, list, 1, &tried.context), CONTEXT_ERR_SIGNING);
}

TEST(CodeEncryption, StandaloneHelpersTakeTheFiles) {
  const WorkingDirectory here;
  const Bytes info = some_bytes(288), plain = some_bytes(48);
  const Bytes iv = slice(sha1(slice(info, 0, 268)), 0, 16);
  Bytes key = slice(info, 268, 16);
  for (std::uint8_t& byte : key) byte ^= 0x5A;
  for (const std::size_t length : {19U, 20U, 21U}) {
    write_bytes("publicKeyInfo_V21.dat",
                padded(info, 200 * length));  // a longer file's end is ignored
    write_bytes("eFuseData_V21.dat", Bytes(length, 0x5A));
    const Status expected = length == 20 ? ZEB_SUCCESS : CIPHER_ERR_PARAMETER;
    Bytes code = padded(plain, 64);
    EXPECT_EQ(do_Encrypt(code.data(), 47), length == 20 ? CIPHER_ERR_RUN : expected);
    EXPECT_EQ(code, padded(plain, 64));
    EXPECT_EQ(do_Encrypt(code.data(), 48), expected);
    EXPECT_EQ(slice(code, 0, 48), length == 20 ? aes_cbc(true, key, iv, plain) : plain);
    EXPECT_EQ(do_Decrypt(code.data(), 48), expected);
    EXPECT_EQ(slice(code, 0, 48), plain);
    EXPECT_EQ(do_Decrypt(code.data(), 47), length == 20 ? CIPHER_ERR_DECRYPT : expected);
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
    EXPECT_EQ(do_PrivateKey_Encrypt(mode, bytes.data(), 1190), CIPHER_ERR_RUN);
    EXPECT_EQ(bytes, some_bytes(1200));
    EXPECT_EQ(do_PrivateKey_Decrypt(mode, bytes.data(), 1190), CIPHER_ERR_RUN);
  }
}

TEST(PrivateKeyFile, OldFormatHoldsSevenItemsInTheirSlots) {
  constexpr std::uint32_t slots[] = {128, 128, 64, 64, 64, 64, 64};
  for (int i = 0; i < 2 * 7; ++i) {  // all items as long as their slots, then one longer
    const bool fits = i % 2 == 0;
    Bytes record, expected = header_of("1.0, Priv, RSA-1024, CRT", 604), out(640);
    for (int k = 0; k < 7; ++k) {
      const std::uint32_t length = fits ? slots[k] : k == i / 2 ? slots[k] + 4 : 8;
      const Bytes item = joined(bytes_of(length), some_bytes(length));
      record = joined(record, item);
      expected = joined(expected, padded(item, 4 + slots[k]));
    }
    EXPECT_EQ(convert_To_OldPrivateKey(padded(record, 604).data(), 0, out.data()),
              fits ? ZEB_SUCCESS : CIPHER_ERR_SETUP);
    EXPECT_EQ(out, fits ? encrypted(1, expected) : Bytes(640));
  }
  Bytes out(640);
  EXPECT_EQ(convert_To_OldPrivateKey(Bytes(604, 0xFF).data(), 0, out.data()), CIPHER_ERR_SETUP);
}

template <typename Print>
std::string printed_by(Print print) {
  testing::internal::CaptureStdout();
  print();
  return testing::internal::GetCapturedStdout();
}

TEST(Dump, PrintsLinesOfBytesAndWholeRowsOfWords) {
  const Bytes bytes = parse_hex("0F1E2D3C4B5A69788796A5B4C3D2E1F0A5");
  const std::uint32_t words[] = {0, 0xDEADBEEF, 10, 1, 2, 3, 4, 0xFFFFFFFF};
  const std::string row = "0x00000000, 0xDEADBEEF, 0x0000000A, 0x00000001, \n";
  EXPECT_EQ(printed_by([&] {
              for (const int length : {0, 3, -3, -32, 17}) mem_dump(bytes.data(), length);
              for (const int count : {0, 1, 4, 5}) print_DWORD("words", words, count);
            }),
            "0F1E2D\n\n0F1E2D3C4B5A69788796A5B4C3D2E1F0\nA5\nwords\nwords\n" + row + "words\n" +
                row + "words\n" + row + "0x00000002, 0x00000003, 0x00000004, 0xFFFFFFFF, \n");
}

TEST(Files, EndsThatCommandsNeverMeet) {
  const WorkingDirectory here;
  write_bytes("file", some_bytes(10));
  sealwright::BlockReader reader("file");
  std::filesystem::resize_file("file", 9);
  EXPECT_EXIT(std::ignore = reader.next(10), testing::ExitedWithCode(255), "");
  write_bytes("file", some_bytes(10));
  Bytes read(11);
  EXPECT_EXIT(sealwright::read_whole_or_fail(read, "file"), testing::ExitedWithCode(255),
              "");  // it has shrunk
  const auto later = std::async(std::launch::async, [] {
    usleep(100'000);
    std::ofstream("file", std::ios::app) << 'x';
  });
  EXPECT_EQ(read_file("file", read.data(), 11), 0);  // keeps asking until then
  EXPECT_EQ(read, joined(some_bytes(10), Bytes{'x'}));
  std::filesystem::resize_file("file", (std::uintmax_t{1} << 31) - 1);  // all of it a hole
  EXPECT_EQ(get_file_length("file"), 0x7FFFFFFF);
  EXPECT_EQ(printed_by([] { EXPECT_EQ(write_file("/missing/file", nullptr, 0), 16); }),
            "file open error\n");
  EXPECT_EQ(write_file("file", read.data(), -1), 0);  // no byte at all
  EXPECT_EQ(read_bytes("file"), Bytes());
}

}  // namespace
