#pragma once

#include <cstdint>

#include "base/bytes.h"
#include "crypto/status.h"
#include "sb20/records.h"

// The steps in which a context is made, whoever signs: fill, digest, sign, attach; then
// Check_SB20_Context.
namespace sealwright {

/// Everything but the signature: marks and stage-2 key. `context` holds the root public-key info.
void fill_sb20_context(SB20_CONTEXT& context, const RsaPublicKey2048& stage2_key);

/// The 20 bytes that the root key signs, for `sealed` (code as it is stored, then build
/// information) and the stage-2 key in a filled context.
/// @return 0; CONTEXT_ERR_SHA1_... for a null pointer.
[[nodiscard]] Status digest_sb20_context(std::uint8_t* digest, const SB20_CONTEXT& context,
                                         ByteView sealed);

/// Puts the signature (256 bytes, little-endian) in its place.
void attach_sb20_signature(SB20_CONTEXT& context, ByteView signature);

}  // namespace sealwright

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
