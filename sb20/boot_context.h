#pragma once

#include <cstdint>

#include "crypto/status.h"
#include "sb20/records.h"

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
