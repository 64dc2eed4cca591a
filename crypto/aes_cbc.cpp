#include "crypto/aes_cbc.h"

#include <algorithm>

#include "base/bytes.h"
#include "base/wipe.h"
#include "crypto/aes_processor.h"
#include "crypto/cpu.h"
#include "crypto/mem.h"

namespace {

using sealwright::aes_cbc_decrypt_by_processor;
using sealwright::aes_cbc_encrypt_by_processor;
using sealwright::crypto_paths;
using sealwright::length_of;

void encrypt_portable(const AesKeySchedule& encryption, std::uint8_t* chain, const std::uint8_t* in,
                      std::uint8_t* out, std::size_t blocks) {
  for (; blocks > 0; --blocks, in += aes_block_length, out += aes_block_length) {
    tmkx_memxor(chain, chain, in, aes_block_length);
    zeb_AES_Encrypt(chain, &encryption);
    std::copy_n(chain, aes_block_length, out);
  }
}

void decrypt_portable(const AesKeySchedule& decryption, std::uint8_t* chain, std::uint8_t* in_out,
                      std::size_t blocks) {
  for (; blocks > 0; --blocks, in_out += aes_block_length) {
    std::uint8_t ciphertext[aes_block_length];
    std::copy_n(in_out, aes_block_length, ciphertext);
    zeb_AES_Decrypt(in_out, &decryption);
    tmkx_memxor(in_out, in_out, chain, aes_block_length);
    std::copy_n(ciphertext, aes_block_length, chain);
  }
}

/// Encrypts `blocks` whole blocks of a message from `in` to `out` and leaves the last one in
/// `chain`.
void encrypt_blocks(const AesKeySchedule& key, std::uint8_t* chain, const std::uint8_t* in,
                    std::uint8_t* out, std::size_t blocks) {
  if constexpr (has_cipher_paths) {
    if (crypto_paths().aes) return aes_cbc_encrypt_by_processor(key, chain, in, out, blocks);
  }
  encrypt_portable(key, chain, in, out, blocks);
}

/// Decrypts `blocks` whole blocks of a message in place and leaves the last ciphertext in `chain`.
void decrypt_blocks(const AesKeySchedule& key, std::uint8_t* chain, std::uint8_t* in_out,
                    std::size_t blocks) {
  if constexpr (has_cipher_paths) {
    if (crypto_paths().aes) return aes_cbc_decrypt_by_processor(key, chain, in_out, blocks);
  }
  decrypt_portable(key, chain, in_out, blocks);
}

bool is_too_small(std::uint32_t room, std::uint32_t wanted) {
  return room != 0 && room < wanted;
}

Status start_message(AesCbcContext* context, std::uint32_t key_flag, Status without_key) {
  if (context == nullptr) return ZEB_ERR_NULL_POINTER;
  if ((context->flags & key_flag) == 0) return without_key;
  if ((context->flags & AES_FLAG_IV) == 0) return ZEB_ERR_NO_IV;
  std::copy_n(context->iv, aes_block_length, context->chain);
  context->buffered = 0;
  return ZEB_SUCCESS;
}

}  // namespace

Status ZEB_AES_SetInfo(AesCbcContext* context, std::uint32_t keyUse, const std::uint8_t* key,
                       std::uint32_t keyLen, const std::uint8_t* iv, std::uint32_t ivLen,
                       std::uint32_t padding, std::uint32_t reserved) {
  if (context == nullptr) return ZEB_ERR_NULL_POINTER;
  if ((keyUse & AES_USE_KEEP) == 0) *context = {};
  if (key != nullptr && keyLen != 0 && (keyUse & (AES_USE_ENCRYPT | AES_USE_BOTH)) != 0) {
    const bool both = (keyUse & AES_USE_BOTH) != 0;
    const Status status =
        _AES_KeySchedule(key, keyLen, &context->encryption, both ? &context->decryption : nullptr);
    if (status != ZEB_SUCCESS) return status;
    context->flags |= both ? AES_FLAG_ENC_KEY | AES_FLAG_DEC_KEY : AES_FLAG_ENC_KEY;
  }
  if (iv != nullptr && ivLen != 0) {
    if (ivLen != aes_block_length) return ZEB_ERR_IV_LENGTH;
    std::copy_n(iv, aes_block_length, context->iv);
    context->flags |= AES_FLAG_IV;
  }
  if (padding != 0) context->padding = padding;
  if (reserved != 0) context->reserved = reserved;
  return ZEB_SUCCESS;
}

Status ZEB_AES_CBC_EncInit(AesCbcContext* context) {
  return start_message(context, AES_FLAG_ENC_KEY, ZEB_ERR_NO_ENC_KEY);
}

Status ZEB_AES_CBC_EncUpdate(AesCbcContext* context, const std::uint8_t* in, std::uint32_t inLen,
                             std::uint8_t* out, std::uint32_t* outLen) {
  if (context == nullptr || in == nullptr || out == nullptr) return ZEB_ERR_NULL_POINTER;
  if (in == out) return ZEB_ERR_BUFFER_ARRANGEMENT;
  if (outLen == nullptr) return ZEB_ERR_NULL_POINTER;
  const std::uint32_t held = context->buffered;
  const std::uint64_t total = std::uint64_t{held} + inLen;
  if (held >= aes_block_length || total > UINT32_MAX) return ZEB_ERR_STATE;
  if (total < aes_block_length) {
    std::copy_n(in, inLen, context->buffer + held);
    context->buffered = static_cast<std::uint32_t>(total);
    *outLen = 0;
    return ZEB_SUCCESS;
  }
  const auto written = static_cast<std::uint32_t>(total - total % aes_block_length);
  if (is_too_small(*outLen, written)) return ZEB_ERR_NO_ROOM;

  // The head completes the held block, the body is whole blocks, the tail is held.
  const ByteView input = {in, inLen};
  const ByteView head = input.first(held == 0 ? 0 : aes_block_length - held);
  const ByteView tail = input.last(total % aes_block_length);
  const ByteView body = input.subspan(head.size(), inLen - head.size() - tail.size());
  if (!head.empty()) {
    std::ranges::copy(head, context->buffer + held);
    encrypt_blocks(context->encryption, context->chain, context->buffer, out, 1);
    out += aes_block_length;
  }
  encrypt_blocks(context->encryption, context->chain, body.data(), out,
                 body.size() / aes_block_length);
  std::ranges::copy(tail, context->buffer);
  context->buffered = length_of(tail);
  *outLen = written;
  return ZEB_SUCCESS;
}

Status ZEB_AES_CBC_EncFinal(AesCbcContext* context, std::uint8_t* out, std::uint32_t* outLen) {
  if (context == nullptr || out == nullptr || outLen == nullptr) return ZEB_ERR_NULL_POINTER;
  const std::uint32_t pad =
      zeb_SetPadding(context->buffer, context->buffered, aes_block_length, context->padding);
  if (pad > aes_block_length) return pad;
  if (context->buffered + pad == 0) return ZEB_SUCCESS;
  if (context->buffered + pad != aes_block_length) return ZEB_ERR_STATE;
  if (is_too_small(*outLen, aes_block_length)) return ZEB_ERR_NO_ROOM;
  encrypt_blocks(context->encryption, context->chain, context->buffer, out, 1);
  *outLen = aes_block_length;
  return ZEB_SUCCESS;
}

Status ZEB_AES_CBC_DecInit(AesCbcContext* context) {
  return start_message(context, AES_FLAG_DEC_KEY, ZEB_ERR_NO_DEC_KEY);
}

Status ZEB_AES_CBC_DecUpdate(AesCbcContext* context, std::uint8_t* inOut, std::uint32_t len,
                             std::uint8_t* sameBuffer, std::uint32_t* outLen) {
  if (context == nullptr || inOut == nullptr || sameBuffer == nullptr) return ZEB_ERR_NULL_POINTER;
  if (inOut != sameBuffer) return ZEB_ERR_BUFFER_ARRANGEMENT;
  if (outLen == nullptr) return ZEB_ERR_NULL_POINTER;
  if (context->buffered != 0) return ZEB_ERR_STATE;
  const std::uint32_t tail = len == 0 ? 0 : (len - 1) % aes_block_length + 1;
  const std::uint32_t written = len - tail;
  if (is_too_small(*outLen, written)) return ZEB_ERR_NO_ROOM;
  decrypt_blocks(context->decryption, context->chain, inOut, written / aes_block_length);
  std::copy_n(inOut + written, tail, context->buffer);
  context->buffered = tail;
  *outLen = written;
  return ZEB_SUCCESS;
}

Status ZEB_AES_CBC_DecFinal(AesCbcContext* context, std::uint8_t* out, std::uint32_t* outLen) {
  if (context == nullptr || out == nullptr || outLen == nullptr) return ZEB_ERR_NULL_POINTER;
  if (context->buffered == 0) return ZEB_SUCCESS;
  if (context->buffered != aes_block_length) return ZEB_ERR_HELD_COUNT;
  // In copies, so that a call refused for want of room can be made again.
  std::uint8_t block[aes_block_length];
  const WipeOnExit block_guard(block);
  std::uint8_t chain[aes_block_length];
  std::copy_n(context->buffer, aes_block_length, block);
  std::copy_n(context->chain, aes_block_length, chain);
  decrypt_blocks(context->decryption, chain, block, 1);
  const std::uint32_t pad = zeb_CheckPadding(block, aes_block_length, context->padding);
  if (pad > aes_block_length) return pad;
  const std::uint32_t room = *outLen;
  *outLen = aes_block_length - pad;
  if (is_too_small(room, *outLen)) return ZEB_ERR_NO_ROOM;
  std::copy_n(block, *outLen, out);
  return ZEB_SUCCESS;
}

Status sealwright::aes_cbc_encrypt_message(AesCbcContext* context, const std::uint8_t* in,
                                           std::uint32_t length, std::uint8_t* out) {
  std::uint32_t written = length;
  std::uint32_t last = 0;
  const Status status = ZEB_AES_CBC_EncUpdate(context, in, length, out, &written);
  if (status != ZEB_SUCCESS) return status;
  return ZEB_AES_CBC_EncFinal(context, out + written, &last);
}

Status sealwright::aes_cbc_decrypt_message(AesCbcContext* context, std::uint8_t* in_out,
                                           std::uint32_t length) {
  std::uint32_t opened = 0;
  std::uint32_t last = 0;
  const Status status = ZEB_AES_CBC_DecUpdate(context, in_out, length, in_out, &opened);
  if (status != ZEB_SUCCESS) return status;
  return ZEB_AES_CBC_DecFinal(context, in_out + opened, &last);
}

std::uint32_t zeb_SetPadding(std::uint8_t* block, std::uint32_t used, std::uint32_t blockSize,
                             std::uint32_t rule) {
  if (rule == AES_PADDING_NONE) return used == 0 ? 0 : ZEB_ERR_NOT_WHOLE_BLOCKS;
  if (rule != AES_PADDING_COUNT) return ZEB_ERR_PARAMETER;
  if (used > blockSize) return ZEB_ERR_STATE;
  const std::uint32_t count = blockSize - used;
  std::fill_n(block + used, count, static_cast<std::uint8_t>(count));
  return count;
}

std::uint32_t zeb_CheckPadding(const std::uint8_t* block, std::uint32_t blockSize,
                               std::uint32_t rule) {
  if (rule == AES_PADDING_NONE) return 0;
  if (rule != AES_PADDING_COUNT) return ZEB_ERR_PARAMETER;
  // Quirk: a last byte of 0 passes as no padding; callers of the library whose messages were never
  // padded depend on it.
  const std::uint8_t count = block[blockSize - 1];
  if (count > blockSize) return ZEB_ERR_BAD_PADDING;
  const bool uniform = std::all_of(block + (blockSize - count), block + blockSize,
                                   [count](std::uint8_t byte) { return byte == count; });
  return uniform ? count : ZEB_ERR_BAD_PADDING;
}
