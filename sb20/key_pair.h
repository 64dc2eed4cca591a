#pragma once

#include <array>
#include <cstdint>

#include "crypto/status.h"

inline constexpr std::int32_t root_key_mode = 1;
inline constexpr std::int32_t stage2_key_mode = 2;

/// Makes an RSA-2048 key pair with e = 3 and writes its files. Mode 1: the root set
/// "eFuseData_V21.dat", "publicKeyInfo_V21.dat" and "privateKey_V21.dat"; `baseName` is not used.
/// Mode 2: `baseName` with "_V21.spk" and "_V21.prv"; a name above 119 characters aborts.
/// Prints nothing. On a failure no file is touched.
/// @return 0; what Generate_SB20_PublicKeyInfo returns; SIGN_ERR_... of the proof of possession.
Status sb20_Generate_KeyPair(std::int32_t mode, const char* baseName);

/// A key file's name with its terminator.
using KeyFileName = std::array<char, 128>;

/// Base name and suffix joined; aborts when they do not fit.
KeyFileName make_key_file_name(const char* base_name, const char* suffix);
