#pragma once

#include <cstdint>

#include "crypto/status.h"

// Seals a stage-1 image of scheme 2.1: checks the proof of possession of the stage-2 key, encrypts
// the code in place, builds the boot context in `sb20_Context` and checks it as the device will.
// The key files are read from the working directory. Prints one line: the proof's failure, or the
// stage's success or failure. Silent are a key file that cannot be decrypted, a code length that
// is no multiple of 16, eFuse data of a wrong length and a lack of memory.

/// Seals `codeLen` bytes.
/// @return 0, or the status of the step that failed:
///         VERIFY_ERR_... (the proof), CIPHER_ERR_..., CONTEXT_ERR_..., CHECK_ERR_... or
///         INFO_ERR_....
Status sb20_Generate_Stage1(std::uint8_t* code, std::uint32_t codeLen);

/// The same with 48 bytes of build information written after the code and covered by the
/// signature, but not encrypted: `totalLen`, at least 48, is the code's length and theirs.
Status sb20_Generate_Stage1_Polymorphic(std::uint8_t* code, std::uint32_t totalLen);

/// Encrypt_Code and Decrypt_Code with "eFuseData_V21.dat" and "publicKeyInfo_V21.dat" of the
/// working directory, for use by hand: no command calls them. A file that cannot be opened ends the
/// process.
Status do_Encrypt(std::uint8_t* code, std::uint32_t codeLen);
Status do_Decrypt(std::uint8_t* code, std::uint32_t codeLen);
