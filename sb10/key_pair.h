#pragma once

#include <cstdint>

#include "crypto/status.h"

/// Makes an RSA-1024 key pair with e = 65537 and writes its files. Mode 1: the root set
/// "publicKeyInfo.dat", "eFuseData.dat" and "privateKey.dat"; `baseName` is not used. Any other
/// mode: `baseName` with ".spk" and ".prv"; a name above 123 characters aborts. Prints nothing. On
/// a failure no file is touched.
/// @return 0; what Generate_SB10_PublicKeyInfo returns; SIGN_ERR_... of the proof of possession.
Status sb10_Generate_KeyPair(std::int32_t mode, const char* baseName);
