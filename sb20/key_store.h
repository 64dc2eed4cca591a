#pragma once

#include <cstdint>

#include "sb20/records.h"
#include "scheme/key_store.h"

// Key material of a run of scheme 2.1: the fixed file names, the process-wide buffers beside those
// that both schemes share, and what fills them from files.

inline constexpr char sb20_efuse_file[] = "eFuseData_V21.dat";
inline constexpr char sb20_public_key_info_file[] = "publicKeyInfo_V21.dat";
inline constexpr char sb20_private_key_file[] = "privateKey_V21.dat";
inline constexpr char sb20_stage2_public_key_file[] = "publicKeyInfo_V21_stage2.dat";

extern SB20_CONTEXT sb20_Context;
extern std::uint8_t sb20_eFuseData[sb20_efuse_length];
extern std::uint32_t sb20_eFuseDataLen;

/// Reads an eFuse file into `sb20_eFuseData`.
EfuseData load_sb20_efuse_data(const char* path, EfuseLength rule);

/// Clears `sb20_Context` and reads `length` bytes, at most 496, of the root public-key file into it
/// from `publicKeyInfo` on.
const SB20_CONTEXT& load_sb20_root_info(std::uint32_t length = sizeof(Sb20PublicKeyInfo));

/// Reads an encrypted private-key file into `privateKey` as load_private_key_file does.
Status load_sb20_private_key(ByteView& items, const char* path);

/// Clears the buffers of this unit.
void wipe_sb20_key_store();
