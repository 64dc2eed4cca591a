#pragma once

#include <cstdint>
#include <initializer_list>

#include "base/bytes.h"
#include "crypto/status.h"

// SHA-1 (FIPS 180-4) and HMAC-SHA-1 (RFC 2104), incremental, over caller-owned contexts.

inline constexpr std::uint32_t sha1_digest_length = 20;  // bytes
inline constexpr std::uint32_t sha1_block_length = 64;   // bytes

/// Hash context. Between calls the number of bytes waiting in `block` is count_low modulo 64.
struct ZEB_SHA1 {
  std::uint32_t state[5];    // chaining value H0..H4
  std::uint32_t count_low;   // message bytes hashed so far, low word
  std::uint32_t count_high;  // and its carry word
  std::uint8_t block[sha1_block_length];
};
static_assert(sizeof(ZEB_SHA1) == 92);

/// HMAC context: the padded key is not kept, only the two chaining values it leads to.
struct ZEB_SHA1_HMAC {
  ZEB_SHA1 hash;
  std::uint32_t inner_state[5];  // after the block key XOR 0x36
  std::uint32_t outer_state[5];  // after the block key XOR 0x5C
};
static_assert(sizeof(ZEB_SHA1_HMAC) == 132);

/// Starts a message.
/// @return 0, or ZEB_ERR_NULL_POINTER.
Status ZEB_SHA1_Init(ZEB_SHA1* context);

/// Appends `length` bytes to the message.
/// @return 0, or ZEB_ERR_NULL_POINTER when `context` or `data` is null, even at length 0.
Status ZEB_SHA1_Update(ZEB_SHA1* context, const std::uint8_t* data, std::uint32_t length);

/// Ends the message and writes 20 digest bytes (H0 first, big-endian words). The context is left
/// used and unwiped; start again with ZEB_SHA1_Init.
/// @return 0, or ZEB_ERR_NULL_POINTER.
Status ZEB_SHA1_Final(ZEB_SHA1* context, std::uint8_t* digest);

/// Compresses one 64-byte block (16 big-endian words) into the five chaining words in place.
void zeb_SHA1_Transform(const std::uint8_t* block, std::uint32_t* state);

/// Prepares `context` for a key of `key_length` bytes; keys above 64 bytes are hashed first.
/// @return always 0.
Status ZEB_SHA1_HMAC_SetInfo(ZEB_SHA1_HMAC* context, const std::uint8_t* key,
                             std::uint32_t key_length);

/// Starts a message under the key that was set. @return always 0.
Status ZEB_SHA1_HMAC_Init(ZEB_SHA1_HMAC* context);

/// Appends `length` bytes. @return always 0; also for a null `data`, which appends nothing.
Status ZEB_SHA1_HMAC_Update(ZEB_SHA1_HMAC* context, const std::uint8_t* data, std::uint32_t length);

/// Ends the message and writes the full 20-byte mac. @return always 0.
Status ZEB_SHA1_HMAC_Final(ZEB_SHA1_HMAC* context, std::uint8_t* mac);

namespace sealwright {

// For callers whose pointers are not null: no step fails.

/// Starts a message.
void sha1_init(ZEB_SHA1& hash);

/// Appends bytes to the message.
void sha1_update(ZEB_SHA1& hash, ByteView bytes);

/// Ends the message and writes 20 digest bytes, as ZEB_SHA1_Final.
void sha1_final(ZEB_SHA1& hash, std::uint8_t* digest);

/// SHA-1 of the parts, one after the other. `digest` may be part of what is hashed. Nothing of the
/// message is left behind.
void sha1(std::uint8_t* digest, std::initializer_list<ByteView> parts);

/// The status codes that a caller has for the three steps of a hash; the one returned tells which
/// step failed.
struct Sha1StepCodes {
  Status init;
  Status update;
  Status final;
};

/// SHA-1 of one message in one call, for callers whose pointers may be null.
/// @return 0 or the code in `codes` of the step that failed.
[[nodiscard]] Status sha1_message(const std::uint8_t* message, std::uint32_t length,
                                  std::uint8_t* digest, const Sha1StepCodes& codes);

}  // namespace sealwright
