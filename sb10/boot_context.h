#pragma once

#include <cstdint>

#include "crypto/status.h"
#include "sb10/records.h"

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
