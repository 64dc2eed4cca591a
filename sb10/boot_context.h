#pragma once

#include <cstdint>

#include "base/bytes.h"
#include "crypto/status.h"
#include "sb10/records.h"

// The steps in which a context is made, whoever signs: fill, digest, sign, attach; then
// Check_SB10_Context.
namespace sealwright {

/// Everything but the signature: marks and stage-2 key. `context` holds the root public-key info.
void fill_sb10_context(SB10_CONTEXT& context, const RsaPublicKey1024& stage2_key);

/// The 20 bytes that the root key signs, for the image and the stage-2 key in a filled context.
/// @return 0; CONTEXT_ERR_SHA1_... for a null pointer.
[[nodiscard]] Status digest_sb10_context(std::uint8_t* digest, const SB10_CONTEXT& context,
                                         ByteView image);

/// Puts the signature (128 bytes, little-endian) in its place.
void attach_sb10_signature(SB10_CONTEXT& context, ByteView signature);

}  // namespace sealwright

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
