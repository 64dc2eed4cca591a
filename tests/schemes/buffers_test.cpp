// What the engines leave in the process-wide buffers, where callers of the library look for it.

#include <gtest/gtest.h>

#include "crypto/status.h"
#include "front/drivers.h"
#include "sb10/key_pair.h"
#include "sb10/key_store.h"
#include "sb10/public_key_info.h"
#include "sb10/stage1.h"
#include "sb20/key_pair.h"
#include "sb20/key_store.h"
#include "sb20/public_key_info.h"
#include "sb20/stage1.h"
#include "scheme/key_pair.h"
#include "scheme/private_key_file.h"
#include "scheme/status.h"
#include "tests/support/bytes.h"

namespace {

constexpr std::uint8_t stale = 0xEE;  // what a buffer holds before, to see what is left alone

void make_all_stale() {
  const WritableBytes buffers[] = {
      privateKey,
      publicKey,
      writable_view_of(sb20_Context),
      writable_view_of(sb10_pubkey_file),
      sb20_eFuseData,
      sb10_eFuseData,
      writable_view_of(sb10_Context),
      writable_view_of(sb10_privkey_file),
  };
  for (const WritableBytes buffer : buffers) std::ranges::fill(buffer, stale);
  privateKeyLen = publicKeyLen = sb20_eFuseDataLen = sb10_eFuseDataLen = stale;
}

/// The context that a generation leaves: the info alone is new.
template <typename Context>
Bytes context_around(const Bytes& info) {
  Bytes context(sizeof(Context), stale);
  std::ranges::copy(info, context.begin() + offsetof(Context, publicKeyInfo));
  return context;
}

Bytes decrypted(std::int32_t mode, Bytes file) {
  EXPECT_EQ(do_PrivateKey_Decrypt(mode, file.data(), length_of(file)), ZEB_SUCCESS);
  return file;
}

class Buffers : public testing::Test {
 protected:
  void SetUp() override { make_all_stale(); }

 private:
  const WorkingDirectory here_;
};

TEST_F(Buffers, HoldANewKeyOfScheme20) {
  struct Case {
    std::int32_t mode;
    const char *public_file, *private_file;
  };
  for (const Case& c : {Case{root_key_mode, "publicKeyInfo_V21.dat", "privateKey_V21.dat"},
                        Case{stage2_key_mode, "s_V21.spk", "s_V21.prv"}}) {
    make_all_stale();
    ASSERT_EQ(sb20_Generate_KeyPair(c.mode, "s"), ZEB_SUCCESS);
    const Bytes public_file = read_bytes(c.public_file);
    EXPECT_EQ(bytes_of(publicKey), padded(public_file, sizeof publicKey)) << c.public_file;
    EXPECT_EQ(bytes_of(privateKey), padded(read_bytes(c.private_file), sizeof privateKey));
    EXPECT_EQ(privateKeyLen, 1188U);
    EXPECT_EQ(bytes_of(sb20_Context), context_around<SB20_CONTEXT>(slice(public_file, 0, 288)));
    auto info = sb20_Context.publicKeyInfo;
    EXPECT_EQ(Validate_SB20_PublicKeyInfo(sb20_eFuseData, sb20_eFuseDataLen, &info), ZEB_SUCCESS);
  }
}

TEST_F(Buffers, HoldANewRootKeyOfScheme10) {
  ASSERT_EQ(sb10_Generate_KeyPair(root_key_mode, nullptr), ZEB_SUCCESS);
  const Bytes public_file = read_bytes("publicKeyInfo.dat");
  EXPECT_EQ(bytes_of(publicKey), joined(public_file, Bytes(sizeof publicKey - 280, stale)));
  EXPECT_EQ(publicKeyLen, 280U);
  EXPECT_EQ(bytes_of(privateKey), padded(read_bytes("privateKey.dat"), sizeof privateKey));
  EXPECT_EQ(privateKeyLen, 608U);
  EXPECT_EQ(bytes_of(sb10_Context), context_around<SB10_CONTEXT>(slice(public_file, 0, 152)));
  EXPECT_EQ(bytes_of(sb10_eFuseData), read_bytes("eFuseData.dat"));
  EXPECT_EQ(sb10_eFuseDataLen, 16U);
  EXPECT_EQ(bytes_of(sb10_pubkey_file), Bytes(308, stale));
  EXPECT_EQ(bytes_of(sb10_privkey_file), Bytes(640, stale));
}

TEST_F(Buffers, HoldANewPairOfScheme10) {
  ASSERT_EQ(sb10_Generate_KeyPair(stage2_key_mode, "s"), ZEB_SUCCESS);
  const Bytes private_file = read_bytes("s.prv");
  EXPECT_EQ(bytes_of(sb10_pubkey_file), read_bytes("s.spk"));
  EXPECT_EQ(bytes_of(sb10_privkey_file), private_file);
  const Bytes items = slice(decrypted(key_file_mode_sb10, private_file), 36, 604);
  EXPECT_EQ(bytes_of(privateKey), padded(items, sizeof privateKey));
  EXPECT_EQ(privateKeyLen, 604U);
  EXPECT_EQ(bytes_of(publicKey), Bytes(sizeof publicKey, stale));
  auto info = sb10_Context.publicKeyInfo;
  EXPECT_EQ(bytes_of(sb10_Context), context_around<SB10_CONTEXT>(bytes_of(info)));
  EXPECT_EQ(bytes_of(info.key.n), bytes_of(sb10_pubkey_file.n.number));
  EXPECT_EQ(Validate_SB10_PublicKeyInfo(sb10_eFuseData, sb10_eFuseDataLen, &info), ZEB_SUCCESS);
}

/// A scheme as -VERIFY sees it.
struct Verification {
  std::int32_t (*main)(int count, sealwright::Arguments arguments);
  Status (*generate_keys)(std::int32_t mode, const char* base_name);
  std::function<Status(std::uint8_t* code, std::uint32_t length)> seal;
  const char *public_file, *stage2_key, *efuse_file;
  ByteView context;
  std::size_t info_at, info_length, signature_at, signature_length;
};

/// The context that -VERIFY leaves; it fails but for `status` 0.
Bytes verified(const Verification& scheme, const Bytes& image, std::int32_t status) {
  write_bytes("bl1", image);
  make_all_stale();
  const char* words[] = {"tool", scheme.main == sb20_main ? "-v2.1" : "-v1.1", "bl1",
                         scheme.efuse_file, "-VERIFY"};
  testing::internal::CaptureStdout();
  EXPECT_EQ(scheme.main(5, words), status);
  testing::internal::GetCapturedStdout();
  Bytes left(scheme.context.begin(), scheme.context.end());
  return left;
}

TEST_F(Buffers, HoldTheContextThatWasVerified) {
  const Verification verifications[] = {
      {sb20_main, sb20_Generate_KeyPair, sb20_Generate_Stage1, "s_V21.spk",
       "publicKeyInfo_V21_stage2.dat", "eFuseData_V21.dat", view_of(sb20_Context), 528, 288, 272,
       256},
      {sb10_main, sb10_Generate_KeyPair, sb10_Generate_Stage1, "s.spk", "stage2_key.spk",
       "eFuseData.dat", view_of(sb10_Context), 260, 152, 132, 128},
  };
  for (const Verification& scheme : verifications) {
    ASSERT_EQ(scheme.generate_keys(root_key_mode, nullptr), ZEB_SUCCESS);
    ASSERT_EQ(scheme.generate_keys(stage2_key_mode, "s"), ZEB_SUCCESS);
    std::filesystem::copy_file(scheme.public_file, scheme.stage2_key);
    Bytes code = padded(some_bytes(48), 48 + 1024);
    testing::internal::CaptureStdout();
    ASSERT_EQ(scheme.seal(code.data(), 48), ZEB_SUCCESS);
    testing::internal::GetCapturedStdout();
    const Bytes context(scheme.context.begin(), scheme.context.end());
    Bytes image = joined(slice(code, 0, 48), context);
    EXPECT_EQ(verified(scheme, image, 0), context);

    const auto without = [&](std::size_t at, std::size_t length) {
      Bytes wiped = context;
      std::fill_n(wiped.begin() + static_cast<std::ptrdiff_t>(at), length, std::uint8_t{0});
      return wiped;
    };
    ++image[0];
    EXPECT_EQ(verified(scheme, image, -1), without(scheme.signature_at, scheme.signature_length));
    EXPECT_EQ(verified(scheme, slice(image, 0, context.size() - 1), -1), Bytes(context.size()));
    write_bytes(scheme.efuse_file, Bytes(20));
    EXPECT_EQ(verified(scheme, image, -1), without(scheme.info_at, scheme.info_length));
  }
}

// A signature that is none by its length is kept; one that could be one is wiped.
TEST_F(Buffers, HoldAProofOfNoUsableLength) {
  Sb10PublicKeyFile file = {};
  std::ranges::fill(file.signature, stale);
  for (const std::uint32_t length : {128U, 256U, 0U, 200U}) {
    const bool usable = length == 128 || length == 256;
    file.signature_length = length;
    write_bytes("stage2_key.spk", bytes_of(file));
    testing::internal::CaptureStdout();
    EXPECT_EQ(sb10_Generate_Stage1(nullptr, 0),
              usable ? VERIFY_ERR_RSA : VERIFY_ERR_SIGNATURE_LENGTH);
    testing::internal::GetCapturedStdout();
    EXPECT_EQ(bytes_of(sb10_pubkey_file.signature), Bytes(128, usable ? 0 : stale)) << length;
  }
}

TEST_F(Buffers, HoldNoOlderContextWhenTheRootKeyCannotBeDecrypted) {
  ASSERT_EQ(sb20_Generate_KeyPair(stage2_key_mode, "s"), ZEB_SUCCESS);
  std::filesystem::rename("s_V21.spk", "publicKeyInfo_V21_stage2.dat");
  write_bytes("privateKey_V21.dat", Bytes(1190));
  EXPECT_EQ(sb20_Generate_Stage1(nullptr, 0), CIPHER_ERR_RUN);
  EXPECT_EQ(bytes_of(sb20_Context), Bytes(sizeof sb20_Context));
  EXPECT_EQ(privateKeyLen, 1190U);
  // Scheme 1.1 goes on with what it has.
  write_bytes("privateKey.dat", Bytes(610));
  EXPECT_EQ(sealwright::load_sb10_root_private_key().size(), 606U);
  EXPECT_EQ(privateKeyLen, 606U);
}

}  // namespace
