#pragma once

#include <cstdint>

#include "crypto/status.h"

/// Signs a stage-2 image of scheme 1.1 with an encrypted 640-byte private-key file (above 2048
/// bytes: aborts) and checks the signature before it reports success. Only n and d of the file are
/// used. Prints the stage's success or failure line. `signatureOut` has room for 128 bytes, which
/// `*signatureLen` says on entry and on success.
/// @return 0; SIGN_ERR_...
Status sb10_Generate_Stage2(const char* privateKeyFile, const std::uint8_t* image,
                            std::uint32_t imageLen, std::uint8_t* signatureOut,
                            std::uint32_t* signatureLen);
