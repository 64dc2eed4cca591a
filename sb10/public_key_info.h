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

namespace sealwright {

/// Checks the proof of possession in a root public-key file. A signature that fails is wiped.
/// @return 0; VERIFY_ERR_...
[[nodiscard]] Status verify_sb10_root_proof(Sb10RootPublicKeyFile& file);

/// Clears `key`, at least 616 bytes (twice the record), and copies n and then e of a stage-2
/// public-key file to its start. Both are as long as the file says: in a file with other lengths
/// than 128 and 4 they run on into what follows them. Where one would run past the record the key
/// stays all zero, which verifies nothing.
void join_sb10_key(WritableBytes key, const Sb10PublicKeyFile& file);

/// Checks the proof of possession in a stage-2 public-key file under `key`, at least 520 bytes as
/// join_sb10_key filled them. The file itself says how many bytes the signature covers, from the
/// length of n on, and how long the signature is. One that does not verify is wiped; one of a
/// length that no key makes is left as it is.
/// @return 0; VERIFY_ERR_SIGNATURE_LENGTH; VERIFY_ERR_RSA.
[[nodiscard]] Status verify_sb10_proof(Sb10PublicKeyFile& file, ByteView key);

}  // namespace sealwright
