#include "crypto/rsa.h"

#include <gtest/gtest.h>

#include "crypto/bn_mod.h"
#include "tests/support/keys.h"

namespace {

/// For the 1024-bit key (e 65537) and the 2048-bit key (e 3).
class Rsa : public testing::TestWithParam<std::uint32_t> {
 protected:
  /// By both wrappers, whose statuses agree.
  void expect_status(const Bytes& signature, Status expected) const {
    EXPECT_EQ(verify(false, public_key, digest, signature), expected);
    EXPECT_EQ(verify(true, public_key, message, signature), expected);
  }
  /// The signature of a digest or of a message, or nothing; then nothing is written either.
  static Bytes sign(bool by_message, std::int32_t mode, const Bytes& list, const Bytes& covered,
                    Status expected) {
    Bytes signature(256, 0x77);
    std::uint32_t length = 5;
    const auto wrapper = by_message ? Generate_PSS_RSASignature2 : Generate_PSS_RSASignature;
    EXPECT_EQ(wrapper(mode, list.data(), length_of(list), covered.data(), length_of(covered),
                      signature.data(), &length),
              expected);
    EXPECT_TRUE(expected == ZEB_SUCCESS || (length == 5 && signature == Bytes(256, 0x77)));
    return slice(signature, 0, expected == ZEB_SUCCESS ? length : 0);
  }
  Bytes raise(const Bytes& encoded) const {
    return power(reversed(encoded), key[2], key[0]).bytes(length);
  }
  Bytes list_of(std::int32_t mode) const {
    return key_list(key, full_widths(length), mode == rsa_mode_crt);
  }

  const std::uint32_t length = GetParam() / 8;
  const Key key = test_key(GetParam());
  const Bytes public_key = public_key_of(key, length), message = some_bytes(300);
  const Bytes digest = sha1(message);
  const ZEB_RSA_PRIVATE_KEY record = record_of(key, length);
};
INSTANTIATE_TEST_SUITE_P(, Rsa, testing::Values(1024U, 2048U), testing::PrintToStringParamName());

TEST(RsaVectors, MeetsPublishedVector) {
  for (const auto& row : read_vectors("pss")) {
    EXPECT_EQ(verify(true, public_key_of(test_key(1024), 128), row[0], reversed(row[1])), 0U);
  }
}

// Repeated, this also meets what chance brings once in some tens of thousands of signatures:
// --gtest_filter=*VerifyInOpenssl* --gtest_repeat=1000.
TEST_P(Rsa, SignaturesVerifyInOpensslAndHere) {
  for (std::uint32_t i = 0; i < 60; ++i) {
    const bool by_message = i % 2 == 0;
    const std::int32_t mode = i % 3 == 0 ? rsa_mode_plain : rsa_mode_crt;
    const Bytes text = some_bytes(i + 1), covered = by_message ? text : sha1(text);
    const Bytes signature = sign(by_message, mode, list_of(mode), covered, ZEB_SUCCESS);
    ASSERT_EQ(signature.size(), length);
    ASSERT_TRUE(pss_verify(key[0], key[1], sha1(text), signature, 20));
    EXPECT_EQ(verify(by_message, public_key, covered, signature), ZEB_SUCCESS);
  }
}

// The prefix of M' is taken from the encoding as it stands, so that a salt that leaves the padding
// string less than eight bytes verifies only here, and only if made here.
TEST_P(Rsa, AnySaltLengthVerifiesThatLeavesThePrefixZero) {
  for (const std::uint32_t salt : {0U, 20U, length - 30, length - 29, length - 22}) {
    const bool standard = salt <= length - 30;
    expect_status(raise(pss_encode(key[0], digest, salt)), standard ? ZEB_SUCCESS : VERIFY_ERR_RSA);
    Number made(length / 4);
    std::uint32_t words = 0;
    EXPECT_EQ(ZEB_RSA_PSS_SignCRT(&words, made.data(), &record, 20, digest.data(), salt), 0U);
    EXPECT_EQ(words, length / 4);
    const Bytes signature = Big(made).bytes(length);
    expect_status(signature, ZEB_SUCCESS);
    EXPECT_EQ(pss_verify(key[0], key[1], digest, signature, static_cast<int>(salt)), standard);
  }
}

// With e = 1 an encoding is its own signature under any larger modulus.
TEST_P(Rsa, OnlyTheTopBitOfAnEncodingIsNotChecked) {
  const Key widest = {Big::unit(length / 4) - 1, 1};
  for (const std::size_t salt : {0U, 3U, 20U}) {
    Bytes other = message, encoded;
    do {  // a hash that starts with 1 could be taken for the separator where that is missing
      store_le32(other.data(), load_le32(other.data()) + 1);
      encoded = pss_encode(widest[0], sha1(other), salt);
    } while (encoded[length - 21] != 1);
    const Bytes signature = reversed(encoded);
    for (std::size_t bit = 0; bit < 8 * length; ++bit) {
      Bytes changed = signature;
      changed[bit / 8] ^= static_cast<std::uint8_t>(1 << bit % 8);
      const Status expected = bit + 1 == 8 * length ? ZEB_SUCCESS : VERIFY_ERR_RSA;
      ASSERT_EQ(verify(true, public_key_of(widest, length), other, changed), expected) << bit;
    }
    const Key narrow = {Big::unit(length / 4) / 2 - 1, 1};
    EXPECT_EQ(verify(true, public_key_of(narrow, length), other, signature), VERIFY_ERR_RSA);
  }
}

// The second wrapper takes the digit counts of a 256-byte key from its length fields, the first
// one ignores them.
TEST_P(Rsa, OnlyTheSecondWrapperHonoursTheLengthFields) {
  Bytes signature = raise(pss_encode(key[0], digest, 20));
  signature.resize(256, 0x99);  // what lies above the stated modulus is not read
  const std::tuple<std::uint32_t, std::uint32_t, bool> cases[] = {
      {length, 4, true},  {length + 3, 7, true},       {length, 256, true}, {length - 4, 4, false},
      {length, 0, false}, {length, 0x80000000, false}, {260, 4, false},     {0x7FFFFFFF, 4, false}};
  for (const auto& [n_length, e_length, good] : cases) {
    Bytes blob = public_key_of(key, 256);
    store_le32(blob.data(), n_length);
    store_le32(&blob[260], e_length);
    EXPECT_EQ(verify(true, blob, message, signature), good ? ZEB_SUCCESS : VERIFY_ERR_RSA)
        << n_length;
    EXPECT_EQ(verify(false, blob, digest, signature), length == 256 ? ZEB_SUCCESS : VERIFY_ERR_RSA);
  }
}

TEST_P(Rsa, RefusesBadLengthsAndKeys) {
  for (const std::size_t other : {0U, 127U, 200U, 257U}) {
    expect_status(some_bytes(other), VERIFY_ERR_SIGNATURE_LENGTH);
  }
  // The message is hashed before the length is looked at.
  EXPECT_EQ(verify(true, public_key, {}, some_bytes(200)), VERIFY_ERR_SHA1_UPDATE);
  for (const std::int32_t mode : {rsa_mode_plain, rsa_mode_crt}) {
    const bool crt = mode == rsa_mode_crt;
    const Bytes list = list_of(mode);
    const auto refuse = [&](const Bytes& bad) { sign(false, mode, bad, digest, SIGN_ERR_RSA); };
    sign(true, mode, list, {}, SIGN_ERR_SHA1_UPDATE);
    const std::size_t read = crt ? list.size() : 2 * (4 + length);
    for (std::size_t cut = 0; cut < read; cut += 1 + cut % 61) refuse(slice(list, 0, cut));
    const Big small = Big::unit(2) - 1;  // no room for an encoding
    refuse(key_list({Big::unit(4) - 1, 3, 5, small, small, 1, 1, 1}, full_widths(16), crt));
    const std::uint32_t half = length / 8;
    // n, p, q and dP of so many digits.
    for (const auto& [index, digits] : {std::pair{0U, 65U},
                                        {0, 67},
                                        {3, half - 1},
                                        {3, half + 1},
                                        {4, half - 1},
                                        {4, half + 1},
                                        {5, 35}}) {
      if (index != 0 && !crt) continue;
      Key changed = key;
      Widths widths = full_widths(length);
      changed[index] = Big::unit(digits) - 1;
      widths[index] = digit_bytes * digits;
      refuse(key_list(changed, widths, crt));
    }
  }
}

// Inputs whose reduction by a prime leaves digits above it still come out right.
TEST_P(Rsa, CrtSurvivesIrregularReductions) {
  const std::uint32_t half = length / 8;
  for (const std::size_t prime : {3U, 4U}) {
    const Number input = ((key[prime] - 1) * Big::unit(half - 1)).digits(2 * half);
    const Number divisor = key[prime].digits(half);
    Number reduced = input, result(2 * half);
    zeb_bn_ClassicalRed(reduced.data(), 2 * half, divisor.data(), half);
    ASSERT_GT(sealwright::bn_significant_digits(reduced.data(), 2 * half), half);
    zeb_RSA_CrtDec(result.data(), input.data(), &record);
    EXPECT_EQ(Big(result), power(input, key[2], key[0]));
  }
}

}  // namespace
