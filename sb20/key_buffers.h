#pragma once

#include <cstdint>

#include "sb20/boot_context.h"

// Key material of a run: process-wide buffers, one instance each, cleared before each read. The
// first four serve both schemes.

inline constexpr std::uint32_t private_key_capacity = 2048;  // bytes
inline constexpr std::uint32_t public_key_capacity = 1024;   // bytes

extern std::uint8_t privateKey[private_key_capacity];  // key item list
extern std::uint32_t privateKeyLen;
extern std::uint8_t publicKey[public_key_capacity];
extern std::uint32_t publicKeyLen;

extern SB20_CONTEXT sb20_Context;
extern std::uint8_t sb20_eFuseData[sb20_efuse_length];
extern std::uint32_t sb20_eFuseDataLen;
