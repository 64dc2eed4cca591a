#include "sb20/code_encryption.h"

#include "sb20/stage1.h"
#include "tests/support/binding_tests.h"

namespace {

class CodeEncryption : public testing::Test {
 protected:
  using Cipher = decltype(Encrypt_Code);

  /// Applies a cipher to `code` with room for a block behind it.
  Status apply(Cipher* cipher, Bytes& code, const Bytes& fuses) const {
    const std::uint32_t length = length_of(code);
    code.resize(length + 16);
    const Status status = cipher(fuses.data(), length_of(fuses), &context, code.data(), length);
    code.resize(length);
    return status;
  }
  void SetUp() override { std::memcpy(&context.publicKeyInfo, info.data(), info.size()); }

  SB20_CONTEXT context = {};
  const Bytes info = counted_bytes(288), efuse = Bytes(20, 0x5A);
};

TEST_F(CodeEncryption, IsAesCbcOverWholeBlocks) {
  for (const std::size_t length : {0, 1, 15, 16, 17, 32, 100, 4096}) {
    const bool is_whole = length % 16 == 0;
    Bytes code = counted_bytes(length);
    ASSERT_EQ(apply(Encrypt_Code, code, efuse), is_whole ? 0 : 0xFFF7C000) << length;
    EXPECT_EQ(is_whole ? open_code(info, efuse, code) : code, counted_bytes(length));
    ASSERT_EQ(apply(Decrypt_Code, code, efuse), is_whole ? 0 : 0xFFF7D000) << length;
    if (is_whole) {
      EXPECT_EQ(code, counted_bytes(length));
    }
  }
}

TEST_F(CodeEncryption, KeyDependsOnTheFirstSixteenEfuseBytes) {
  Bytes sealed = counted_bytes(64);
  ASSERT_EQ(apply(Encrypt_Code, sealed, efuse), 0U);
  for (std::size_t i = 0; i < efuse.size(); ++i) {
    Bytes other_efuse = efuse, opened = sealed;
    other_efuse[i] ^= 1;
    EXPECT_EQ(apply(Decrypt_Code, opened, other_efuse), 0U);
    EXPECT_EQ(opened == counted_bytes(64), i >= 16) << i;
  }
}

TEST_F(CodeEncryption, RefusesBadParameters) {
  Bytes out(16), code(16);
  const struct {
    std::uint8_t *key, *iv;
    std::uint32_t efuse_length, key_length, iv_length;
    Status status;
  } cases[] = {{out.data(), out.data(), 20, 16, 16, 0},
               {nullptr, out.data(), 20, 16, 16, 0xFFF7A000},
               {out.data(), nullptr, 20, 16, 16, 0xFFF7A000},
               {out.data(), out.data(), 16, 16, 16, 0xFFF7A000},
               {out.data(), out.data(), 20, 32, 16, 0xFFF7A000},
               {out.data(), out.data(), 20, 16, 20, 0xFFF7A000}};
  for (const auto& c : cases) {
    EXPECT_EQ(Make_AES_Param(efuse.data(), c.efuse_length, &context, c.key, &c.key_length, c.iv,
                             &c.iv_length),
              c.status);
  }
  EXPECT_EQ(apply(Encrypt_Code, code, Bytes(16)), 0xFFF7A000);
  EXPECT_EQ(apply(Decrypt_Code, code, Bytes(16)), 0xFFF7A000);
}

TEST_F(CodeEncryption, StandaloneHelpersTakeTheFiles) {
  const WorkingDirectory here;
  for (const std::size_t behind : {0, 260, 4000}) {  // what follows the info does not matter
    write_bytes("publicKeyInfo_V21.dat", joined(info, counted_bytes(behind)));
    for (const std::size_t length : {0, 19, 20, 21, 64}) {
      write_bytes("eFuseData_V21.dat", Bytes(length, 0x5A));
      Bytes code = joined(counted_bytes(48), Bytes(16));
      const Status expected = length == 20 ? 0 : 0xFFF7A000;
      ASSERT_EQ(do_Encrypt(code.data(), 48), expected);
      const Bytes sealed = slice(code, 0, 48);
      EXPECT_EQ(length == 20 ? open_code(info, efuse, sealed) : sealed, counted_bytes(48));
      ASSERT_EQ(do_Decrypt(code.data(), 48), expected);
      EXPECT_EQ(slice(code, 0, 48), counted_bytes(48));
    }
  }
}

}  // namespace
