#include "sb10/key_buffers.h"

SB10_CONTEXT sb10_Context = {};
std::uint8_t sb10_eFuseData[sb10_efuse_length] = {};
std::uint32_t sb10_eFuseDataLen = 0;
Sb10PublicKeyFile sb10_pubkey_file = {};
Sb10PrivateKeyFile sb10_privkey_file = {};
