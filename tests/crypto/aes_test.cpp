#include <gtest/gtest.h>

#include "crypto/aes_cbc.h"
#include "tests/support/openssl.h"

namespace {

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
  AesCbcContext c = make_context(Bytes(16, 1), Bytes(16, 2), AES_PADDING_NONE);
  std::uint8_t in[16] = {}, out[16];
  std::uint32_t count = 0;
  for (int missing = 0; missing < 4; ++missing) {
    const auto unless = [&](int index, auto* given) { return index == missing ? nullptr : given; };
    AesCbcContext* context = unless(0, &c);
    std::uint32_t* room = unless(3, &count);
    EXPECT_EQ(ZEB_AES_CBC_EncUpdate(context, unless(1, in), 1, unless(2, out), room), 0xFFFF0010U);
    EXPECT_EQ(ZEB_AES_CBC_DecUpdate(context, unless(1, in), 1, unless(2, in), room), 0xFFFF0010U);
    if (missing == 1) continue;
    EXPECT_EQ(ZEB_AES_CBC_EncFinal(context, unless(2, out), room), 0xFFFF0010U);
    EXPECT_EQ(ZEB_AES_CBC_DecFinal(context, unless(2, out), room), 0xFFFF0010U);
  }
  EXPECT_EQ(ZEB_AES_SetInfo(&c, 3, in, 15, in, 16, 0, 0), 0xFFFF0040U);
  EXPECT_EQ(ZEB_AES_SetInfo(&c, 3, in, 16, in, 15, 0, 0), 0xFFFF0041U);
  EXPECT_EQ(ZEB_AES_SetInfo(&c, 1, in, 16, nullptr, 16, AES_PADDING_COUNT, 77), ZEB_SUCCESS);
  EXPECT_EQ(ZEB_AES_CBC_EncInit(&c), 0xFFFF0023U);
  EXPECT_EQ(ZEB_AES_CBC_DecInit(&c), 0xFFFF0022U);
  EXPECT_EQ(ZEB_AES_SetInfo(&c, 0x82, in, 16, in, 16, 0, 0), ZEB_SUCCESS);  // keeps the rest
  EXPECT_EQ(ZEB_AES_CBC_DecInit(&c), ZEB_SUCCESS);
  EXPECT_TRUE(c.padding == AES_PADDING_COUNT && c.reserved == 77);
}

TEST(AesStatus, OfRoomsAndHeldBytes) {
  AesCbcContext c = make_context(Bytes(16, 1), Bytes(16, 2), AES_PADDING_NONE);
  std::uint8_t in[48] = {}, out[48];
  std::uint32_t count = 77;
  EXPECT_EQ(ZEB_AES_CBC_EncFinal(&c, out, &count), ZEB_SUCCESS);
  EXPECT_EQ(ZEB_AES_CBC_DecFinal(&c, out, &count), ZEB_SUCCESS);
  EXPECT_EQ(count, 77U);  // nothing to write leaves the count alone
  EXPECT_EQ(ZEB_AES_CBC_EncUpdate(&c, in, 1, in, nullptr), 0xFFFF0011U);
  EXPECT_EQ(ZEB_AES_CBC_DecUpdate(&c, in, 16, out, nullptr), 0xFFFF0011U);
  EXPECT_EQ(ZEB_AES_CBC_EncUpdate(&c, in, 33, out, &(count = 31)), 0xFFFF0024U);
  EXPECT_EQ(ZEB_AES_CBC_EncUpdate(&c, in, 33, out, &(count = 32)), ZEB_SUCCESS);
  EXPECT_EQ(ZEB_AES_CBC_EncFinal(&c, out, &count), 0xFFFF0042U);
  c.padding = AES_PADDING_COUNT;
  EXPECT_EQ(ZEB_AES_CBC_EncFinal(&c, out, &(count = 15)), 0xFFFF0024U);
  ZEB_AES_CBC_DecInit(&c);
  EXPECT_EQ(ZEB_AES_CBC_DecUpdate(&c, in, 48, in, &(count = 31)), 0xFFFF0024U);
  EXPECT_EQ(ZEB_AES_CBC_DecUpdate(&c, in, 48, in, &(count = 32)), ZEB_SUCCESS);
  EXPECT_EQ(ZEB_AES_CBC_DecUpdate(&c, in, 16, in, &count), 0xFFFF00FFU);  // one call a message
  for (const std::size_t ragged : {1, 15, 17, 31}) {
    Bytes buffer(ragged);
    EXPECT_EQ(decrypt(c, buffer), 0xFFFF0043U);
  }
}

TEST(AesStatus, OfPaddingWhichIsCheckedButForZero) {
  AesCbcContext c = make_context(Bytes(16, 1), Bytes(16, 2), AES_PADDING_COUNT);
  const auto open = [&](std::uint8_t count, int times, std::uint32_t room = 0) {
    Bytes plain(16, 0x55);
    std::fill_n(plain.rbegin(), times, count);
    Bytes buffer = aes_cbc(true, Bytes(16, 1), Bytes(16, 2), plain);
    const Status status = decrypt(c, buffer, room);
    EXPECT_TRUE(status != ZEB_SUCCESS || buffer == slice(plain, 0, 16U - count));
    return status;
  };
  EXPECT_EQ(open(17, 1), 0xFFFF0031U);
  EXPECT_EQ(open(3, 2), 0xFFFF0031U);
  EXPECT_EQ(open(3, 3, 12), 0xFFFF0024U);
  EXPECT_EQ(open(3, 3, 13), ZEB_SUCCESS);
  EXPECT_EQ(open(16, 15), 0xFFFF0031U);
  EXPECT_EQ(open(16, 16), ZEB_SUCCESS);
  EXPECT_EQ(open(0, 1), ZEB_SUCCESS);  // 0 passes for no padding
}

}  // namespace
