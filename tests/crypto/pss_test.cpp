#include "crypto/pss.h"

#include <gtest/gtest.h>

#include "crypto/rsa_key_check.h"
#include "scheme/key_pair.h"
#include "tests/support/keys.h"

namespace {

using namespace sealwright;

/// For the 1024-bit key (e 65537) and the 2048-bit key (e 3).
class Pss : public testing::TestWithParam<std::uint32_t> {
 protected:
  /// The strict check of an encoding, which is its own signature with e = 1, plus so many moduli.
  PssFindings check(const Big& modulus, const Bytes& encoded, unsigned moduli = 0) const {
    const Bytes n = modulus.bytes(length), e = {1, 0, 0, 0};
    const Bytes bytes = (Big(reversed(encoded)) + modulus * Big(moduli)).bytes(length);
    PssFindings findings = check_new_signature(bytes, {n, e}, digest);
    EXPECT_EQ(slice(bytes_of(findings.block), 0, findings.block_length), encoded);
    return findings;
  }
  const std::uint32_t length = GetParam() / 8;
  const Key key = test_key(GetParam());
  const Bytes digest = sha1(some_bytes(300));
};
INSTANTIATE_TEST_SUITE_P(, Pss, testing::Values(1024U, 2048U), testing::PrintToStringParamName());

// Wrong signatures of every other kind go through the program.
TEST_P(Pss, StrictCheckTakesNothingThatTheModulusDoesNotBound) {
  // The encoding has its top bit clear, so that the modulus fits once more above it.
  const Big narrow = Big::unit(length / 4) / 2 + 1, even_narrower = narrow - 2;
  const Bytes encoded = pss_encode(narrow, digest, 20);
  EXPECT_EQ(check(narrow, encoded).verdict, PssVerdict::valid);
  EXPECT_EQ(check(narrow, encoded, 1).verdict, PssVerdict::not_below_modulus);
  for (const auto& [used, e] :
       {std::pair{even_narrower, Bytes{1, 0, 0, 0}}, {key[0], {1}}, {key[0], {}}}) {
    const PssFindings findings = check_new_signature(encoded, {used.bytes(length), e}, digest);
    EXPECT_EQ(findings.verdict, PssVerdict::unusable_key);
    EXPECT_EQ(findings.block_length, 0U);
  }
}

TEST_P(Pss, StrictCheckSparesNoBitOfAnEncoding) {
  const Big widest = Big::unit(length / 4) - 1;
  const Bytes encoded = pss_encode(widest, digest, 20);
  for (std::size_t bit = 0; bit < 8 * length; ++bit) {
    Bytes changed = encoded;
    changed[bit / 8] ^= static_cast<std::uint8_t>(0x80 >> bit % 8);
    ASSERT_NE(check(widest, changed).verdict, PssVerdict::valid) << bit;
  }
}

TEST_P(Pss, EncodesWhereThereIsRoomForTheSalt) {
  for (const std::size_t salt : {std::size_t{0}, std::size_t{20}, std::size_t{length - 30}}) {
    Bytes block(length, 0x77);
    ASSERT_TRUE(emsa_pss_encode(block, digest, some_bytes(salt)));
    EXPECT_TRUE(pss_matches(key[0], digest, block, static_cast<int>(salt)));
  }
  for (const std::size_t room : {0U, 21U, 41U, 260U}) {
    Bytes block(room, 0x77);
    set_generator(1);
    EXPECT_FALSE(emsa_pss_encode(block, digest, some_bytes(20)) ||
                 emsa_pss_encode_afresh(block, digest, 20));
    EXPECT_EQ(uIndexRandPool, prng_block_length);
    EXPECT_EQ(block, Bytes(room, 0x77));
  }
}

/// Whether the check takes a key for plain signing and for signing by CRT.
std::pair<bool, bool> agrees(const ZEB_RSA_PRIVATE_KEY& key) {
  return {rsa_key_agrees(key, KeyItemLayout::plain), rsa_key_agrees(key, KeyItemLayout::crt)};
}
const std::pair<bool, bool> for_both(true, true), for_none(false, false);

TEST_P(Pss, OnlyAKeyWhoseNumbersBelongTogetherAgrees) {
  const ZEB_RSA_PRIVATE_KEY good = record_of(key, length);
  EXPECT_EQ(agrees(good), for_both);
  for (const std::size_t at : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U}) {
    for (const std::uint64_t bit : {0U, 1U, at == 1 ? 20U : 77U}) {
      Key changed = key;
      changed[at] = key[at] + power(2, bit, Big::unit(64));
      EXPECT_EQ(agrees(record_of(changed, length)), for_none) << at << " by " << bit;
    }
  }
  for (const auto count :
       {&ZEB_RSA_PRIVATE_KEY::nWords, &ZEB_RSA_PRIVATE_KEY::dWords, &ZEB_RSA_PRIVATE_KEY::pWords,
        &ZEB_RSA_PRIVATE_KEY::qWords, &ZEB_RSA_PRIVATE_KEY::dPWords, &ZEB_RSA_PRIVATE_KEY::dQWords,
        &ZEB_RSA_PRIVATE_KEY::qInvWords, &ZEB_RSA_PRIVATE_KEY::eWords}) {
    for (const std::uint32_t digits : {0U, 67U, 0xFFFFFFFFU}) {
      ZEB_RSA_PRIVATE_KEY changed = good;
      changed.*count = digits;
      EXPECT_EQ(agrees(changed), for_none);
    }
  }
  // With the smaller prime first, only the operation by CRT fails at times.
  const Key exchanged = make_key(key[4], key[3], key[1]);
  EXPECT_EQ(agrees(record_of(exchanged, length)), std::pair(true, false));
  // Numbers that agree over a p that is no prime.
  Big composite = key[3] - 2;
  while (composite.is_prime() || !(gcd(key[1], composite - 1) == 1) ||
         !(gcd(composite, key[4]) == 1)) {
    composite = composite - 2;
  }
  EXPECT_EQ(agrees(record_of(make_key(composite, key[4], key[1]), length)), for_none);
}

// An even exponent has no inverse, which key generation does not say by itself.
TEST(KeyPair, AKeyThatDoesNotAgreeIsRefused) {
  ZEB_RSA_PRIVATE_KEY key;
  EXPECT_EQ(make_rsa_key(key, 65537, 512), ZEB_SUCCESS);
  EXPECT_EQ(make_rsa_key(key, 4, 512), SIGN_ERR_RSA);
  EXPECT_EQ(make_rsa_key(key, 65537, 1000), SIGN_ERR_RSA);
}

}  // namespace
