#pragma once

#include "front/dispatch.h"

// The commands, one function each. The result becomes the exit status.

/// Aborts where neither /dev/random nor the kernel's generator delivers: what draws on it would be
/// there to guess. For the start of commands that make keys or signatures.
void require_randomness();

/// Prints that a root key is being made, then makes it with its files. @return 0.
std::int32_t generate_sb20_root_keys(Arguments arguments);
std::int32_t generate_sb10_root_keys(Arguments arguments);

/// Argument 2: base name of the stage-2 pair. @return 0.
std::int32_t generate_sb20_stage2_keys(Arguments arguments);
std::int32_t generate_sb10_stage2_keys(Arguments arguments);

/// Arguments 2 and 3: stage-1 image, output. @return what the scheme's function returns.
std::int32_t seal_sb20_stage1(Arguments arguments);
std::int32_t seal_sb20_stage1_with_build_info(Arguments arguments);
std::int32_t seal_sb10_stage1(Arguments arguments);

/// Arguments 2 and 3: secured stage-1 image, eFuse file. @return 0 or -1.
std::int32_t verify_sb20_stage1(Arguments arguments);
std::int32_t verify_sb10_stage1(Arguments arguments);

/// Arguments 2 to 4: stage-2 image, output, private-key file.
/// @return what the scheme's function returns.
std::int32_t sign_sb20_stage2(Arguments arguments);
std::int32_t sign_sb10_stage2(Arguments arguments);

/// Arguments 2 and 3: secured stage-2 image, public-key file. @return 0 or -1.
std::int32_t verify_sb20_stage2(Arguments arguments);
std::int32_t verify_sb10_stage2(Arguments arguments);

/// Prints the version line. @return 0.
std::int32_t show_version(Arguments arguments);

/// @return 0.
std::int32_t succeed_in_silence(Arguments arguments);
