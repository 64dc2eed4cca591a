// Runs the suite on the paths that the processor has or, with --portable, with all of them masked
// off.

#include <gtest/gtest.h>

#include <string_view>

#include "crypto/cpu.h"

namespace {

bool masked = false;

TEST(Paths, TheOnesAskedForAreInForce) {
  const CryptoPaths available = available_crypto_paths();
  EXPECT_EQ(crypto_paths().sha1, available.sha1 && !masked);
  EXPECT_EQ(crypto_paths().aes, available.aes && !masked);
  EXPECT_EQ(crypto_paths().bn_words, available.bn_words && !masked);
  EXPECT_EQ(crypto_paths().bn_rows, available.bn_rows && !masked);
}

}  // namespace

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  masked = argc > 1 && std::string_view(argv[1]) == "--portable";
  if (masked) force_crypto_paths({});
  return RUN_ALL_TESTS();
}
