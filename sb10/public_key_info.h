#pragma once

#include <cstdint>

#include "base/bytes.h"
#include "crypto/bn.h"
#include "crypto/status.h"
#include "sb10/records.h"

/// HMAC key constant of the scheme. No operation reads it: the HMAC key is drawn at generation and
/// recovered from the eFuse data at validation.
extern const std::uint8_t sb10_hMacKey[16];
extern const std::uint32_t sb10_hMacKeyLen;

/// Builds `info` for n and e (digit arrays with their digit counts) and the eFuse value that
/// anchors it. `givenKey` is a 16-byte HMAC key, or null with length 0 to draw one. *eFuseLen: in
/// the room at `eFuseOut`, at least 16; out 16.
/// @return 0; INFO_ERR_ARGUMENT; INFO_ERR_GEN_HMAC_...
Status Generate_SB10_PublicKeyInfo(const std::uint8_t* givenKey, std::uint32_t givenKeyLen,
                                   const Digit* n, std::uint32_t nWords, const Digit* e,
                                   std::uint32_t eWords, std::uint8_t* eFuseOut,
                                   std::uint32_t* eFuseLen, Sb10PublicKeyInfo* info);

/// Checks that `info` belongs to the eFuse data. On a mismatch the info is wiped.
/// @return 0; INFO_ERR_ARGUMENT when eFuseLen is not 16; INFO_ERR_HMAC_...; INFO_ERR_MISMATCH.
Status Validate_SB10_PublicKeyInfo(const std::uint8_t* eFuse, std::uint32_t eFuseLen,
                                   Sb10PublicKeyInfo* info);

/// Checks the proof of possession in a root public-key file. A signature that fails is wiped.
/// @return 0; VERIFY_ERR_...
[[nodiscard]] Status verify_sb10_root_proof(Sb10PublicKeyInfoFile& file);

/// Clears `key`, at least 616 bytes (twice the record), and puts n and e of a stage-2 public-key
/// file, as long as the file says they are, one after the other into it. Lengths that run past the
/// record leave a key of zeros, which verifies nothing.
/// @return the sum of both stated lengths.
std::uint32_t join_sb10_key(WritableBytes key, const Sb10PublicKeyFile& file);

/// Checks the proof of possession in a stage-2 public-key file with its `key`, as join_sb10_key put
/// it into at least 520 bytes: what the signature covers and how long it is, the file says. A
/// signature that fails is wiped.
/// @return 0; VERIFY_ERR_...
Status verify_sb10_proof(Sb10PublicKeyFile& file, ByteView key);
