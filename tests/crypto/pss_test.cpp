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
  /// The strict check of an encoding as the key signs it, plus so many times the modulus.
  PssFindings check(const Key& by, const Bytes& encoded, int moduli = 0) const {
    const Bytes n = by[0].bytes(length), e = by[1].bytes(4);
    const Big signature = by.size() == 2 ? Big(reversed(encoded))  // e is 1
                                         : power(reversed(encoded), by[2], by[0]);
    const Bytes bytes = (signature + by[0] * Big(moduli != 0 ? 1 : 0)).bytes(length);
    PssFindings findings = check_new_signature(bytes, {n, e}, digest);
    EXPECT_EQ(slice(bytes_of(findings.block), 0, findings.block_length), encoded);
    return findings;
  }
  const std::uint32_t length = GetParam() / 8;
  const Key key = test_key(GetParam());
  const Bytes digest = sha1(some_bytes(300));
};
INSTANTIATE_TEST_SUITE_P(, Pss, testing::Values(1024U, 2048U), testing::PrintToStringParamName());

TEST_P(Pss, StrictCheckTellsWhatIsWrongWithASignature) {
  const Big& n = key[0];
  for (const std::uint32_t salt : {0U, 19U, 20U, 21U, length - 30}) {
    const PssFindings findings = check(key, pss_encode(n, digest, salt));
    EXPECT_EQ(findings.verdict, salt == 20 ? PssVerdict::valid : PssVerdict::other_salt_length);
    EXPECT_EQ(findings.salt_length, salt);
  }
  Bytes pkcs1(length);
  RSA_padding_add_PKCS1_type_1(pkcs1.data(), static_cast<int>(length), digest.data(), 20);
  EXPECT_EQ(check(key, pkcs1).verdict, PssVerdict::pkcs1_v15);
  EXPECT_EQ(check(key, pss_encode(n, sha1({1}), 20)).verdict, PssVerdict::other_digest);
  EXPECT_EQ(check(key, Bytes(length, 0x55)).verdict, PssVerdict::not_pss);
  // The encoding has its top bit clear, so that the modulus fits once more above it.
  const Key narrow = {Big::unit(length / 4) / 2 + 1, 1};
  const Bytes encoded = pss_encode(narrow[0], digest, 20);
  EXPECT_EQ(check(narrow, encoded).verdict, PssVerdict::valid);
  EXPECT_EQ(check(narrow, encoded, 1).verdict, PssVerdict::not_below_modulus);
  const Key even_narrower = {Big::unit(length / 4) / 2 - 1, 1};
  for (const auto& [used, e] :
       {std::pair{even_narrower[0], Bytes{1, 0, 0, 0}}, {n, {1}}, {n, {}}}) {
    const PssFindings findings = check_new_signature(encoded, {used.bytes(length), e}, digest);
    EXPECT_EQ(findings.verdict, PssVerdict::unusable_key);
    EXPECT_EQ(findings.block_length, 0U);
  }
}

TEST_P(Pss, StrictCheckSparesNoBitOfAnEncoding) {
  const Key widest = {Big::unit(length / 4) - 1, 1};
  const Bytes encoded = pss_encode(widest[0], digest, 20);
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
  for (const std::size_t room :
       {std::size_t{0}, std::size_t{21}, std::size_t{41}, std::size_t{260}}) {
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
  for (const std::size_t at : {0, 1, 2, 3, 4, 5, 6, 7}) {
    for (const int bit : {0, 1, at == 1 ? 20 : 77}) {
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
