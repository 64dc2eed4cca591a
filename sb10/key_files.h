#pragma once

#include <cstdint>

// Fixed names of the version 1.1 files in the working directory, and the suffixes of a stage-2
// pair.

inline constexpr char sb10_efuse_file[] = "eFuseData.dat";
inline constexpr char sb10_public_key_info_file[] = "publicKeyInfo.dat";
inline constexpr char sb10_private_key_file[] = "privateKey.dat";
inline constexpr char sb10_stage2_public_key_file[] = "stage2_key.spk";
inline constexpr char sb10_public_key_suffix[] = ".spk";
inline constexpr char sb10_private_key_suffix[] = ".prv";

/// Zero bytes behind the 604-byte key record that make "privateKey.dat" whole AES blocks.
inline constexpr std::uint32_t sb10_key_file_tail = 4;
