#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <numeric>

#include "crypto/aes_cbc.h"
#include "crypto/mem.h"
#include "crypto/sha1.h"
#include "tests/support/openssl.h"

namespace {

struct alignas(4) Arena : std::array<std::uint8_t, 64> {
  Arena() { std::iota(begin(), end(), std::uint8_t{1}); }
};

TEST(Mem, CompareReversesThePlatformsSign) {
  const std::uint8_t low[] = {5, 0x7F, 9}, high[] = {5, 0x80, 1};
  EXPECT_EQ(tmkx_memcmp(low, high, 3), 1);
  EXPECT_EQ(tmkx_memcmp(high, low, 3), -1);
  EXPECT_EQ(tmkx_memcmp(low, high, 1), 0);
  EXPECT_EQ(tmkx_memcmp(low + 1, high + 1, 0), 0);
}

// Every overlap in both directions; disjoint ranges, fills and their alignment heads, which are
// written even when the length is smaller.
TEST(Mem, CopyFillAndXorWriteExactlyTheirBytes) {
  for (std::uint32_t i = 0; i < 24 * 24 * 37; ++i) {
    const std::uint32_t to = i % 24, from = i / 24 % 24, length = i / (24 * 24);
    const std::uint32_t distance = from < to ? to - from : from - to, head = (4 - to % 4) % 4;
    const bool has_head = distance >= length && distance % 4 == 0 && distance != 0;
    Arena expected, arena;
    std::memmove(&expected[to], &expected[from], std::max(length, has_head ? head : 0));
    tmkx_memcpy(&arena[to], &arena[from], length);
    ASSERT_EQ(arena, expected) << "copy " << from << " to " << to << ", length " << length;

    std::memset(&expected[to], 0xE7, std::max(length, head));
    tmkx_memset(&arena[to], 0xE7, length);
    ASSERT_EQ(arena, expected) << "fill at " << to << ", length " << length;

    const Arena source;
    for (std::size_t j = 0; j < length; ++j) expected[to + j] ^= source[from + j];
    tmkx_memxor(&arena[to], &arena[to], &source[from], length);
    ASSERT_EQ(arena, expected) << "xor at " << to << ", length " << length;
  }
}

/// Digest of a message in pieces, its byte count carried on from `bytes_before`.
Bytes digest_of(const Bytes& message, std::uint32_t piece, std::uint64_t bytes_before = 0) {
  ZEB_SHA1 context;
  ZEB_SHA1_Init(&context);
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
  ZEB_SHA1_HMAC_SetInfo(&context, key.data(), length_of(key));
  for (int i = 0; i < 2; ++i) {  // one context serves any number of messages
    Bytes mac(sha1_digest_length);
    context.hash.count_high = 1;  // as a long message before leaves it
    ZEB_SHA1_HMAC_Init(&context);
    ZEB_SHA1_HMAC_Update(&context, message.data(), length_of(message));
    EXPECT_EQ(ZEB_SHA1_HMAC_Final(&context, mac.data()), ZEB_SUCCESS);
    EXPECT_EQ(mac, expected);
  }
}

TEST(Sha1, MeetsVectors) {
  for (const auto& row : read_vectors("sha1")) EXPECT_EQ(digest_of(row[0], 0xFFFF), row[1]);
  for (const auto& row : read_vectors("sha1_after")) {
    EXPECT_EQ(digest_of(row[1], 63, from_big_endian(row[0])), row[2]);
  }
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

TEST(Sha1, RefusesANullPointerEvenForNoBytes) {
  ZEB_SHA1 context = {};
  ZEB_SHA1_HMAC hmac = {};
  EXPECT_EQ(ZEB_SHA1_Update(&context, nullptr, 0), ZEB_ERR_NULL_POINTER);
  EXPECT_EQ(ZEB_SHA1_HMAC_Update(&hmac, nullptr, 0), ZEB_SUCCESS);  // it never reports a failure
}

AesCbcContext make_context(const Bytes& key, const Bytes& iv, std::uint32_t padding) {
  AesCbcContext c;
  EXPECT_EQ(ZEB_AES_SetInfo(&c, AES_USE_DEFAULT, key.data(), length_of(key), iv.data(),
                            length_of(iv), padding, 0),
            ZEB_SUCCESS);
  return c;
}

/// Encrypts in pieces of random lengths.
Bytes encrypt(AesCbcContext& c, const Bytes& message, std::mt19937_64& engine) {
  EXPECT_EQ(ZEB_AES_CBC_EncInit(&c), ZEB_SUCCESS);
  Bytes cipher(message.size() + 2 * aes_block_length);
  std::uint32_t written = 0, count = 0;
  for (std::uint32_t at = 0; at < message.size(); written += count) {
    const auto wanted = static_cast<std::uint32_t>(engine() % 50 * (engine() % 4));
    const std::uint32_t piece = std::min(wanted, length_of(message) - at);
    count = length_of(cipher) - written;
    EXPECT_EQ(ZEB_AES_CBC_EncUpdate(&c, &message[at], piece, &cipher[written], &count), 0U);
    at += piece;
    EXPECT_EQ(written + count, at - at % aes_block_length);
  }
  count = 0;
  EXPECT_EQ(ZEB_AES_CBC_EncFinal(&c, &cipher[written], &count), ZEB_SUCCESS);
  return slice(cipher, 0, written + count);
}

/// Opens `buffer` in place, `room` bytes stated for the last block.
Status decrypt(AesCbcContext& c, Bytes& buffer, std::uint32_t room = 0) {
  EXPECT_EQ(ZEB_AES_CBC_DecInit(&c), ZEB_SUCCESS);
  std::uint32_t written = 0;
  std::uint8_t* data = buffer.data();
  EXPECT_EQ(ZEB_AES_CBC_DecUpdate(&c, data, length_of(buffer), data, &written), ZEB_SUCCESS);
  const Status status = ZEB_AES_CBC_DecFinal(&c, data + written, &room);
  buffer.resize(written + room);
  return status;
}

TEST(Aes, MeetsPublishedVectors) {
  for (const auto& row : read_vectors("aes")) {
    AesKeySchedule encryption, decryption;
    ASSERT_EQ(_AES_KeySchedule(row[0].data(), length_of(row[0]), &encryption, &decryption), 0U);
    Bytes block = row[1];
    zeb_AES_Encrypt(block.data(), &encryption);
    EXPECT_EQ(block, row[2]);
    zeb_AES_Decrypt(block.data(), &decryption);
    EXPECT_EQ(block, row[1]);
  }
  std::mt19937_64 engine(16);
  for (const auto& row : read_vectors("cbc")) {
    AesCbcContext c = make_context(row[0], row[1], AES_PADDING_NONE);
    Bytes buffer = encrypt(c, row[2], engine);
    EXPECT_EQ(buffer, row[3]);
    EXPECT_EQ(decrypt(c, buffer), ZEB_SUCCESS);
    EXPECT_EQ(buffer, row[2]);
  }
  EXPECT_EQ(_ff_mult(0x57, 0x13), 0xFE);  // FIPS 197, 4.2.1
}

TEST(Aes, MatchesOpensslInPiecesUnderBothRules) {
  std::mt19937_64 engine(17);
  for (int round = 0; round < 1200; ++round) {
    const bool padded = round % 2 == 0;
    const std::size_t unit = padded ? 1 : aes_block_length;
    const Bytes key = random_bytes(engine, 16 + 8 * (engine() % 3));
    const Bytes iv = random_bytes(engine, aes_block_length);
    const Bytes message = random_bytes(engine, unit * (1 + engine() % (400 / unit)));
    Bytes buffer = aes_cbc(true, key, iv, message, padded);
    AesCbcContext c = make_context(key, iv, padded ? AES_PADDING_COUNT : AES_PADDING_NONE);
    ASSERT_EQ(encrypt(c, message, engine), buffer);
    ASSERT_EQ(decrypt(c, buffer), ZEB_SUCCESS);
    ASSERT_EQ(buffer, message);
  }
}

TEST(AesStatus, OfArgumentsThatAreMissing) {
  const std::uint8_t key[32] = {}, iv[16] = {}, in[16] = {};
  std::uint8_t out[16];
  AesKeySchedule schedule;
  EXPECT_EQ(_AES_KeySchedule(nullptr, 16, &schedule, nullptr), ZEB_ERR_NULL_POINTER);
  EXPECT_EQ(_AES_KeySchedule(key, 16, nullptr, &schedule), ZEB_ERR_NULL_POINTER);
  AesCbcContext c;
  const auto set = [&](std::uint32_t use, const std::uint8_t* k, std::uint32_t k_length,
                       const std::uint8_t* v, std::uint32_t v_length) {
    return ZEB_AES_SetInfo(&c, use, k, k_length, v, v_length, 7, 0);
  };
  EXPECT_EQ(ZEB_AES_SetInfo(nullptr, 3, key, 16, iv, 16, 7, 0), ZEB_ERR_NULL_POINTER);
  EXPECT_EQ(set(3, key, 20, iv, 16), ZEB_ERR_KEY_LENGTH);
  EXPECT_EQ(set(3, key, 16, iv, 12), ZEB_ERR_IV_LENGTH);
  EXPECT_EQ(set(3, key, 0, iv, 16), ZEB_SUCCESS);
  EXPECT_EQ(ZEB_AES_CBC_EncInit(&c), ZEB_ERR_NO_ENC_KEY);
  EXPECT_EQ(set(AES_USE_ENCRYPT, key, 32, nullptr, 16), ZEB_SUCCESS);
  EXPECT_EQ(ZEB_AES_CBC_EncInit(&c), ZEB_ERR_NO_IV);
  EXPECT_EQ(ZEB_AES_CBC_DecInit(&c), ZEB_ERR_NO_DEC_KEY);
  EXPECT_EQ(set(AES_USE_KEEP, nullptr, 16, iv, 16), ZEB_SUCCESS);
  EXPECT_EQ(ZEB_AES_CBC_EncInit(&c), ZEB_SUCCESS);
  EXPECT_EQ(ZEB_AES_CBC_EncInit(nullptr), ZEB_ERR_NULL_POINTER);
  EXPECT_EQ(ZEB_AES_CBC_DecInit(nullptr), ZEB_ERR_NULL_POINTER);
  std::uint32_t n = 0;
  for (std::size_t missing = 0; missing < 4; ++missing) {
    const auto given = [&](std::size_t i, auto* p) { return i == missing ? nullptr : p; };
    auto* const context = given(0, &c);
    EXPECT_EQ(ZEB_AES_CBC_EncUpdate(context, given(1, in), 16, given(2, out), given(3, &n)),
              ZEB_ERR_NULL_POINTER);
    EXPECT_EQ(ZEB_AES_CBC_DecUpdate(context, given(1, out), 16, given(2, out), given(3, &n)),
              ZEB_ERR_NULL_POINTER);
    if (missing == 3) continue;
    EXPECT_EQ(ZEB_AES_CBC_EncFinal(context, given(1, out), given(2, &n)), ZEB_ERR_NULL_POINTER);
    EXPECT_EQ(ZEB_AES_CBC_DecFinal(context, given(1, out), given(2, &n)), ZEB_ERR_NULL_POINTER);
  }
  EXPECT_EQ(ZEB_AES_CBC_EncUpdate(&c, nullptr, 0, out, &n), ZEB_ERR_NULL_POINTER);
  EXPECT_EQ(ZEB_AES_CBC_EncUpdate(&c, out, 16, out, nullptr), ZEB_ERR_BUFFER_ARRANGEMENT);
  EXPECT_EQ(ZEB_AES_CBC_DecUpdate(&c, out, 16, out + 1, nullptr), ZEB_ERR_BUFFER_ARRANGEMENT);
  EXPECT_EQ(ZEB_AES_CBC_EncFinal(&c, out, &n), ZEB_ERR_PARAMETER);  // padding rule 7
}

TEST(AesStatus, OfRoomsAndHeldBytes) {
  AesCbcContext c = make_context(Bytes(16, 1), Bytes(16, 2), AES_PADDING_NONE);
  std::uint8_t in[48] = {}, out[48];
  std::uint32_t count = 77;
  EXPECT_EQ(ZEB_AES_CBC_EncFinal(&c, out, &count), ZEB_SUCCESS);
  EXPECT_EQ(ZEB_AES_CBC_DecFinal(&c, out, &count), ZEB_SUCCESS);
  EXPECT_EQ(count, 77U);  // nothing to write leaves the count alone
  EXPECT_EQ(ZEB_AES_CBC_EncUpdate(&c, in, 33, out, &(count = 31)), ZEB_ERR_NO_ROOM);
  EXPECT_EQ(ZEB_AES_CBC_EncUpdate(&c, in, 33, out, &(count = 32)), ZEB_SUCCESS);
  EXPECT_EQ(ZEB_AES_CBC_EncFinal(&c, out, &count), ZEB_ERR_NOT_WHOLE_BLOCKS);
  ZEB_AES_CBC_DecInit(&c);
  EXPECT_EQ(ZEB_AES_CBC_DecUpdate(&c, in, 48, in, &(count = 31)), ZEB_ERR_NO_ROOM);
  EXPECT_EQ(ZEB_AES_CBC_DecUpdate(&c, in, 48, in, &(count = 32)), ZEB_SUCCESS);
  EXPECT_EQ(ZEB_AES_CBC_DecUpdate(&c, in, 16, in, &count), ZEB_ERR_STATE);  // one call a message
  for (const std::size_t ragged : {1U, 15U, 17U, 31U}) {
    Bytes buffer(ragged);
    EXPECT_EQ(decrypt(c, buffer), ZEB_ERR_HELD_COUNT);
  }
}

TEST(AesStatus, OfPaddingWhichIsCheckedButForZero) {
  AesCbcContext c = make_context(Bytes(16, 1), Bytes(16, 2), AES_PADDING_COUNT);
  std::uint8_t out[16];
  std::uint32_t too_small = 15;
  EXPECT_EQ(ZEB_AES_CBC_EncFinal(&c, out, &too_small), ZEB_ERR_NO_ROOM);
  for (const auto& row : read_vectors("padding")) {
    const std::uint8_t count = row[0][0], times = row[1][0], room = row[2][0];
    const std::uint64_t expected = from_big_endian(row[3]);
    Bytes plain(16, 0x55);
    std::fill_n(plain.rbegin(), times, count);
    Bytes buffer = aes_cbc(true, Bytes(16, 1), Bytes(16, 2), plain);
    EXPECT_EQ(decrypt(c, buffer, room), expected);
    EXPECT_TRUE(expected != 0 || buffer == slice(plain, 0, 16U - count));
  }
}

}  // namespace
