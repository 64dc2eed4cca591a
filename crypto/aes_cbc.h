#pragma once

#include <cstdint>

#include "crypto/aes.h"
#include "crypto/status.h"

// AES in cipher-block-chaining mode (NIST SP 800-38A, 6.2) with a selectable padding rule.
//
// Order of calls: ZEB_AES_SetInfo, then per message EncInit, EncUpdate any number of times,
// EncFinal; or DecInit, one DecUpdate in place, DecFinal. Every `outLen` is a count of bytes, in:
// the room there is (0: not checked), out: the bytes written. A call that fails leaves it alone and
// can be made again, but for what ZEB_AES_CBC_DecFinal says.
//
// The Finals end nothing: schedules, IV and padding rule stay for the next Init, and the held bytes
// and the chaining block stay as they are. Whoever owns the context wipes it.

inline constexpr std::uint32_t AES_PADDING_NONE = 0xFFF10001;
inline constexpr std::uint32_t AES_PADDING_COUNT = 0xFFF10002;  // n bytes of value n, n = 1 to 16

inline constexpr std::uint32_t AES_USE_ENCRYPT = 0x01;  // build the encryption schedule
inline constexpr std::uint32_t AES_USE_BOTH = 0x02;     // build both schedules
inline constexpr std::uint32_t AES_USE_KEEP = 0x80;     // do not clear the context first
/// What every caller in this tool passes.
inline constexpr std::uint32_t AES_USE_DEFAULT = AES_USE_ENCRYPT | AES_USE_BOTH;

inline constexpr std::uint32_t AES_FLAG_ENC_KEY = 1U << 0;
inline constexpr std::uint32_t AES_FLAG_DEC_KEY = 1U << 1;
inline constexpr std::uint32_t AES_FLAG_IV = 1U << 4;

/// CBC context, one per operation, caller-owned.
struct AesCbcContext {
  std::uint32_t flags;
  AesKeySchedule encryption;
  AesKeySchedule decryption;
  std::uint32_t padding;                  // AES_PADDING_...
  std::uint8_t iv[aes_block_length];      // as given
  std::uint8_t chain[aes_block_length];   // previous ciphertext block
  std::uint8_t buffer[aes_block_length];  // bytes held back between calls
  std::uint32_t buffered;                 // how many, 0 to 16
  std::uint32_t reserved;                 // not used by CBC
};
static_assert(sizeof(AesCbcContext) == 4 + 260 + 260 + 4 + 48 + 8);

/// Clears the context (unless keyUse has AES_USE_KEEP), builds the key schedules that keyUse asks
/// for and stores the IV, padding rule and reserved word. What is null or 0 is left out.
/// @return 0; ZEB_ERR_NULL_POINTER; ZEB_ERR_KEY_LENGTH; ZEB_ERR_IV_LENGTH.
Status ZEB_AES_SetInfo(AesCbcContext* context, std::uint32_t keyUse, const std::uint8_t* key,
                       std::uint32_t keyLen, const std::uint8_t* iv, std::uint32_t ivLen,
                       std::uint32_t padding, std::uint32_t reserved);

/// Starts a message. @return 0; ZEB_ERR_NULL_POINTER; ZEB_ERR_NO_ENC_KEY; ZEB_ERR_NO_IV.
Status ZEB_AES_CBC_EncInit(AesCbcContext* context);

/// Encrypts the held bytes and `in` as far as whole blocks go and holds the rest. `in` and `out`
/// must not overlap; only equal pointers are noticed.
/// @return 0; ZEB_ERR_NULL_POINTER; ZEB_ERR_BUFFER_ARRANGEMENT when in and out are equal;
///         ZEB_ERR_NO_ROOM; ZEB_ERR_STATE.
Status ZEB_AES_CBC_EncUpdate(AesCbcContext* context, const std::uint8_t* in, std::uint32_t inLen,
                             std::uint8_t* out, std::uint32_t* outLen);

/// Pads and encrypts what is held. With nothing to write, `*outLen` stays as the caller set it.
/// @return 0; ZEB_ERR_NULL_POINTER; ZEB_ERR_NOT_WHOLE_BLOCKS; ZEB_ERR_PARAMETER for an unknown
///         padding rule; ZEB_ERR_STATE; ZEB_ERR_NO_ROOM.
Status ZEB_AES_CBC_EncFinal(AesCbcContext* context, std::uint8_t* out, std::uint32_t* outLen);

/// Starts a message. @return 0; ZEB_ERR_NULL_POINTER; ZEB_ERR_NO_DEC_KEY; ZEB_ERR_NO_IV.
Status ZEB_AES_CBC_DecInit(AesCbcContext* context);

/// Decrypts the whole message in place but for its last 1 to 16 bytes, which are held.
/// `sameBuffer` is `inOut` once more. The room needs to cover what this call reports, `len` less
/// the bytes held, and not the whole message.
/// @return 0; ZEB_ERR_NULL_POINTER; ZEB_ERR_BUFFER_ARRANGEMENT when the buffers differ;
///         ZEB_ERR_STATE when bytes are held already; ZEB_ERR_NO_ROOM.
Status ZEB_AES_CBC_DecUpdate(AesCbcContext* context, std::uint8_t* inOut, std::uint32_t len,
                             std::uint8_t* sameBuffer, std::uint32_t* outLen);

/// Decrypts the held block and writes it without its padding. With nothing held, `*outLen` stays as
/// the caller set it; on ZEB_ERR_NO_ROOM it becomes the room that is wanted.
/// @return 0; ZEB_ERR_NULL_POINTER; ZEB_ERR_HELD_COUNT; ZEB_ERR_BAD_PADDING; ZEB_ERR_PARAMETER;
///         ZEB_ERR_NO_ROOM.
Status ZEB_AES_CBC_DecFinal(AesCbcContext* context, std::uint8_t* out, std::uint32_t* outLen);

/// Pads a block that holds `used` bytes.
/// @return the pad count, at most blockSize, or an error above it: ZEB_ERR_NOT_WHOLE_BLOCKS,
///         ZEB_ERR_PARAMETER, ZEB_ERR_STATE when `used` is above blockSize.
std::uint32_t zeb_SetPadding(std::uint8_t* block, std::uint32_t used, std::uint32_t blockSize,
                             std::uint32_t rule);

/// Checks the padding of a decrypted block. A last byte of 0 counts as no padding.
/// @return the pad count or an error above it: ZEB_ERR_BAD_PADDING, ZEB_ERR_PARAMETER.
std::uint32_t zeb_CheckPadding(const std::uint8_t* block, std::uint32_t blockSize,
                               std::uint32_t rule);

namespace sealwright {

/// Encrypts a message that was started, in one go, from `in` to `out`, which do not overlap; with
/// padding `out` has room for a block more than `in`.
/// @return 0, or what the failing step returns.
[[nodiscard]] Status aes_cbc_encrypt_message(AesCbcContext* context, const std::uint8_t* in,
                                             std::uint32_t length, std::uint8_t* out);

/// Decrypts a message that was started, in one go and in place. @return likewise.
[[nodiscard]] Status aes_cbc_decrypt_message(AesCbcContext* context, std::uint8_t* in_out,
                                             std::uint32_t length);

}  // namespace sealwright
