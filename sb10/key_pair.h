#pragma once

#include <cstdint>

#include "crypto/status.h"
#include "sb10/records.h"

/// Makes an RSA-1024 key pair with e = 65537 and writes its files. Mode 1: the root set
/// "publicKeyInfo.dat", "eFuseData.dat" and "privateKey.dat"; `baseName` is not used. Any other
/// mode: `baseName` with ".spk" and ".prv"; a name above 123 characters aborts. With a status other
/// than 0 no file is touched. Where write_file_set cannot make the whole set, it says so and
/// touches no file either, but the status is 0.
/// @return 0; what Generate_SB10_PublicKeyInfo returns; SIGN_ERR_... of the proof of possession;
///         CIPHER_ERR_... of the private-key file.
Status sb10_Generate_KeyPair(std::int32_t mode, const char* baseName);

/// Writes the 640-byte file of a 1024-bit key, encrypted with mode 1, from the first seven items of
/// a key item list. `keyRecordLen` is not used; nothing in the tool calls this.
/// @return what do_PrivateKey_Encrypt returns; CIPHER_ERR_SETUP when an item does not fit its slot.
Status convert_To_OldPrivateKey(const std::uint8_t* keyRecord, std::uint32_t keyRecordLen,
                                std::uint8_t* out);
