#pragma once

#include <cstddef>
#include <cstdint>

#include "crypto/status.h"
#include "sb10/public_key_info.h"

inline constexpr std::uint32_t sb10_entry_count = 12;

/// Boot context of scheme 1.1, the record behind a secured BL1 image. The signature covers the
/// image and `stage2PublicKey`; `publicKeyInfo` carries its own HMAC; nothing covers the rest.
struct SB10_CONTEXT {
  Sb10PublicKey stage2PublicKey;
  std::uint8_t signature[128];
  Sb10PublicKeyInfo publicKeyInfo;  // of the root key
  std::uint32_t funcPtrTable[sb10_entry_count];
  std::uint8_t zero[16];
  std::uint8_t magic[16];  // "SB10_CONTEXT" and four zero bytes
  std::uint8_t fill[20];   // every byte 0xAA
};
static_assert(sizeof(SB10_CONTEXT) == 512);
static_assert(offsetof(SB10_CONTEXT, signature) == 132);
static_assert(offsetof(SB10_CONTEXT, publicKeyInfo) == 260);
static_assert(offsetof(SB10_CONTEXT, funcPtrTable) == 412);
static_assert(offsetof(SB10_CONTEXT, magic) == 476);

/// Builds the context for `image`. `context` holds the root public-key info already.
/// `stage2PublicKey` (132 bytes) may be null: the root key stands in for it then.
/// @return 0; CONTEXT_ERR_SHA1_...; CONTEXT_ERR_SIGNING.
Status Generate_SB10_Context(const std::uint8_t* rootPrivateKey, std::uint32_t rootPrivateKeyLen,
                             const std::uint8_t* stage2PublicKey, const std::uint8_t* image,
                             std::uint32_t imageLen, SB10_CONTEXT* context);

/// Checks image and context as the device does and fills the entry table of the context on the way.
/// A failed check wipes the public-key info or the signature inside the context.
/// @return 0; CHECK_ERR_...; what Validate_SB10_PublicKeyInfo returns.
Status Check_SB10_Context(const std::uint8_t* eFuse, std::uint32_t eFuseLen, SB10_CONTEXT* context,
                          const std::uint8_t* image, std::uint32_t imageLen);

/// Fills the 12 slots of the entry table. @return the table.
std::uint32_t* save_SB10_FuncPtr(std::uint32_t* table);
