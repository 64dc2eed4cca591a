#pragma once

#include <cstdint>

// Fixed names of the version 2.1 files in the working directory, and the suffixes of a stage-2
// pair.

inline constexpr char sb20_efuse_file[] = "eFuseData_V21.dat";
inline constexpr char sb20_public_key_info_file[] = "publicKeyInfo_V21.dat";
inline constexpr char sb20_private_key_file[] = "privateKey_V21.dat";
inline constexpr char sb20_stage2_public_key_file[] = "publicKeyInfo_V21_stage2.dat";
inline constexpr char sb20_public_key_suffix[] = "_V21.spk";
inline constexpr char sb20_private_key_suffix[] = "_V21.prv";

/// Zero bytes behind the 1188-byte key record that make a private-key file whole AES blocks.
/// Readers take off this constant, on purpose; the padding bytes are not looked at.
inline constexpr std::uint32_t sb20_key_file_tail = 12;
