#pragma once

#include <cstdint>

#include "crypto/status.h"

// How both schemes bind a root public key to the fuses: the public-key info is the key followed by
// a 20-byte HMAC-SHA-1 over it; the eFuse data is the HMAC (its first bytes, where the fuses hold
// fewer) XOR the HMAC key, which is stored nowhere.

/// The sizes in which the schemes differ.
struct KeyBinding {
  std::uint32_t key_length;    // bytes of public key that the HMAC covers and comes after
  std::uint32_t efuse_length;  // bytes of the eFuse data and of the HMAC key
};

/// Writes the HMAC after the key in `info` and the eFuse data to `eFuseOut`; *eFuseLen receives
/// its length. `givenKey` is an HMAC key, or null with length 0 to draw one.
/// @return 0; INFO_ERR_ARGUMENT; INFO_ERR_GEN_HMAC_...
Status bind_public_key(const KeyBinding& binding, const std::uint8_t* givenKey,
                       std::uint32_t givenKeyLen, std::uint8_t* info, std::uint8_t* eFuseOut,
                       std::uint32_t* eFuseLen);

/// Checks the HMAC in `info` under the key that the eFuse data gives; wipes `info` on a mismatch.
/// @return 0; INFO_ERR_ARGUMENT for a wrong eFuse length; INFO_ERR_HMAC_...; INFO_ERR_MISMATCH.
Status validate_key_binding(const KeyBinding& binding, const std::uint8_t* eFuse,
                            std::uint32_t eFuseLen, std::uint8_t* info);
