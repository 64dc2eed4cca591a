// Runs the suite on the paths that the processor has or, with --portable, with all of them masked
// off.

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

#include "crypto/aes_blocks.h"
#include "crypto/bn_words.h"
#include "crypto/cpu.h"
#include "crypto/sha1_blocks.h"

namespace {

bool masked = false;

TEST(Paths, TheOnesAskedForAreInForce) {
  const CryptoPaths available = available_crypto_paths();
  EXPECT_EQ(crypto_paths().sha1, available.sha1 && !masked);
  EXPECT_EQ(crypto_paths().aes, available.aes && !masked);
  EXPECT_EQ(crypto_paths().bn, available.bn && !masked);
  const std::vector<Digit> modulus(32, 0xFFFFFFFF);
  EXPECT_EQ(bn_words_take(modulus.data(), 32), available.bn && !masked);
  EXPECT_FALSE(bn_words_take(modulus.data(), 31));
}

TEST(Paths, BlocksComeOutAlike) {
  const CryptoPaths available = available_crypto_paths();
  std::vector<std::uint8_t> data(64 * 21 + 1);
  for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<std::uint8_t>(i * i >> 3);
  for (const std::size_t blocks : {1, 7, 8, 9, 21}) {
    std::vector<std::uint32_t> hashes[2] = {{1, 2, 3, 4, 5}, {1, 2, 3, 4, 5}};
    sha1_compress_blocks_portable(hashes[0].data(), &data[1], blocks);
    if (available.sha1) {
      sha1_compress_blocks_x86(hashes[1].data(), &data[1], blocks);
      EXPECT_EQ(hashes[0], hashes[1]);
    }
    for (const std::uint32_t key_length : {16U, 24U, 32U}) {
      AesKeySchedule encryption;
      AesKeySchedule decryption;
      _AES_KeySchedule(data.data(), key_length, &encryption, &decryption);
      std::vector<std::uint8_t> chains[2] = {std::vector<std::uint8_t>(16, 9),
                                             std::vector<std::uint8_t>(16, 9)};
      std::vector<std::uint8_t> out[2] = {std::vector<std::uint8_t>(16 * blocks),
                                          std::vector<std::uint8_t>(16 * blocks)};
      if (!available.aes) continue;
      aes_cbc_encrypt_blocks_portable(encryption, chains[0].data(), &data[1], out[0].data(),
                                      blocks);
      aes_cbc_encrypt_blocks_x86(encryption, chains[1].data(), &data[1], out[1].data(), blocks);
      EXPECT_EQ(out[0], out[1]);
      aes_cbc_decrypt_blocks_portable(decryption, chains[0].data(), out[0].data(), blocks);
      aes_cbc_decrypt_blocks_x86(decryption, chains[1].data(), out[1].data(), blocks);
      EXPECT_EQ(out[0], out[1]);
      EXPECT_EQ(chains[0], chains[1]);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  masked = argc > 1 && std::string_view(argv[1]) == "--portable";
  if (masked) force_crypto_paths({});
  return RUN_ALL_TESTS();
}
