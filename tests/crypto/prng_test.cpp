#include "crypto/prng.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>

#include "crypto/bytes.h"
#include "tests/support/generator.h"
#include "tests/support/openssl_util.h"
#include "tests/support/test_bytes.h"

namespace {

/// The generator between two re-seeds, one byte stream, computed a second time on OpenSSL's SHA-1.
struct Model {
  Bytes secret{sabSecretState, sabSecretState + prng_block_length};
  Bytes pool{sabRandPool, sabRandPool + prng_block_length};
  std::uint32_t index = uIndexRandPool;
  std::uint32_t count = suCount;

  void hash_into(Bytes& half_of, std::size_t half) {
    Bytes input = secret;
    input.insert(input.end(), pool.begin(), pool.end());
    std::ranges::copy(sha1(input), half_of.begin() + static_cast<std::ptrdiff_t>(20 * half));
  }
  void make_block() {
    hash_into(pool, 0);
    hash_into(pool, 1);
    hash_into(secret, count++ % 2);
    index = 0;
  }
  Bytes draw(std::uint32_t length) {
    Bytes output;
    if (length == 0 && index == prng_block_length) make_block();
    while (output.size() < length) {
      if (index == prng_block_length) make_block();
      output.push_back(pool[index++]);
    }
    return output;
  }
  bool operator==(const Model&) const = default;
};

Bytes draw(std::uint32_t length) {
  Bytes bytes(length + 1, 0xEE);
  EXPECT_EQ(ZEB_SHA1_PRNG_Rand(length, bytes.data()), ZEB_SUCCESS);
  EXPECT_EQ(bytes.back(), 0xEE);
  bytes.pop_back();
  return bytes;
}

TEST(Prng, OutputAndStateFollowTheAlgorithm) {
  std::mt19937_64 engine(14);
  for (std::uint8_t seed = 0; seed < 40; ++seed) {
    set_generator(seed);
    Model model;
    while (suCount < 28) {
      const auto length = static_cast<std::uint32_t>(engine() % 5 == 0 ? 0 : engine() % 130);
      EXPECT_EQ(draw(length), model.draw(length));
      EXPECT_TRUE(Model() == model) << length;
    }
  }
}

TEST(Prng, TestsForAReseedOncePerCall) {
  set_generator(2);
  Model model;
  const std::uint32_t collections = xx;
  EXPECT_EQ(draw(45 * prng_block_length), model.draw(45 * prng_block_length));
  EXPECT_TRUE(Model() == model);  // 45 blocks without a re-seed
  EXPECT_NE(draw(20), model.draw(20));
  EXPECT_EQ(suCount, 1U);
  suCount = prng_blocks_per_seed;
  draw(0);  // seeds, but leaves the pool alone
  EXPECT_EQ(suCount, 0U);
  EXPECT_EQ(uIndexRandPool, 20U);
  EXPECT_EQ(xx, collections + 2);
}

TEST(Prng, AddedSeedReseedsAndLeavesThePool) {
  set_generator(3);
  draw(7);
  const Bytes seed(100, 0x33);
  for (const auto& [bytes, length] : {std::pair{seed.data(), 100U}, {nullptr, 0U}}) {
    Model expected;
    EXPECT_EQ(ZEB_SHA1_PRNG_Rand(0, nullptr), 0xFFFF0010U);
    EXPECT_EQ(ZEB_SHA1_PRNG_AddSeed(nullptr, 1), 0xFFFF0010U);
    EXPECT_TRUE(Model() == expected);
    EXPECT_EQ(ZEB_SHA1_PRNG_AddSeed(bytes, length), ZEB_SUCCESS);
    EXPECT_NE(Model().secret, expected.secret);
    expected.secret = Model().secret;
    expected.count = 0;
    EXPECT_TRUE(Model() == expected);
  }
}

constexpr std::uint32_t noise_length = 256;  // of what file, device, rand() and kernel give
constexpr std::uint32_t clock_and_usage = 8 + sizeof(rusage);
/// A ring that all sources fit into, so that each can be told by where it stands.
constexpr std::uint32_t wide_ring = 4 * noise_length + clock_and_usage;

/// Collects noise into a zeroed ring and takes away rand()'s part, which starts at `offset` and
/// goes on around the ring, under the seed that counts the collections.
Bytes noise_without_rand(std::uint32_t ring_length, std::uint32_t offset) {
  Bytes ring(ring_length);
  const std::uint32_t collections = xx;
  zeb_GetNoise(ring.data(), ring_length);
  EXPECT_EQ(xx, collections + 1);
  srand(collections);
  for (std::uint32_t i = 0; i < noise_length; ++i) {
    ring[(offset + i) % ring_length] ^= static_cast<std::uint8_t>(rand());
    rand();
    rand();
  }
  return ring;
}

/// Checks that noise.dat takes up `length` bytes of the noise, all of them zero.
void expect_file_noise(std::uint32_t length) {
  const std::uint32_t random_at = length + noise_length + clock_and_usage;
  const Bytes ring = noise_without_rand(wide_ring, random_at);
  EXPECT_EQ(std::count(ring.begin(), ring.begin() + length, 0), std::ptrdiff_t{length});
  EXPECT_LT(std::count(ring.begin() + length, ring.begin() + length + noise_length, 0), 20);
  const auto kernel = ring.begin() + random_at + noise_length;
  EXPECT_EQ(Bytes(ring.begin() + random_at, kernel), Bytes(noise_length));
  EXPECT_LT(std::count(kernel, kernel + noise_length, 0), 20);
  EXPECT_EQ(Bytes(kernel + noise_length, ring.end()), Bytes(noise_length - length));
}

/// Runs in a fresh working directory.
class Noise : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(mkdtemp(directory_.data()), nullptr);
    std::filesystem::current_path(directory_);
  }
  void TearDown() override {
    std::filesystem::current_path(before_);
    std::filesystem::remove_all(directory_);
  }

 private:
  const std::filesystem::path before_ = std::filesystem::current_path();
  std::string directory_ = std::filesystem::temp_directory_path() / "noise-XXXXXX";
};

TEST_F(Noise, FileContentsNeverReachTheState) {
  expect_file_noise(0);  // no file
  for (const std::uint32_t length : {0U, 100U, 255U, 256U, 300U, 1000000U}) {
    std::ofstream("noise.dat") << std::string(length, 'n');
    expect_file_noise(length < noise_length ? 0 : noise_length);
  }
}

TEST_F(Noise, DirectoriesAndPipesNeitherHangNorHarm) {
  std::filesystem::create_directory("noise.dat");
  Bytes secret(prng_block_length);
  zeb_GetNoise(secret.data(), prng_block_length);
  std::filesystem::remove("noise.dat");
  ASSERT_EQ(mkfifo("noise.dat", 0600), 0);
  expect_file_noise(0);  // nobody writes to it
}

// With no file and no kernel, clock, usage record and rand() remain; a small ring they go around.
TEST_F(Noise, WorksWithoutFiles) {
  rlimit files;
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &files), 0);
  const rlimit none = {0, files.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  EXPECT_TRUE(random_source_available());  // the kernel's generator needs no file
  kernel_random_blocked = true;
  EXPECT_FALSE(random_source_available());
  const auto before = static_cast<std::uint32_t>(time(nullptr));
  const Bytes ring = noise_without_rand(clock_and_usage, clock_and_usage);
  EXPECT_LE(load_le32(&ring[0]) - before, 60U);  // seconds, then microseconds
  EXPECT_LT(load_le32(&ring[4]), 1000000U);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &files), 0);
  EXPECT_TRUE(random_source_available());  // the device alone will do as well
  kernel_random_blocked = false;
}

}  // namespace
