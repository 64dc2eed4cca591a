#pragma once

#include <cstdint>

#include "crypto/status.h"

/// Signs a stage-2 image of scheme 2.1 with an encrypted private-key file (above 2048 bytes:
/// aborts) and checks the signature before it reports success. Prints the stage's success or
/// failure line; a key file that cannot be decrypted fails in silence. `signatureOut` has room for
/// 256 bytes, which `*signatureLen` says on entry and on success.
/// @return 0; CIPHER_ERR_SETUP; CIPHER_ERR_RUN; SIGN_ERR_...
Status sb20_Generate_Stage2(const char* privateKeyFile, const std::uint8_t* image,
                            std::uint32_t imageLen, std::uint8_t* signatureOut,
                            std::uint32_t* signatureLen);
