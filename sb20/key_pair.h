#pragma once

#include <cstdint>

#include "crypto/status.h"

/// Makes an RSA-2048 key pair with e = 3 and writes its files. Mode 1: the root set
/// "eFuseData_V21.dat", "publicKeyInfo_V21.dat" and "privateKey_V21.dat"; `baseName` is not used.
/// Any other mode: `baseName` with "_V21.spk" and "_V21.prv"; a name above 119 characters aborts.
/// With a status other than 0 no file is touched. Where write_file_set cannot make the whole set,
/// it says so and touches no file either, but the status is 0.
/// @return 0; what Generate_SB20_PublicKeyInfo returns; SIGN_ERR_... of the proof of possession;
///         CIPHER_ERR_... of the private-key file.
Status sb20_Generate_KeyPair(std::int32_t mode, const char* baseName);
