#include "sb20/key_buffers.h"

std::uint8_t privateKey[private_key_capacity] = {};
std::uint32_t privateKeyLen = 0;
std::uint8_t publicKey[public_key_capacity] = {};
std::uint32_t publicKeyLen = 0;

SB20_CONTEXT sb20_Context = {};
std::uint8_t sb20_eFuseData[sb20_efuse_length] = {};
std::uint32_t sb20_eFuseDataLen = 0;
