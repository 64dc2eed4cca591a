#pragma once

#include <cstdint>

#include "crypto/status.h"

/// Seals a stage-1 image of scheme 1.1: checks the proof of possession of the stage-2 key, builds
/// the boot context in `sb10_Context` and checks it as the device will. The image is not encrypted.
/// The key files are read from the working directory. Prints one line: the proof's failure, or the
/// stage's success or failure.
/// @return 0, or the status of the step that failed:
///         VERIFY_ERR_... (the proof), CONTEXT_ERR_..., CHECK_ERR_... or INFO_ERR_....
Status sb10_Generate_Stage1(const std::uint8_t* image, std::uint32_t imageLen);
