#include <gtest/gtest.h>

#include "crypto/aes_cbc.h"
#include "tests/support/openssl_util.h"
#include "tests/support/test_bytes.h"

namespace {

AesCbcContext make_context(const Bytes& key, const Bytes& iv, std::uint32_t padding) {
  AesCbcContext context;
  EXPECT_EQ(ZEB_AES_SetInfo(&context, AES_USE_DEFAULT, key.data(), length_of(key), iv.data(),
                            length_of(iv), padding, 0),
            ZEB_SUCCESS);
  return context;
}

/// Encrypts in pieces of random lengths.
Bytes encrypt(AesCbcContext& context, const Bytes& message, std::mt19937_64& engine) {
  EXPECT_EQ(ZEB_AES_CBC_EncInit(&context), ZEB_SUCCESS);
  Bytes cipher(message.size() + 2 * aes_block_length);
  std::uint32_t written = 0;
  std::uint32_t count = 0;
  for (std::uint32_t at = 0; at < message.size(); written += count) {
    const auto wanted = static_cast<std::uint32_t>(engine() % 50 * (engine() % 4));
    const std::uint32_t piece = std::min(wanted, length_of(message) - at);
    count = length_of(cipher) - written;
    EXPECT_EQ(ZEB_AES_CBC_EncUpdate(&context, &message[at], piece, &cipher[written], &count),
              ZEB_SUCCESS);
    at += piece;
    EXPECT_EQ(written + count, at - at % aes_block_length);
  }
  count = 0;
  EXPECT_EQ(ZEB_AES_CBC_EncFinal(&context, &cipher[written], &count), ZEB_SUCCESS);
  cipher.resize(written + count);
  return cipher;
}

/// Opens `buffer` in place, `room` bytes stated for the last block.
Status decrypt(AesCbcContext& context, Bytes& buffer, std::uint32_t room = 0) {
  EXPECT_EQ(ZEB_AES_CBC_DecInit(&context), ZEB_SUCCESS);
  std::uint32_t written = 0;
  const Status status =
      ZEB_AES_CBC_DecUpdate(&context, buffer.data(), length_of(buffer), buffer.data(), &written);
  EXPECT_EQ(status, ZEB_SUCCESS);
  const Status last = ZEB_AES_CBC_DecFinal(&context, buffer.data() + written, &room);
  buffer.resize(written + room);
  return last;
}

Bytes openssl_encrypt(const Bytes& key, const Bytes& iv, const Bytes& message, bool padded) {
  const EVP_CIPHER* ciphers[] = {EVP_aes_128_cbc(), EVP_aes_192_cbc(), EVP_aes_256_cbc()};
  const Owned<EVP_CIPHER_CTX> context(EVP_CIPHER_CTX_new());
  Bytes cipher(message.size() + aes_block_length);
  int written = 0;
  int rest = 0;
  EVP_EncryptInit_ex(context.get(), ciphers[key.size() / 8 - 2], nullptr, key.data(), iv.data());
  EVP_CIPHER_CTX_set_padding(context.get(), padded ? 1 : 0);
  EVP_EncryptUpdate(context.get(), cipher.data(), &written, message.data(),
                    static_cast<int>(message.size()));
  require(EVP_EncryptFinal_ex(context.get(), cipher.data() + written, &rest) == 1, "no AES");
  cipher.resize(static_cast<std::size_t>(written + rest));
  return cipher;
}

TEST(Aes, MeetsPublishedVectors) {
  for (const Vector& vector : read_vectors("aes.txt")) {
    const Bytes& key = vector.at("key");
    AesKeySchedule encryption;
    AesKeySchedule decryption;
    ASSERT_EQ(_AES_KeySchedule(key.data(), length_of(key), &encryption, &decryption), ZEB_SUCCESS);
    Bytes block = vector.at("plain");
    zeb_AES_Encrypt(block.data(), &encryption);
    EXPECT_EQ(block, vector.at("cipher"));
    zeb_AES_Decrypt(block.data(), &decryption);
    EXPECT_EQ(block, vector.at("plain"));
  }
  std::mt19937_64 engine(16);
  for (const Vector& vector : read_vectors("aes_cbc.txt")) {
    AesCbcContext context = make_context(vector.at("key"), vector.at("iv"), AES_PADDING_NONE);
    Bytes buffer = encrypt(context, vector.at("plain"), engine);
    EXPECT_EQ(buffer, vector.at("cipher"));
    EXPECT_EQ(decrypt(context, buffer), ZEB_SUCCESS);
    EXPECT_EQ(buffer, vector.at("plain"));
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
    Bytes buffer = openssl_encrypt(key, iv, message, padded);
    AesCbcContext context = make_context(key, iv, padded ? AES_PADDING_COUNT : AES_PADDING_NONE);
    ASSERT_EQ(encrypt(context, message, engine), buffer);
    ASSERT_EQ(decrypt(context, buffer), ZEB_SUCCESS);
    ASSERT_EQ(buffer, message);
  }
}

TEST(AesStatus, SetUp) {
  const Bytes key(32, 3);
  const std::uint8_t* k = key.data();
  AesKeySchedule schedule;
  AesCbcContext c;
  EXPECT_EQ(_AES_KeySchedule(nullptr, 16, &schedule, &schedule), 0xFFFF0010U);
  EXPECT_EQ(_AES_KeySchedule(k, 16, nullptr, &schedule), 0xFFFF0010U);
  EXPECT_EQ(_AES_KeySchedule(k, 20, &schedule, nullptr), 0xFFFF0040U);
  EXPECT_EQ(ZEB_AES_SetInfo(nullptr, 3, k, 16, k, 16, 0, 0), 0xFFFF0010U);
  EXPECT_EQ(ZEB_AES_SetInfo(&c, 3, k, 31, k, 16, 0, 0), 0xFFFF0040U);
  EXPECT_EQ(ZEB_AES_SetInfo(&c, 3, k, 16, k, 15, 0, 0), 0xFFFF0041U);
  EXPECT_EQ(ZEB_AES_CBC_EncInit(nullptr), 0xFFFF0010U);
  EXPECT_EQ(ZEB_AES_CBC_DecInit(nullptr), 0xFFFF0010U);
  // An encryption schedule alone, then the rest without clearing the context.
  EXPECT_EQ(ZEB_AES_SetInfo(&c, 1, k, 32, nullptr, 16, AES_PADDING_COUNT, 77), ZEB_SUCCESS);
  EXPECT_EQ(ZEB_AES_CBC_EncInit(&c), 0xFFFF0023U);
  EXPECT_EQ(ZEB_AES_CBC_DecInit(&c), 0xFFFF0022U);
  EXPECT_EQ(ZEB_AES_SetInfo(&c, 0x82, k, 24, k, 16, 0, 0), ZEB_SUCCESS);
  EXPECT_EQ(ZEB_AES_CBC_DecInit(&c), ZEB_SUCCESS);
  EXPECT_EQ(c.padding, AES_PADDING_COUNT);
  EXPECT_EQ(c.reserved, 77U);
  EXPECT_EQ(ZEB_AES_SetInfo(&c, 3, nullptr, 16, k, 16, 0, 0), ZEB_SUCCESS);
  EXPECT_EQ(ZEB_AES_CBC_EncInit(&c), 0xFFFF0021U);
  EXPECT_EQ(ZEB_AES_SetInfo(&c, 3, k, 16, k, 0, 0, 0), ZEB_SUCCESS);
  EXPECT_EQ(ZEB_AES_CBC_DecInit(&c), 0xFFFF0023U);
}

TEST(AesStatus, Encryption) {
  AesCbcContext c = make_context(Bytes(16, 1), Bytes(16, 2), AES_PADDING_NONE);
  std::uint8_t in[33] = {};
  std::uint8_t out[33];
  std::uint32_t count = 77;
  ZEB_AES_CBC_EncInit(&c);
  EXPECT_EQ(ZEB_AES_CBC_EncFinal(&c, out, &count), ZEB_SUCCESS);
  EXPECT_EQ(count, 77U);  // nothing to write leaves the count alone
  EXPECT_EQ(ZEB_AES_CBC_EncUpdate(nullptr, in, 1, out, &count), 0xFFFF0010U);
  EXPECT_EQ(ZEB_AES_CBC_EncUpdate(&c, nullptr, 1, out, &count), 0xFFFF0010U);
  EXPECT_EQ(ZEB_AES_CBC_EncUpdate(&c, in, 1, nullptr, &count), 0xFFFF0010U);
  EXPECT_EQ(ZEB_AES_CBC_EncUpdate(&c, in, 1, in, nullptr), 0xFFFF0011U);
  EXPECT_EQ(ZEB_AES_CBC_EncUpdate(&c, in, 1, out, nullptr), 0xFFFF0010U);
  EXPECT_EQ(ZEB_AES_CBC_EncUpdate(&c, in, 33, out, &(count = 31)), 0xFFFF0024U);
  EXPECT_EQ(ZEB_AES_CBC_EncUpdate(&c, in, 33, out, &(count = 32)), ZEB_SUCCESS);
  EXPECT_EQ(ZEB_AES_CBC_EncFinal(nullptr, out, &count), 0xFFFF0010U);
  EXPECT_EQ(ZEB_AES_CBC_EncFinal(&c, nullptr, &count), 0xFFFF0010U);
  EXPECT_EQ(ZEB_AES_CBC_EncFinal(&c, out, nullptr), 0xFFFF0010U);
  EXPECT_EQ(ZEB_AES_CBC_EncFinal(&c, out, &count), 0xFFFF0042U);
  c.padding = 0xFFF10003;
  EXPECT_EQ(ZEB_AES_CBC_EncFinal(&c, out, &count), 0xFFFF0020U);
  c.padding = AES_PADDING_COUNT;
  EXPECT_EQ(ZEB_AES_CBC_EncFinal(&c, out, &(count = 15)), 0xFFFF0024U);
  c.buffered = 17;
  EXPECT_EQ(ZEB_AES_CBC_EncFinal(&c, out, &count), 0xFFFF00FFU);
}

TEST(AesStatus, Decryption) {
  AesCbcContext c = make_context(Bytes(16, 1), Bytes(16, 2), AES_PADDING_NONE);
  std::uint8_t in[48] = {};
  std::uint8_t out[16];
  std::uint32_t count = 77;
  ZEB_AES_CBC_DecInit(&c);
  EXPECT_EQ(ZEB_AES_CBC_DecFinal(&c, out, &count), ZEB_SUCCESS);
  EXPECT_EQ(count, 77U);  // nothing to write leaves the count alone
  EXPECT_EQ(ZEB_AES_CBC_DecUpdate(nullptr, in, 16, in, &count), 0xFFFF0010U);
  EXPECT_EQ(ZEB_AES_CBC_DecUpdate(&c, nullptr, 16, in, &count), 0xFFFF0010U);
  EXPECT_EQ(ZEB_AES_CBC_DecUpdate(&c, in, 16, nullptr, &count), 0xFFFF0010U);
  EXPECT_EQ(ZEB_AES_CBC_DecUpdate(&c, in, 16, out, nullptr), 0xFFFF0011U);
  EXPECT_EQ(ZEB_AES_CBC_DecUpdate(&c, in, 16, in, nullptr), 0xFFFF0010U);
  EXPECT_EQ(ZEB_AES_CBC_DecUpdate(&c, in, 48, in, &(count = 31)), 0xFFFF0024U);
  EXPECT_EQ(ZEB_AES_CBC_DecUpdate(&c, in, 48, in, &(count = 32)), ZEB_SUCCESS);
  EXPECT_EQ(ZEB_AES_CBC_DecUpdate(&c, in, 16, in, &count), 0xFFFF00FFU);  // one call a message
  EXPECT_EQ(ZEB_AES_CBC_DecFinal(nullptr, out, &count), 0xFFFF0010U);
  EXPECT_EQ(ZEB_AES_CBC_DecFinal(&c, nullptr, &count), 0xFFFF0010U);
  EXPECT_EQ(ZEB_AES_CBC_DecFinal(&c, out, nullptr), 0xFFFF0010U);
  c.padding = 0xFFF10003;
  EXPECT_EQ(ZEB_AES_CBC_DecFinal(&c, out, &count), 0xFFFF0020U);
  for (const std::size_t ragged : {1U, 15U, 17U, 31U}) {
    Bytes buffer(ragged);
    EXPECT_EQ(decrypt(c, buffer), 0xFFFF0043U);
  }
}

TEST(AesStatus, PaddingIsCheckedButForZero) {
  AesCbcContext c = make_context(Bytes(16, 1), Bytes(16, 2), AES_PADDING_COUNT);
  const auto open = [&](std::uint8_t count, std::size_t times, std::uint32_t room = 0) {
    Bytes plain(16, 0x55);
    std::fill_n(plain.rbegin(), times, count);
    Bytes buffer = openssl_encrypt(Bytes(16, 1), Bytes(16, 2), plain, false);
    const Status status = decrypt(c, buffer, room);
    plain.resize(16U - count % 17);
    EXPECT_TRUE(status != ZEB_SUCCESS || buffer == plain);
    return status;
  };
  EXPECT_EQ(open(17, 1), 0xFFFF0031U);
  EXPECT_EQ(open(3, 2), 0xFFFF0031U);
  EXPECT_EQ(open(3, 3), ZEB_SUCCESS);
  EXPECT_EQ(open(3, 3, 12), 0xFFFF0024U);
  EXPECT_EQ(open(3, 3, 13), ZEB_SUCCESS);
  EXPECT_EQ(open(16, 15), 0xFFFF0031U);
  EXPECT_EQ(open(16, 16), ZEB_SUCCESS);
  EXPECT_EQ(open(0, 1), ZEB_SUCCESS);  // 0 passes for no padding
}

}  // namespace
