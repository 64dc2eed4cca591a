#pragma once

#include <cstdint>

#include "sb10/boot_context.h"
#include "sb10/public_key_file.h"
#include "sb20/private_key_file.h"

// Key material of a version 1.1 run, beside the buffers that both schemes share.

extern SB10_CONTEXT sb10_Context;
extern std::uint8_t sb10_eFuseData[sb10_efuse_length];
extern std::uint32_t sb10_eFuseDataLen;
extern Sb10PublicKeyFile sb10_pubkey_file;
extern Sb10PrivateKeyFile sb10_privkey_file;
