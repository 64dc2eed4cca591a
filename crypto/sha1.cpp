#include "crypto/sha1.h"

#include <algorithm>
#include <bit>

#include "base/bytes.h"
#include "base/wipe.h"
#include "crypto/cpu.h"
#include "crypto/sha1_processor.h"

namespace {

using sealwright::crypto_paths;
using sealwright::load_be32;
using sealwright::sha1_compress_by_processor;

constexpr std::uint32_t initial_state[5] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476,
                                            0xC3D2E1F0};
constexpr std::uint32_t length_field_offset = 56;  // where the 64-bit bit length starts in a block
constexpr std::uint8_t inner_pad = 0x36;
constexpr std::uint8_t inner_to_outer_pad = 0x36 ^ 0x5C;

struct WorkingWords {
  std::uint32_t a, b, c, d, e;
};

std::uint32_t choose(std::uint32_t b, std::uint32_t c, std::uint32_t d) {
  return (b & c) | (~b & d);
}
std::uint32_t parity(std::uint32_t b, std::uint32_t c, std::uint32_t d) {
  return b ^ c ^ d;
}
std::uint32_t majority(std::uint32_t b, std::uint32_t c, std::uint32_t d) {
  return (b & c) | (b & d) | (c & d);
}

/// Twenty rounds with one round function and constant, unrolled by five so that the working words
/// change roles instead of places.
template <std::uint32_t (*F)(std::uint32_t, std::uint32_t, std::uint32_t), std::uint32_t K>
void twenty_rounds(WorkingWords& v, const std::uint32_t* schedule) {
  const auto round = [](std::uint32_t a, std::uint32_t& b, std::uint32_t c, std::uint32_t d,
                        std::uint32_t& e, std::uint32_t w) {
    e += std::rotl(a, 5) + F(b, c, d) + K + w;
    b = std::rotl(b, 30);
  };
  for (std::size_t t = 0; t < 20; t += 5) {
    round(v.a, v.b, v.c, v.d, v.e, schedule[t]);
    round(v.e, v.a, v.b, v.c, v.d, schedule[t + 1]);
    round(v.d, v.e, v.a, v.b, v.c, schedule[t + 2]);
    round(v.c, v.d, v.e, v.a, v.b, schedule[t + 3]);
    round(v.b, v.c, v.d, v.e, v.a, schedule[t + 4]);
  }
}

void compress_portable(std::uint32_t* state, const std::uint8_t* data, std::size_t blocks) {
  std::uint32_t w[80];
  const WipeOnExit w_guard(w);  // what is hashed can be a key
  for (; blocks > 0; --blocks, data += sha1_block_length) {
    for (std::size_t t = 0; t < 16; ++t) w[t] = load_be32(data + 4 * t);
    for (std::size_t t = 16; t < 80; ++t) {
      w[t] = std::rotl(w[t - 3] ^ w[t - 8] ^ w[t - 14] ^ w[t - 16], 1);
    }
    WorkingWords v = {state[0], state[1], state[2], state[3], state[4]};
    twenty_rounds<choose, 0x5A827999>(v, w);
    twenty_rounds<parity, 0x6ED9EBA1>(v, w + 20);
    twenty_rounds<majority, 0x8F1BBCDC>(v, w + 40);
    twenty_rounds<parity, 0xCA62C1D6>(v, w + 60);
    state[0] += v.a;
    state[1] += v.b;
    state[2] += v.c;
    state[3] += v.d;
    state[4] += v.e;
  }
}

/// Compresses `blocks` consecutive blocks at `data` (any alignment) into the five chaining words.
void compress(std::uint32_t* state, const std::uint8_t* data, std::size_t blocks) {
  if constexpr (has_cipher_paths) {
    if (crypto_paths().sha1) return sha1_compress_by_processor(state, data, blocks);
  }
  compress_portable(state, data, blocks);
}

std::uint32_t held_bytes(const ZEB_SHA1& context) {
  return context.count_low % sha1_block_length;
}

/// Sets the chaining value as it stands after one whole block (the padded HMAC key).
void resume_after_key_block(ZEB_SHA1& hash, const std::uint32_t* state) {
  std::copy_n(state, 5, hash.state);
  hash.count_high = 0;
  hash.count_low = sha1_block_length;
}

/// Masks the block key in place; what the chaining value is after it goes to `state`.
void set_chain_of_masked_key(ZEB_SHA1_HMAC& context, std::uint8_t* block_key, std::uint8_t mask,
                             std::uint32_t* state) {
  for (std::size_t i = 0; i < sha1_block_length; ++i) block_key[i] ^= mask;
  sealwright::sha1_init(context.hash);
  sealwright::sha1_update(context.hash, {block_key, sha1_block_length});
  std::copy_n(context.hash.state, 5, state);
}

}  // namespace

namespace sealwright {

void sha1_init(ZEB_SHA1& hash) {
  std::copy_n(initial_state, 5, hash.state);
  hash.count_low = 0;
  hash.count_high = 0;
}

void sha1_update(ZEB_SHA1& hash, ByteView bytes) {
  const std::size_t used = held_bytes(hash);
  const std::uint64_t count =
      ((std::uint64_t{hash.count_high} << 32) | hash.count_low) + bytes.size();
  hash.count_low = static_cast<std::uint32_t>(count);
  hash.count_high = static_cast<std::uint32_t>(count >> 32);

  const std::size_t room = sha1_block_length - used;
  if (bytes.size() < room) {
    std::ranges::copy(bytes, hash.block + used);
    return;
  }
  if (used != 0) {
    std::ranges::copy(bytes.first(room), hash.block + used);
    compress(hash.state, hash.block, 1);
    bytes = bytes.subspan(room);
  }
  compress(hash.state, bytes.data(), bytes.size() / sha1_block_length);
  std::ranges::copy(bytes.last(bytes.size() % sha1_block_length), hash.block);
}

void sha1_final(ZEB_SHA1& hash, std::uint8_t* digest) {
  std::uint32_t used = held_bytes(hash);
  hash.block[used++] = 0x80;
  if (used > length_field_offset) {
    std::fill(hash.block + used, hash.block + sha1_block_length, std::uint8_t{0});
    compress(hash.state, hash.block, 1);
    used = 0;
  }
  std::fill(hash.block + used, hash.block + length_field_offset, std::uint8_t{0});
  const std::uint32_t bits_high = (hash.count_high << 3) | (hash.count_low >> 29);
  store_be32(hash.block + length_field_offset, bits_high);
  store_be32(hash.block + length_field_offset + 4, hash.count_low << 3);
  compress(hash.state, hash.block, 1);
  for (std::size_t i = 0; i < 5; ++i) store_be32(digest + 4 * i, hash.state[i]);
}

void sha1(std::uint8_t* digest, std::initializer_list<ByteView> parts) {
  ZEB_SHA1 hash;
  const WipeOnExit hash_guard(hash);
  sha1_init(hash);
  for (const ByteView part : parts) sha1_update(hash, part);
  sha1_final(hash, digest);
}

Status sha1_message(const std::uint8_t* message, std::uint32_t length, std::uint8_t* digest,
                    const Sha1StepCodes& codes) {
  ZEB_SHA1 hash = {};
  if (ZEB_SHA1_Init(&hash) != ZEB_SUCCESS) return codes.init;
  if (ZEB_SHA1_Update(&hash, message, length) != ZEB_SUCCESS) return codes.update;
  if (ZEB_SHA1_Final(&hash, digest) != ZEB_SUCCESS) return codes.final;
  return ZEB_SUCCESS;
}

}  // namespace sealwright

Status ZEB_SHA1_Init(ZEB_SHA1* context) {
  if (context == nullptr) return ZEB_ERR_NULL_POINTER;
  sealwright::sha1_init(*context);
  return ZEB_SUCCESS;
}

Status ZEB_SHA1_Update(ZEB_SHA1* context, const std::uint8_t* data, std::uint32_t length) {
  if (context == nullptr || data == nullptr) return ZEB_ERR_NULL_POINTER;
  sealwright::sha1_update(*context, {data, length});
  return ZEB_SUCCESS;
}

Status ZEB_SHA1_Final(ZEB_SHA1* context, std::uint8_t* digest) {
  if (context == nullptr || digest == nullptr) return ZEB_ERR_NULL_POINTER;
  sealwright::sha1_final(*context, digest);
  return ZEB_SUCCESS;
}

void zeb_SHA1_Transform(const std::uint8_t* block, std::uint32_t* state) {
  compress(state, block, 1);
}

Status ZEB_SHA1_HMAC_SetInfo(ZEB_SHA1_HMAC* context, const std::uint8_t* key,
                             std::uint32_t key_length) {
  std::uint8_t block_key[sha1_block_length] = {};
  const WipeOnExit key_guard(block_key);
  if (key_length > sha1_block_length) {
    // Nothing is added of a null key.
    sealwright::sha1(block_key, {{key, key == nullptr ? 0 : key_length}});
  } else {
    std::copy_n(key, key_length, block_key);
  }
  set_chain_of_masked_key(*context, block_key, inner_pad, context->inner_state);
  set_chain_of_masked_key(*context, block_key, inner_to_outer_pad, context->outer_state);
  return ZEB_SUCCESS;
}

Status ZEB_SHA1_HMAC_Init(ZEB_SHA1_HMAC* context) {
  resume_after_key_block(context->hash, context->inner_state);
  return ZEB_SUCCESS;
}

Status ZEB_SHA1_HMAC_Update(ZEB_SHA1_HMAC* context, const std::uint8_t* data,
                            std::uint32_t length) {
  // Quirk: a null pointer appends nothing and is no failure; callers of the library that read the
  // statuses of all four HMAC steps depend on it.
  if (data != nullptr) sealwright::sha1_update(context->hash, {data, length});
  return ZEB_SUCCESS;
}

Status ZEB_SHA1_HMAC_Final(ZEB_SHA1_HMAC* context, std::uint8_t* mac) {
  std::uint8_t inner_digest[sha1_digest_length];
  sealwright::sha1_final(context->hash, inner_digest);
  resume_after_key_block(context->hash, context->outer_state);
  sealwright::sha1_update(context->hash, inner_digest);
  sealwright::sha1_final(context->hash, mac);
  return ZEB_SUCCESS;
}
