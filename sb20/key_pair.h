#pragma once

#include <cstdint>

#include "crypto/status.h"

/// Makes an RSA-2048 key pair with e = 3 and writes its files, or none when one of
/// them cannot be opened. Mode 1: the
/// root set "eFuseData_V21.dat", "publicKeyInfo_V21.dat" and "privateKey_V21.dat"; `baseName` is
/// not used. Mode 2: `baseName` with "_V21.spk" and "_V21.prv"; a name above 119 characters aborts.
/// Prints nothing but the line of a file that cannot be opened. With a status other than 0 no file
/// is touched.
/// @return 0; what Generate_SB20_PublicKeyInfo returns; SIGN_ERR_... of the proof of possession.
Status sb20_Generate_KeyPair(std::int32_t mode, const char* baseName);
