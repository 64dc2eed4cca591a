#include "crypto/prng.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>

#include <cstring>

#include "tests/support/keys.h"

static const Bytes frozen_usage = some_bytes(sizeof(rusage));

// The linker gives the library these for the real ones, so that tests know what it stirs in.
extern "C" int __wrap_gettimeofday(timeval* time, void* /*zone*/) {  // NOLINT: named by the linker
  *time = {0x01020304, 0x00050607};
  return 0;
}
extern "C" int __wrap_getrusage(int /*who*/, rusage* usage) {  // NOLINT: named by the linker
  std::memcpy(usage, frozen_usage.data(), sizeof *usage);
  return 0;
}

namespace {

constexpr std::uint32_t noise_length = 256;  // of what file, device, rand() and kernel give

/// What clock, usage record and rand() give to the next collection.
Bytes known_noise() {
  Bytes noise = joined({4, 3, 2, 1, 7, 6, 5, 0}, frozen_usage);
  srand(xx);
  for (std::uint32_t i = 0; i < noise_length; ++i) {
    noise.push_back(static_cast<std::uint8_t>(rand()));
    rand();
    rand();
  }
  return noise;
}

/// The generator, one byte stream, computed a second time on OpenSSL's SHA-1.
struct Model {
  Bytes secret{sabSecretState, sabSecretState + prng_block_length};
  Bytes pool{sabRandPool, sabRandPool + prng_block_length};
  std::uint32_t index = uIndexRandPool, count = suCount;

  static void set_half(Bytes& bytes, std::uint32_t which, const Bytes& hashed) {
    std::ranges::copy(sha1(hashed), bytes.begin() + 20 * which);
  }
  /// Where no file is to be had.
  void seed() {
    const Bytes noise = known_noise();
    for (std::size_t i = 0; i < noise.size(); ++i) secret[i % secret.size()] ^= noise[i];
    for (const std::uint32_t half : {0U, 1U}) set_half(secret, half, secret);
    count = 0;
  }
  void make_block() {
    for (const std::uint32_t half : {0U, 1U}) set_half(pool, half, joined(secret, pool));
    set_half(secret, count++ % 2, joined(secret, pool));
    index = 0;
  }
  /// One test for a re-seed a call, however many blocks it takes.
  Bytes draw(std::uint32_t length) {
    if (count >= 32) seed();
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

TEST(Prng, OutputAndStateFollowTheAlgorithm) {
  const WorkingDirectory without_a_noise_file;
  std::mt19937_64 engine(14);
  Model model;
  const auto expect_same = [&](std::uint32_t length) {
    const Bytes expected = joined(model.draw(length), Bytes{0xEE});
    Bytes bytes(length + 1, 0xEE);
    ASSERT_EQ(ZEB_SHA1_PRNG_Rand(length, bytes.data()), ZEB_SUCCESS);
    ASSERT_EQ(bytes, expected) << length;
    ASSERT_EQ(ZEB_SHA1_PRNG_Rand(0, nullptr), ZEB_ERR_NULL_POINTER);
    ASSERT_EQ(ZEB_SHA1_PRNG_AddSeed(nullptr, 1), ZEB_ERR_NULL_POINTER);
    ASSERT_TRUE(Model() == model) << length;
  };
  random_device_blocked = kernel_random_blocked = true;
  for (std::uint8_t seed = 0; seed < 20; ++seed) {
    set_generator(seed);
    model = Model();
    for (int i = 0; i < 40; ++i) {
      expect_same(static_cast<std::uint32_t>(engine() % 5 == 0 ? 0 : engine() % 130));
    }
    expect_same(45 * prng_block_length);
    const Bytes more = some_bytes(seed * 5U);
    for (std::size_t i = 0; i < more.size(); ++i) model.secret[i % 40] ^= more[i];
    model.seed();
    EXPECT_EQ(ZEB_SHA1_PRNG_AddSeed(more.data(), length_of(more)), ZEB_SUCCESS);
    expect_same(20);
  }
  random_device_blocked = kernel_random_blocked = false;
}

/// Checks that noise.dat takes up `length` bytes of the noise, all of them zero.
void expect_file_noise(std::uint32_t length) {
  const Bytes known = known_noise();
  Bytes ring(length + 2 * noise_length + known.size());
  zeb_GetNoise(ring.data(), length_of(ring));
  EXPECT_EQ(slice(ring, 0, length), Bytes(length));
  for (const std::size_t at : {std::size_t{length}, ring.size() - noise_length}) {
    const Bytes random = slice(ring, at, noise_length);  // of the device and of the kernel
    EXPECT_LT(std::count(random.begin(), random.end(), 0), 20);
  }
  EXPECT_EQ(slice(ring, length + noise_length, known.size()), known);
}

TEST(Noise, FileContentsNeverReachTheState) {
  const WorkingDirectory here;
  expect_file_noise(0);  // no file
  for (const std::uint32_t length : {0U, 100U, 255U, 256U, 300U, 1000000U}) {
    write_bytes("noise.dat", Bytes(length, 'n'));
    expect_file_noise(length < noise_length ? 0 : noise_length);
  }
  std::filesystem::remove("noise.dat");
  ASSERT_EQ(mkfifo("noise.dat", 0600), 0);
  expect_file_noise(0);  // nobody writes to it, and nothing waits
}

}  // namespace
