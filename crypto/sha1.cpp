#include "crypto/sha1.h"

#include <algorithm>
#include <bit>

#include "crypto/bytes.h"
#include "crypto/sha1_blocks.h"

namespace {

constexpr std::uint32_t initial_state[5] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476,
                                            0xC3D2E1F0};
constexpr std::uint32_t length_field_offset = 56;  // where the 64-bit bit length starts in a block
constexpr std::uint8_t inner_pad = 0x36;
constexpr std::uint8_t inner_to_outer_pad = 0x36 ^ 0x5C;

std::uint32_t held_bytes(const ZEB_SHA1& context) {
  return context.count_low % sha1_block_length;
}

/// Sets the chaining value as it stands after one whole block (the padded HMAC key).
void resume_after_key_block(ZEB_SHA1& hash, const std::uint32_t* state) {
  std::copy_n(state, 5, hash.state);
  hash.count_high = 0;
  hash.count_low = sha1_block_length;
}

}  // namespace

Status ZEB_SHA1_Init(ZEB_SHA1* context) {
  if (context == nullptr) return ZEB_ERR_NULL_POINTER;
  std::copy_n(initial_state, 5, context->state);
  context->count_low = 0;
  context->count_high = 0;
  return ZEB_SUCCESS;
}

Status ZEB_SHA1_Update(ZEB_SHA1* context, const std::uint8_t* data, std::uint32_t length) {
  if (context == nullptr || data == nullptr) return ZEB_ERR_NULL_POINTER;
  const std::uint32_t used = held_bytes(*context);
  const std::uint32_t room = sha1_block_length - used;
  context->count_low += length;
  if (context->count_low < length) ++context->count_high;

  if (length < room) {
    std::copy_n(data, length, context->block + used);
    return ZEB_SUCCESS;
  }
  if (used != 0) {
    std::copy_n(data, room, context->block + used);
    zeb_SHA1_Transform(context->block, context->state);
    data += room;
    length -= room;
  }
  const std::uint32_t blocks = length / sha1_block_length;
  sha1_compress_blocks(context->state, data, blocks);
  const std::uint32_t tail = length % sha1_block_length;
  std::copy_n(data + (length - tail), tail, context->block);
  return ZEB_SUCCESS;
}

Status ZEB_SHA1_Final(ZEB_SHA1* context, std::uint8_t* digest) {
  if (context == nullptr || digest == nullptr) return ZEB_ERR_NULL_POINTER;
  std::uint32_t used = held_bytes(*context);
  context->block[used++] = 0x80;
  if (used > length_field_offset) {
    std::fill(context->block + used, context->block + sha1_block_length, std::uint8_t{0});
    zeb_SHA1_Transform(context->block, context->state);
    used = 0;
  }
  std::fill(context->block + used, context->block + length_field_offset, std::uint8_t{0});
  const std::uint32_t bits_high = (context->count_high << 3) | (context->count_low >> 29);
  store_be32(context->block + length_field_offset, bits_high);
  store_be32(context->block + length_field_offset + 4, context->count_low << 3);
  zeb_SHA1_Transform(context->block, context->state);
  for (std::size_t i = 0; i < 5; ++i) store_be32(digest + 4 * i, context->state[i]);
  return ZEB_SUCCESS;
}

void zeb_SHA1_Transform(const std::uint8_t* block, std::uint32_t* state) {
  sha1_compress_blocks(state, block, 1);
}

Status ZEB_SHA1_HMAC_SetInfo(ZEB_SHA1_HMAC* context, const std::uint8_t* key,
                             std::uint32_t key_length) {
  std::uint8_t block_key[sha1_block_length] = {};
  if (key_length > sha1_block_length) {
    ZEB_SHA1_Init(&context->hash);
    ZEB_SHA1_Update(&context->hash, key, key_length);
    ZEB_SHA1_Final(&context->hash, block_key);
  } else {
    std::copy_n(key, key_length, block_key);
  }
  const auto chain_of_masked_key = [&](std::uint8_t mask, std::uint32_t* state) {
    for (std::uint8_t& byte : block_key) byte ^= mask;
    ZEB_SHA1_Init(&context->hash);
    ZEB_SHA1_Update(&context->hash, block_key, sha1_block_length);
    std::copy_n(context->hash.state, 5, state);
  };
  chain_of_masked_key(inner_pad, context->inner_state);
  chain_of_masked_key(inner_to_outer_pad, context->outer_state);
  return ZEB_SUCCESS;
}

Status ZEB_SHA1_HMAC_Init(ZEB_SHA1_HMAC* context) {
  resume_after_key_block(context->hash, context->inner_state);
  return ZEB_SUCCESS;
}

Status ZEB_SHA1_HMAC_Update(ZEB_SHA1_HMAC* context, const std::uint8_t* data,
                            std::uint32_t length) {
  // The status is dropped on purpose: an HMAC step never reports a failure.
  ZEB_SHA1_Update(&context->hash, data, length);
  return ZEB_SUCCESS;
}

Status ZEB_SHA1_HMAC_Final(ZEB_SHA1_HMAC* context, std::uint8_t* mac) {
  std::uint8_t inner_digest[sha1_digest_length];
  ZEB_SHA1_Final(&context->hash, inner_digest);
  resume_after_key_block(context->hash, context->outer_state);
  ZEB_SHA1_Update(&context->hash, inner_digest, sha1_digest_length);
  ZEB_SHA1_Final(&context->hash, mac);
  return ZEB_SUCCESS;
}

Status sha1_message(const std::uint8_t* message, std::uint32_t length, std::uint8_t* digest,
                    const Sha1StepCodes& codes) {
  ZEB_SHA1 hash = {};
  if (ZEB_SHA1_Init(&hash) != ZEB_SUCCESS) return codes.init;
  if (ZEB_SHA1_Update(&hash, message, length) != ZEB_SUCCESS) return codes.update;
  if (ZEB_SHA1_Final(&hash, digest) != ZEB_SUCCESS) return codes.final;
  return ZEB_SUCCESS;
}
