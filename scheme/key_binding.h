#pragma once

#include "base/bytes.h"
#include "crypto/status.h"

// How both schemes bind a root public key to the fuses. The public-key info is the key followed by
// HMAC-SHA-1 of it, 20 bytes. The HMAC key, as long as the eFuse data, is stored nowhere: the eFuse
// data is that many bytes of the HMAC, from its first on, XOR the HMAC key. A device XORs its fuses
// with the HMAC to have the HMAC key back, and so takes no public key but the one it was fused for.

namespace sealwright {

/// Writes the HMAC after the key in `info`, and the eFuse data to `efuse`. `given_key` is an HMAC
/// key as long as `efuse`, or nothing (a null pointer with length 0) to draw one.
/// @return 0; INFO_ERR_ARGUMENT; INFO_ERR_GEN_HMAC_...
[[nodiscard]] Status bind_public_key(WritableBytes info, WritableBytes efuse, ByteView given_key);

/// Checks the HMAC in `info` under the key that the eFuse data gives; clears `info` on a mismatch.
/// @return 0; INFO_ERR_HMAC_...; INFO_ERR_MISMATCH.
[[nodiscard]] Status validate_key_binding(WritableBytes info, ByteView efuse);

}  // namespace sealwright
