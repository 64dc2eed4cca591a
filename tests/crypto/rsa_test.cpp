#include "crypto/rsa.h"

#include <gtest/gtest.h>

#include <cstring>

#include "crypto/bn_mod.h"
#include "crypto/bytes.h"
#include "tests/support/generator.h"
#include "tests/support/key_list.h"
#include "tests/support/numbers.h"
#include "tests/support/rsa_keys.h"
#include "tests/support/test_bytes.h"

namespace {

Bytes reversed(const Bytes& bytes) {
  return Bytes(bytes.rbegin(), bytes.rend());
}

Bytes bytes_of(const Number& number) {
  const auto* first = reinterpret_cast<const std::uint8_t*>(number.data());
  return Bytes(first, first + digit_bytes * number.size());
}

/// In the form of the signature length, with room for an exponent of 64 digits.
Bytes public_key_of(const ZEB_RSA_PRIVATE_KEY& key, std::uint32_t signature_length) {
  Bytes blob(520);
  const bool wide = signature_length == 256;
  std::memcpy(&blob[wide ? 4 : 0], key.n, digit_bytes * key.nWords);
  std::memcpy(&blob[wide ? 264 : 128], key.e, digit_bytes);
  if (wide) store_le32(&blob[0], digit_bytes * key.nWords);
  if (wide) store_le32(&blob[260], digit_bytes);
  return blob;
}

/// Runs for the 1024-bit key (e 65537) and the 2048-bit key (e 3), with repeatable salts.
class Rsa : public ::testing::TestWithParam<std::uint32_t> {
 protected:
  void SetUp() override { set_generator(9); }

  /// The statuses of both wrappers; a failure wipes the signature and the caller's digest.
  Status verify_digest(Bytes signature, const Bytes& blob) {
    const Bytes sent = signature;
    Bytes hash = digest;
    const Status status = Verify_PSS_RSASignature(blob.data(), 0, hash.data(), 20, signature.data(),
                                                  length_of(signature));
    EXPECT_EQ(signature, status == 0xFFF20090 ? Bytes(sent.size()) : sent);
    EXPECT_EQ(hash, status == 0xFFF20090 ? Bytes(20) : digest);
    return status;
  }
  Status verify_message(Bytes signature, const Bytes& blob) {
    const Bytes sent = signature;
    const Status status = Verify_PSS_RSASignature2(blob.data(), 0, message.data(), 300,
                                                   signature.data(), length_of(signature));
    EXPECT_EQ(signature, status == 0xFFF20090 ? Bytes(sent.size()) : sent);
    return status;
  }
  void expect_status(const Bytes& signature, Status expected) {
    EXPECT_EQ(verify_digest(signature, public_key), expected);
    EXPECT_EQ(verify_message(signature, public_key), expected);
  }
  bool openssl_accepts(const Bytes& signature, std::uint32_t salt_length) {
    return openssl_pss_verify(judge.get(), digest, reversed(signature),
                              static_cast<int>(salt_length));
  }
  Bytes openssl_signature(std::uint32_t salt_length) {
    return reversed(openssl_pss_sign(judge.get(), digest, static_cast<int>(salt_length)));
  }
  Status sign(std::int32_t mode, const Bytes& list, Bytes& signature, std::uint32_t& written) {
    return Generate_PSS_RSASignature(mode, list.data(), length_of(list), digest.data(), 20,
                                     signature.data(), &written);
  }
  /// An encoding whose data block ends in `db_end`, the last `salt_length` bytes of it the salt,
  /// and its hash, which matches when none is given.
  Big encode(const Bytes& db_end, std::ptrdiff_t salt_length, std::uint8_t trailer, bool top_bit,
             Bytes hash = {}) {
    Bytes em(length - 21 - db_end.size());
    em.insert(em.end(), db_end.begin(), db_end.end());
    Bytes covered(8);
    covered.insert(covered.end(), digest.begin(), digest.end());
    covered.insert(covered.end(), em.end() - salt_length, em.end());
    if (hash.empty()) hash = sha1(covered);
    zeb_PKCS1_MGF1_Sha1(em.data(), length_of(em), hash.data(), 20);
    em[0] = static_cast<std::uint8_t>(top_bit ? em[0] | 0x80 : em[0] & 0x7F);
    em.insert(em.end(), hash.begin(), hash.end());
    em.push_back(trailer);
    return Big::from_big_endian(em);
  }
  Bytes raise(const Big& encoded) { return bytes_of(power(encoded, d, n).digits(key.nWords)); }

  const ZEB_RSA_PRIVATE_KEY key = read_key_record(GetParam());
  const std::uint32_t length = GetParam() / 8;
  const Big n{key.n, key.nWords};
  const Big d{key.d, key.dWords};
  const EvpKey judge = make_evp_key(key);
  const Bytes public_key = public_key_of(key, length);
  Bytes message = Bytes(300, 0x4D);
  const Bytes digest = sha1(message);
};
INSTANTIATE_TEST_SUITE_P(, Rsa, ::testing::Values(1024U, 2048U),
                         ::testing::PrintToStringParamName());

TEST(RsaVectors, MeetsPublishedVector) {
  const Bytes public_key = public_key_of(read_key_record(1024), 128);
  const Vector vector = read_vectors("pss.txt").at(0);
  const Bytes& message = vector.at("message");
  Bytes signature = reversed(vector.at("signature"));
  EXPECT_EQ(Verify_PSS_RSASignature2(public_key.data(), 0, message.data(), length_of(message),
                                     signature.data(), 128),
            ZEB_SUCCESS);
}

TEST_P(Rsa, SignaturesVerifyHereAndInOpenssl) {
  std::vector<Bytes> signatures;
  for (const std::int32_t mode : {rsa_mode_plain, rsa_mode_crt}) {
    set_generator(9);
    const Bytes list = make_key_list(key, mode == rsa_mode_crt);
    std::uint32_t written = 0;
    signatures.resize(signatures.size() + 2, Bytes(length));
    EXPECT_EQ(sign(mode, list, *(signatures.end() - 2), written), ZEB_SUCCESS);
    EXPECT_EQ(written, length);
    EXPECT_EQ(Generate_PSS_RSASignature2(mode, list.data(), length_of(list), message.data(), 300,
                                         signatures.back().data(), &written),
              ZEB_SUCCESS);
  }
  for (const Bytes& signature : signatures) {
    EXPECT_TRUE(openssl_accepts(signature, 20));
    expect_status(signature, ZEB_SUCCESS);
  }
  EXPECT_NE(signatures[0], signatures[1]);  // the salt is fresh
  EXPECT_EQ(signatures[0], signatures[2]);  // both modes compute the same
  // Taken as a plain list, a CRT list has e for d.
  std::uint32_t written = 0;
  EXPECT_EQ(sign(rsa_mode_plain, make_key_list(key, true), signatures[0], written), 0U);
  expect_status(signatures[0], 0xFFF20090);
}

// The prefix of M' is taken from the encoding as it stands, so that a salt that leaves the padding
// string less than eight bytes verifies only here, and only if made here.
TEST_P(Rsa, AnySaltLengthVerifiesThatLeavesThePrefixZero) {
  for (const std::uint32_t salt : {0U, 20U, length - 30, length - 22}) {
    const bool standard = salt != length - 22;
    expect_status(openssl_signature(salt), standard ? ZEB_SUCCESS : 0xFFF20090);
    Number digits(key.nWords);
    std::uint32_t words = 0;
    EXPECT_EQ(ZEB_RSA_PSS_SignCRT(&words, digits.data(), &key, 20, digest.data(), salt), 0U);
    EXPECT_EQ(words, key.nWords);
    expect_status(bytes_of(digits), ZEB_SUCCESS);
    EXPECT_EQ(openssl_accepts(bytes_of(digits), salt), standard);
  }
}

TEST_P(Rsa, OnlyTheTopBitOfAnEncodingIsNotChecked) {
  expect_status(raise(encode({1, 7, 2, 3}, 3, 0xBC, false)), ZEB_SUCCESS);
  expect_status(raise(encode({1, 7, 2, 3}, 3, 0xBD, false)), 0xFFF20090);
  expect_status(raise(encode({2, 7, 2, 3}, 3, 0xBC, false)), 0xFFF20090);  // wrong separator
  Bytes hash(20, 1);
  expect_status(raise(encode({}, 0, 0xBC, false)), 0xFFF20090);  // no separator before the hash
  expect_status(raise(encode({}, 0, 0xBC, false, hash)), 0xFFF20090);
  hash[0] = 0;
  expect_status(raise(encode({}, 0, 0xBC, false, hash)), 0xFFF20090);
  int accepted = 0;
  for (std::uint8_t salt = 0; salt < 40; ++salt) {
    const Big encoded = encode({1, salt}, 1, 0xBC, true);
    if (!(encoded < n)) continue;
    ++accepted;
    expect_status(raise(encoded), ZEB_SUCCESS);
    EXPECT_FALSE(openssl_accepts(raise(encoded), 1));
  }
  EXPECT_GT(accepted, 3);
}

// With e = 1 the encoding is its own signature under any larger modulus.
TEST_P(Rsa, RefusesAModulusWithItsTopBitClear) {
  const Bytes signature = bytes_of(encode({1}, 0, 0xBC, false).digits(key.nWords));
  ZEB_RSA_PRIVATE_KEY open = key;
  open.e[0] = 1;
  EXPECT_EQ(verify_message(signature, public_key_of(open, length)), ZEB_SUCCESS);
  open.n[open.nWords - 1] = 0x7FFFFFFF;
  EXPECT_EQ(verify_message(signature, public_key_of(open, length)), 0xFFF20090U);
}

TEST_P(Rsa, AnyFlippedBitFails) {
  const Bytes good = openssl_signature(20);
  for (std::size_t bit = 0; bit < 8 * length; bit += 37) {
    const auto flip = static_cast<std::uint8_t>(1 << bit % 8);
    Bytes signature = good;
    signature[bit / 8] ^= flip;
    expect_status(signature, 0xFFF20090);
    message[bit % 300] ^= flip;
    EXPECT_EQ(verify_message(good, public_key), 0xFFF20090U);
    message[bit % 300] ^= flip;
  }
}

// The second wrapper takes the digit counts of a 256-byte key from its length fields, the first
// one does not look at them.
TEST_P(Rsa, OnlyTheSecondWrapperHonoursTheLengthFields) {
  Bytes signature = openssl_signature(20);
  signature.resize(256, 0x99);  // what lies above the stated modulus is not read
  const Status unheeding = length == 256 ? ZEB_SUCCESS : 0xFFF20090;
  const auto expect_with = [&](std::size_t at, std::uint32_t word, Status expected) {
    Bytes blob = public_key_of(key, 256);
    store_le32(&blob[at], word);
    EXPECT_EQ(verify_message(signature, blob), expected) << at << ": " << word;
    EXPECT_EQ(verify_digest(signature, blob), unheeding);
  };
  for (std::uint32_t remainder = 0; remainder < 4; ++remainder) {
    expect_with(0, length + remainder, ZEB_SUCCESS);
    expect_with(260, 4 + remainder, ZEB_SUCCESS);
  }
  expect_with(260, 256, ZEB_SUCCESS);  // leading zeros
  for (const std::uint32_t word : {0U, 3U, 260U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFCU}) {
    expect_with(0, word, 0xFFF20090);
    expect_with(260, word, 0xFFF20090);
  }
  for (const std::uint32_t word : {4U, 20U, length - 4}) expect_with(0, word, 0xFFF20090);
}

TEST_P(Rsa, RefusalsWriteNothing) {
  for (const std::uint32_t other : {0U, 127U, 200U, 257U}) {
    expect_status(Bytes(other, 0x77), 0xFFF20000);
  }
  Bytes signature(256, 0x77);
  std::uint32_t written = 5;
  // The message is hashed before the length is looked at.
  EXPECT_EQ(Verify_PSS_RSASignature2(public_key.data(), 0, nullptr, 0, signature.data(), 200),
            0xFFF20070U);
  const Bytes good = make_key_list(key, true);
  EXPECT_EQ(Generate_PSS_RSASignature2(rsa_mode_crt, good.data(), length_of(good), nullptr, 0,
                                       signature.data(), &written),
            0xFFF40070U);

  const auto refuse_with = [&](std::int32_t mode, auto change) {  // a change of the key
    ZEB_RSA_PRIVATE_KEY changed = key;
    change(changed);
    EXPECT_EQ(sign(mode, make_key_list(changed, mode == rsa_mode_crt), signature, written),
              0xFFF40090U);
  };
  for (const std::int32_t mode : {rsa_mode_plain, rsa_mode_crt}) {
    Bytes list = make_key_list(key, mode == rsa_mode_crt);
    const std::size_t read = mode == rsa_mode_crt ? list.size() : 2 * (4 + length);
    for (std::size_t cut = 0; cut < read; cut += 1 + cut % 61) {
      const Bytes part(list.begin(), list.begin() + static_cast<std::ptrdiff_t>(cut));
      EXPECT_EQ(sign(mode, part, signature, written), 0xFFF40090U);
    }
    for (const std::uint32_t word : {0U, 67 * 4U, 0x7FFFFFFCU, 0xFFFFFFFFU}) {
      store_le32(list.data(), word);
      EXPECT_EQ(sign(mode, list, signature, written), 0xFFF40090U);
    }
    refuse_with(mode, [](auto& k) { std::memset(k.n, 0, sizeof k.n); });
    refuse_with(mode, [](auto& k) { k.n[k.nWords - 1] &= ~digit_top_bit; });
    refuse_with(mode, [](auto& k) { k.n[(k.nWords = 65) - 1] = digit_top_bit; });
    refuse_with(mode, [](auto& k) {  // no room for an encoding
      k.n[(k.nWords = 4) - 1] = digit_top_bit;
      k.p[(k.pWords = 2) - 1] = k.q[(k.qWords = 2) - 1] = digit_top_bit;
    });
  }
  refuse_with(rsa_mode_crt, [](auto& k) { k.p[k.pWords - 1] &= ~digit_top_bit; });
  refuse_with(rsa_mode_crt, [](auto& k) { k.q[k.qWords - 1] &= ~digit_top_bit; });
  refuse_with(rsa_mode_crt, [](auto& k) { k.p[--k.pWords - 1] |= digit_top_bit; });
  refuse_with(rsa_mode_crt, [](auto& k) { k.q[k.qWords++] = digit_top_bit; });
  refuse_with(rsa_mode_crt, [](auto& k) { k.dPWords = 35; });
  EXPECT_EQ(signature, Bytes(256, 0x77));
  EXPECT_EQ(written, 5U);
}

// Inputs whose reduction by a prime leaves digits above it still come out right.
TEST_P(Rsa, CrtSurvivesIrregularReductions) {
  for (const Digit* prime : {key.p, key.q}) {
    Number input = (Big(prime, key.pWords) - 1).digits(key.pWords);
    input.insert(input.begin(), key.pWords - 1, 0);
    input.push_back(0);
    Number reduced = input;
    zeb_bn_ClassicalRed(reduced.data(), key.nWords, prime, key.pWords);
    ASSERT_GT(bn_significant_digits(reduced.data(), key.nWords), key.pWords);
    Number result(key.nWords);
    zeb_RSA_CrtDec(result.data(), input.data(), &key);
    EXPECT_EQ(Big(result), power(input, d, n));
  }
}

}  // namespace
