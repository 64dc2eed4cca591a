#include "crypto/prime.h"

#include <gtest/gtest.h>

#include "crypto/rsa_keygen.h"
#include "tests/support/keys.h"

namespace {

bool is_taken_as_prime(const Number& number) {
  return ZEB_MillerRabin(number.data(), width_of(number)) == ZEB_SUCCESS;
}

/// Bytes drawn since set_generator, up to 32 blocks.
std::uint32_t bytes_drawn() {
  return suCount * prng_block_length - (prng_block_length - uIndexRandPool);
}

TEST(Prime, TestsOneBaseMoreThanTheTableSays) {
  for (const auto& row : read_vectors("prime")) {
    const std::uint64_t bits = from_big_endian(row[0]);
    const std::uint64_t digits = (bits + digit_bits - 1) / digit_bits;
    const Big prime = power(2, bits, Big::unit(digits + 1)) - reversed(row[1]);
    set_generator(5);
    EXPECT_TRUE(is_taken_as_prime(prime.digits(digits))) << bits;
    EXPECT_EQ(bytes_drawn(), row[2][0] * digit_bytes * digits) << bits;
  }
}

// Primes that divide an entry of the screening table are refused without drawing a base. A base is
// not reduced first, so a small prime can meet a multiple of itself and be refused by chance.
TEST(Prime, ScreensByTheTableAndLeavesTheRestToTheBases) {
  const std::vector<Bytes> screened = read_vectors("screened").at(0);
  int accepted = 0;
  for (Digit number = 0; number < 1000; ++number) {
    set_generator(static_cast<std::uint8_t>(number));
    if (is_taken_as_prime({number})) {
      ++accepted;
      EXPECT_TRUE(Big(number).is_prime()) << number;
    }
    const auto divides = [&](const Bytes& prime) { return number % from_big_endian(prime) == 0; };
    const bool needs_no_base =
        number < 2 || number % 2 == 0 || std::any_of(screened.begin(), screened.end(), divides);
    EXPECT_EQ(bytes_drawn() == 0, needs_no_base) << number;
  }
  EXPECT_GT(accepted, 90);
  EXPECT_FALSE(is_taken_as_prime({}) || is_taken_as_prime({1, 0, 0}));
}

// Every base that shares no factor with this number meets Fermat's little theorem.
TEST(Prime, RefusesACarmichaelNumber) {
  const Big carmichael =
      reversed(parse_hex("c94517870c6d51fddb8d0505832b0075bf6fd0611afaeecb8a5d9fe0a258ff31"));
  ASSERT_EQ(power(2, carmichael - 1, carmichael), Big(1));
  EXPECT_FALSE(is_taken_as_prime(carmichael.digits(8)));
}

TEST(Prime, GeneratesWithBit28SetAndGivesUpWithoutDigits) {
  Digit common = 0xFFFFFFFF;
  for (std::uint8_t seed = 0; seed < 16; ++seed) {
    Number prime(1 + seed % 2);
    set_generator(seed);
    ASSERT_EQ(ZEB_Gen_Prime(prime.data(), width_of(prime)), ZEB_SUCCESS);
    EXPECT_TRUE(Big(prime).is_prime());
    common &= prime.back() & 0xF0000000;
  }
  EXPECT_EQ(common, 0x10000000U);
  EXPECT_EQ(ZEB_Gen_Prime(nullptr, 0), ZEB_ERR_FAIL);
}

ZEB_RSA_PRIVATE_KEY generate(std::uint32_t bits, Digit e) {
  ZEB_RSA_PRIVATE_KEY key = {};
  key.e[0] = e;
  key.eWords = e == 0 ? 0 : 1;
  EXPECT_EQ(ZEB_RSA_KeyGen(&key, bits), ZEB_SUCCESS);
  EXPECT_NE(key.n[bits / digit_bits - 1] & digit_top_bit, 0U);
  return key;
}

/// The primes of a key as the stream gives them when each candidate that suits the exponent goes to
/// the primality test.
std::pair<Number, Number> literal_primes(std::uint32_t half, Digit e) {
  Number p(half), q(half);
  const auto draw_top = [&](Number& prime) {
    zeb_bn_rand(&prime.back(), 1);
    prime.back() |= digit_top_bit;
  };
  draw_top(p);
  draw_top(q);
  while (DoubleDigit{p.back()} * q.back() >> 63 == 0) draw_top(p.back() < q.back() ? p : q);
  if (p.back() < q.back()) std::swap(p, q);
  for (Number* prime : {&p, &q}) {
    do {
      zeb_bn_rand(prime->data(), half - 1);
      prime->front() |= 1;
    } while (bn_ModD(prime->data(), half, e) == 1 || !is_taken_as_prime(*prime));
  }
  return {p, q};
}

// Trial division, whose primes depend on the compiler, decides nothing and draws nothing less.
TEST(KeyGeneration, OneStateOfTheGeneratorGivesOneKey) {
  const WorkingDirectory without_a_noise_file;
  random_device_blocked = kernel_random_blocked = true;
  const auto start = [](std::uint32_t seed) {
    set_generator(static_cast<std::uint8_t>(seed));
    xx = seed;
  };
  const std::tuple<std::uint32_t, std::uint32_t> sizes[] = {
      {128, 40}, {192, 20}, {256, 20}, {320, 8},  {384, 8},
      {448, 8},  {512, 8},  {768, 3},  {1024, 3}, {2048, 1}};
  for (const auto& [bits, keys] : sizes) {
    for (std::uint32_t seed = 0; seed < keys; ++seed) {
      const Digit e = seed % 2 == 0 ? 65537 : 3;
      start(seed);
      const auto [p, q] = literal_primes(bits / 64, e);
      const Number state = {suCount, uIndexRandPool, xx};
      start(seed);
      const ZEB_RSA_PRIVATE_KEY key = generate(bits, e);
      const Key expected = make_key(p, q, e);
      EXPECT_TRUE(is_sound(expected)) << bits << " bits, " << seed;
      EXPECT_EQ(bytes_of(key), bytes_of(record_of(expected, bits / 8)))
          << bits << " bits, " << seed;
      EXPECT_EQ(Number({suCount, uIndexRandPool, xx}), state);
    }
  }
  random_device_blocked = kernel_random_blocked = false;
}

TEST(KeyGeneration, DrawsAnExponentOfFullWidthWhereNoneIsGiven) {
  for (int i = 0; i < 8; ++i) {
    const ZEB_RSA_PRIVATE_KEY key = generate(128, 0);
    EXPECT_EQ(key.eWords, 4U);
    EXPECT_TRUE((key.e[3] & digit_top_bit) == 0 && key.e[3] != 0 && key.e[0] != 0);
    EXPECT_EQ(Big(key.n, 16), Big(key.p, 8) * Big(key.q, 8));
  }
}

TEST(KeyGeneration, RefusesBitCountsAndLeavesTheRecord) {
  for (const std::uint32_t bits : {1000U, 1U, 2047U, 0U, 64U, 2080U, 0xFFFFFFE0U}) {
    ZEB_RSA_PRIVATE_KEY key = {};
    EXPECT_EQ(ZEB_RSA_KeyGen(&key, bits), ZEB_ERR_PARAMETER) << bits;
    EXPECT_EQ(bytes_of(key), Bytes(sizeof key)) << bits;
  }
}

}  // namespace
