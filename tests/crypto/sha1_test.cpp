#include "crypto/sha1.h"

#include <gtest/gtest.h>

#include "tests/support/openssl.h"

namespace {

/// Digest of a message in pieces, its byte count carried on from `bytes_before`.
Bytes digest_of(const Bytes& message, std::uint32_t piece, std::uint64_t bytes_before = 0) {
  ZEB_SHA1 context;
  EXPECT_EQ(ZEB_SHA1_Init(&context), ZEB_SUCCESS);
  context.count_low = static_cast<std::uint32_t>(bytes_before);
  context.count_high = static_cast<std::uint32_t>(bytes_before >> 32);
  for (std::uint32_t at = 0; at < message.size(); at += piece) {
    const std::uint32_t length = std::min(piece, length_of(message) - at);
    EXPECT_EQ(ZEB_SHA1_Update(&context, &message[at], length), ZEB_SUCCESS);
  }
  Bytes digest(sha1_digest_length);
  EXPECT_EQ(ZEB_SHA1_Final(&context, digest.data()), ZEB_SUCCESS);
  return digest;
}

void expect_macs(const Bytes& key, const Bytes& message, const Bytes& expected) {
  ZEB_SHA1_HMAC context;
  EXPECT_EQ(ZEB_SHA1_HMAC_SetInfo(&context, key.data(), length_of(key)), ZEB_SUCCESS);
  for (int i = 0; i < 2; ++i) {  // one context serves any number of messages
    Bytes mac(sha1_digest_length);
    context.hash.count_high = 1;  // as a long message before leaves it
    EXPECT_EQ(ZEB_SHA1_HMAC_Init(&context), ZEB_SUCCESS);
    EXPECT_EQ(ZEB_SHA1_HMAC_Update(&context, message.data(), length_of(message)), ZEB_SUCCESS);
    EXPECT_EQ(ZEB_SHA1_HMAC_Final(&context, mac.data()), ZEB_SUCCESS);
    EXPECT_EQ(mac, expected);
  }
}

TEST(Sha1, MeetsPublishedVectors) {
  for (const auto& row : read_vectors("sha1")) EXPECT_EQ(digest_of(row[0], 0xFFFF), row[1]);
  for (const auto& row : read_vectors("hmac")) expect_macs(row[0], row[1], row[2]);
}

TEST(Sha1, MatchesOpensslInPiecesOfOddSizes) {
  for (std::uint32_t length = 0; length <= 300; ++length) {
    const Bytes message = some_bytes(length);
    for (const std::uint32_t piece : {1U, 3U, 55U, 63U, 64U, 65U, 129U, 300U}) {
      ASSERT_EQ(digest_of(message, piece), sha1(message)) << length << " by " << piece;
    }
    if (length != 0) expect_macs(message, message, hmac_sha1(message, message));
  }
}

TEST(Sha1, ByteCountFillsBothWords) {
  const Bytes message(200, 0x3C);
  for (const std::uint64_t bytes_before : {0x12345678FFFFFFC0U, 0xE0000000UL}) {
    SHA_CTX judge;
    SHA1_Init(&judge);
    judge.Nl = static_cast<std::uint32_t>(bytes_before << 3);  // bits
    judge.Nh = static_cast<std::uint32_t>(bytes_before >> 29);
    Bytes expected(sha1_digest_length);
    SHA1_Update(&judge, message.data(), message.size());
    SHA1_Final(expected.data(), &judge);
    EXPECT_EQ(digest_of(message, 63, bytes_before), expected);
  }
}

TEST(Sha1, RefusesNullPointersEvenForNoBytes) {
  ZEB_SHA1 context = {};
  ZEB_SHA1_HMAC hmac = {};
  std::uint8_t digest[sha1_digest_length];
  EXPECT_EQ(ZEB_SHA1_Init(nullptr), 0xFFFF0010U);
  EXPECT_EQ(ZEB_SHA1_Update(nullptr, digest, 1), 0xFFFF0010U);
  EXPECT_EQ(ZEB_SHA1_Update(&context, nullptr, 0), 0xFFFF0010U);
  EXPECT_EQ(ZEB_SHA1_Final(nullptr, digest), 0xFFFF0010U);
  EXPECT_EQ(ZEB_SHA1_Final(&context, nullptr), 0xFFFF0010U);
  EXPECT_EQ(ZEB_SHA1_HMAC_Update(&hmac, nullptr, 0), ZEB_SUCCESS);  // it never reports a failure
}

}  // namespace
