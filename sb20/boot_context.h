#pragma once

#include <cstddef>
#include <cstdint>

#include "crypto/status.h"
#include "sb20/public_key_info.h"

inline constexpr std::uint32_t sb20_entry_count = 24;

/// Boot context of scheme 2.1, the record behind the code of a secured BL1 image. The signature
/// covers the code and `stage2PublicKey`; `publicKeyInfo` carries its own HMAC; nothing covers the
/// rest.
struct SB20_CONTEXT {
  Sb20PublicKey stage2PublicKey;
  std::uint32_t signatureLen;  // 256
  std::uint8_t signature[256];
  Sb20PublicKeyInfo publicKeyInfo;  // of the root key
  std::uint32_t funcPtrTable[sb20_entry_count];
  std::uint8_t zero[32];
  std::uint8_t magic[16];  // "SB20_CONTEXT" and four zero bytes
  std::uint8_t fill[64];   // every byte 0xAA
};
static_assert(sizeof(SB20_CONTEXT) == 1024);
static_assert(offsetof(SB20_CONTEXT, signature) == 272);
static_assert(offsetof(SB20_CONTEXT, publicKeyInfo) == 528);
static_assert(offsetof(SB20_CONTEXT, funcPtrTable) == 816);
static_assert(offsetof(SB20_CONTEXT, magic) == 944);

/// Builds the context for `code`, as it will be stored. `context` holds the root public-key info
/// already. `stage2PublicKey` (268 bytes) may be null: the root key stands in for it then.
/// @return 0; CONTEXT_ERR_SHA1_...; CONTEXT_ERR_SIGNING.
Status Generate_SB20_Context(const std::uint8_t* rootPrivateKey, std::uint32_t rootPrivateKeyLen,
                             const std::uint8_t* stage2PublicKey, const std::uint8_t* code,
                             std::uint32_t codeLen, SB20_CONTEXT* context);

/// Checks code and context as the device does and fills the entry table of the context on the way.
/// A failed check wipes the public-key info or the signature inside the context.
/// @return 0; CHECK_ERR_...; what Validate_SB20_PublicKeyInfo returns.
Status Check_SB20_Context(const std::uint8_t* eFuse, std::uint32_t eFuseLen, SB20_CONTEXT* context,
                          const std::uint8_t* code, std::uint32_t codeLen);

/// Fills the 24 slots of the entry table.
void save_SB20_FuncPtr(std::uint32_t* table);
