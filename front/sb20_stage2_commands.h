#pragma once

#include <cstdint>

#include "front/command_table.h"

// Actions of scheme 2.1 that the full and the stage-2-only driver share.

/// Prints that a key is being made, then makes it. @return always 0, on purpose, even when it
/// failed.
std::int32_t generate_sb20_keys(std::int32_t mode, const char* base_name);

/// Argument 2: base name. @return always 0.
std::int32_t generate_sb20_stage2_keys(Arguments arguments);

/// Arguments 2 to 4: image, output, private-key file. @return the status of the engine.
std::int32_t sign_sb20_stage2(Arguments arguments);

/// Arguments 2 and 3: secured image, public-key file. @return 0 or -1.
std::int32_t verify_sb20_stage2(Arguments arguments);
