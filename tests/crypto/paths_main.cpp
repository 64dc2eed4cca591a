// Runs the suite on the paths that the processor has or, with --portable, with all of them masked
// off.

#include <gtest/gtest.h>

#include <string_view>

#include "crypto/cpu.h"
#include "tests/support/bytes.h"

namespace {

bool masked = false;

TEST(Paths, TheOnesAskedForAreInForce) {
  const CryptoPaths expected = masked ? CryptoPaths{} : sealwright::available_crypto_paths();
  EXPECT_EQ(bytes_of(sealwright::crypto_paths()), bytes_of(expected));
}

}  // namespace

int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  masked = argc > 1 && std::string_view(argv[1]) == "--portable";
  if (masked) sealwright::force_crypto_paths({});
  return RUN_ALL_TESTS();
}
