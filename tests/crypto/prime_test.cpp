#include "crypto/prime.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>

#include "tests/support/generator.h"
#include "tests/support/numbers.h"
#include "tests/support/rsa_keys.h"

namespace {

bool is_taken_as_prime(const Number& number) {
  const Status status = ZEB_MillerRabin(number.data(), width_of(number));
  EXPECT_TRUE(status == ZEB_SUCCESS || status == 0xFFFF0000);
  return status == ZEB_SUCCESS;
}

// Primes 2^bits - below; the Mersenne primes among them do not fill their digits.
TEST(Prime, TestsOneBaseMoreThanTheTableSays) {
  struct {
    std::uint32_t bits, below, bases;
  } constexpr cases[] = {
      {32, 5, 36},    {61, 1, 36},    {96, 17, 36},   {127, 1, 26},       {160, 47, 22},
      {192, 237, 22}, {224, 63, 18},  {256, 189, 14}, {512, 569, 9},      {521, 1, 9},
      {607, 1, 7},    {1024, 105, 6}, {1279, 1, 4},   {2048, 1942289, 4},
  };
  for (const auto& c : cases) {
    const std::uint32_t digits = (c.bits + digit_bits - 1) / digit_bits;
    const Big prime = power(2, c.bits, Big::unit(digits + 1)) - c.below;
    ASSERT_TRUE(prime.is_prime()) << c.bits;
    set_generator(5);
    EXPECT_TRUE(is_taken_as_prime(prime.digits(digits))) << c.bits;
    EXPECT_EQ(bytes_drawn(), c.bases * digit_bytes * digits) << c.bits;
  }
}

// Primes that divide an entry of the screening table are refused without drawing a base. A base is
// not reduced first, so a small prime can meet a multiple of itself and be refused by chance.
TEST(Prime, ScreensByTheTableAndLeavesTheRestToTheBases) {
  const std::set<Digit> screened = {3,   5,   7,   11,  13,  31,  37,  43,  47,  53,  59,
                                    61,  67,  71,  73,  79,  83,  101, 199, 211, 223, 227,
                                    229, 233, 239, 241, 293, 521, 613, 757, 773};
  std::set<Digit> accepted;
  for (Digit number = 0; number < 1000; ++number) {
    set_generator(static_cast<std::uint8_t>(number));
    if (is_taken_as_prime({number})) accepted.insert(number);
    const auto divides = [&](Digit prime) { return number % prime == 0; };
    const bool needs_no_base =
        number < 2 || number % 2 == 0 || std::any_of(screened.begin(), screened.end(), divides);
    EXPECT_EQ(bytes_drawn() == 0, needs_no_base) << number;
  }
  for (const Digit number : accepted) EXPECT_TRUE(Big(number).is_prime()) << number;
  EXPECT_TRUE(accepted.contains(89));
  EXPECT_GT(accepted.size(), 90U);
  EXPECT_FALSE(is_taken_as_prime({}));
  EXPECT_FALSE(is_taken_as_prime({1, 0, 0}));
  EXPECT_FALSE(is_taken_as_prime((Big(0xFFFFFFFB) * Big(0xFFFFFFEF)).digits(2)));
}

TEST(Prime, GeneratesWithBit28SetAndGivesUpWithoutDigits) {
  int top_bit_clear = 0;
  for (std::uint8_t seed = 0; seed < 16; ++seed) {
    Number prime(1 + seed % 2);
    set_generator(seed);
    ASSERT_EQ(ZEB_Gen_Prime(prime.data(), width_of(prime)), ZEB_SUCCESS);
    EXPECT_TRUE(Big(prime).is_prime()) << Big(prime);
    EXPECT_NE(prime.back() & 0x10000000, 0U);
    top_bit_clear += (prime.back() & digit_top_bit) == 0 ? 1 : 0;
  }
  EXPECT_GT(top_bit_clear, 0);
  EXPECT_EQ(ZEB_Gen_Prime(nullptr, 0), 0xFFFF0000U);
}

/// Makes a key and compares it with OpenSSL's arithmetic on the same primes.
void expect_sound_key(std::uint32_t bits, Digit e) {
  ZEB_RSA_PRIVATE_KEY key = {};
  key.e[0] = e;
  key.eWords = 1;
  ASSERT_EQ(ZEB_RSA_KeyGen(&key, bits), ZEB_SUCCESS);
  const Big p(key.p, key.pWords);
  const Big q(key.q, key.qWords);
  EXPECT_TRUE(p.is_prime() && q.is_prime() && q < p) << p << ", " << q;
  EXPECT_NE(key.n[bits / digit_bits - 1] & digit_top_bit, 0U);
  const ZEB_RSA_PRIVATE_KEY expected = make_key_record(p, q, e, bits);
  EXPECT_EQ(std::memcmp(&key, &expected, sizeof key), 0) << p << ", " << q;
}

TEST(KeyGeneration, KeysAreSound) {
  for (const std::uint32_t bits : {128U, 192U, 256U, 320U}) expect_sound_key(bits, 3);
  expect_sound_key(128, 65537);
  expect_sound_key(1024, 65537);
  expect_sound_key(2048, 3);
}

TEST(KeyGeneration, RandomExponentHasFullWidth) {
  ZEB_RSA_PRIVATE_KEY key = {};
  ASSERT_EQ(ZEB_RSA_KeyGen(&key, 128), ZEB_SUCCESS);
  EXPECT_EQ(key.eWords, 4U);
  EXPECT_EQ(key.e[3] & digit_top_bit, 0U);
  EXPECT_EQ(Big(key.n, 4), Big(key.p, 2) * Big(key.q, 2));
}

TEST(KeyGeneration, RefusesBitCountsAndLeavesTheRecord) {
  ZEB_RSA_PRIVATE_KEY untouched;
  std::memset(&untouched, 0x5A, sizeof untouched);
  for (const std::uint32_t bits : {1000U, 1U, 2047U, 0U, 64U, 2080U, 0xFFFFFFE0U}) {
    ZEB_RSA_PRIVATE_KEY key = untouched;
    EXPECT_EQ(ZEB_RSA_KeyGen(&key, bits), 0xFFFF0020U) << bits;
    EXPECT_EQ(std::memcmp(&key, &untouched, sizeof key), 0) << bits;
  }
}

}  // namespace
