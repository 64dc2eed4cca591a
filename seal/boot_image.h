#pragma once

#include <variant>

#include "artefact/hex.h"
#include "artefact/public_key_file.h"
#include "sb10/records.h"
#include "sb20/records.h"

// The steps in which a BL1 of either scheme gets its context, whoever signs.

namespace sealwright {

using BootContext = std::variant<SB10_CONTEXT, SB20_CONTEXT>;

/// The context of the scheme that both keys are of: everything but the signature.
[[nodiscard]] BootContext assemble_context(const RootInfo& root, const PublicKey& stage2_key);

/// Brings the code into the form in which it is stored: encrypted in scheme 2.1, as it is in 1.1.
/// @return false when the cipher fails its own check.
[[nodiscard]] bool seal_code(WritableBytes code, const BootContext& context, ByteView efuse);

/// What the root key signs. `sealed` is the code as it is stored, then build information.
[[nodiscard]] Digest digest_of(const BootContext& context, ByteView sealed);

void attach_signature(BootContext& context, ByteView signature);

/// The device's check, which fills the entry table. After a failure the context is of no use.
[[nodiscard]] bool check_as_device(BootContext& context, ByteView efuse, ByteView sealed);

ByteView view_of_context(const BootContext& context);

}  // namespace sealwright
