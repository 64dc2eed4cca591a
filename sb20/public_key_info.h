#pragma once

#include <cstdint>

#include "base/bytes.h"
#include "crypto/bn.h"
#include "crypto/status.h"
#include "sb20/records.h"

/// Builds `info` for n and e (digit arrays with their digit counts) and the eFuse value that
/// anchors it. `givenKey` is a 20-byte HMAC key, or null with length 0 to draw one. *eFuseLen: in
/// the room at `eFuseOut`, at least 20; out 20.
/// @return 0; INFO_ERR_ARGUMENT; INFO_ERR_GEN_HMAC_...
Status Generate_SB20_PublicKeyInfo(const std::uint8_t* givenKey, std::uint32_t givenKeyLen,
                                   const Digit* n, std::uint32_t nWords, const Digit* e,
                                   std::uint32_t eWords, std::uint8_t* eFuseOut,
                                   std::uint32_t* eFuseLen, Sb20PublicKeyInfo* info);

/// Checks that `info` belongs to the eFuse data. On a mismatch the info is wiped.
/// @return 0; INFO_ERR_ARGUMENT when eFuseLen is not 20; INFO_ERR_HMAC_...; INFO_ERR_MISMATCH.
Status Validate_SB20_PublicKeyInfo(const std::uint8_t* eFuse, std::uint32_t eFuseLen,
                                   Sb20PublicKeyInfo* info);

namespace sealwright {

/// Checks the proof of possession in the bytes of a public-key file, at least the record's 548: the
/// file's own key must verify the file's signature, whose length is what the file says, over the
/// info. A signature of 128 or 256 bytes that fails is wiped.
/// @return 0; VERIFY_ERR_...
[[nodiscard]] Status verify_sb20_proof(WritableBytes file);

}  // namespace sealwright
