#pragma once

#include "front/dispatch.h"

// The commands that only the full program has, for whoever holds the root key: one function each,
// whose result becomes the exit status.

namespace sealwright {

/// Prints that a root key is being made, then makes it with its files. @return 0.
[[nodiscard]] std::int32_t generate_sb20_root_keys(Arguments arguments);
[[nodiscard]] std::int32_t generate_sb10_root_keys(Arguments arguments);

/// Arguments 2 and 3: stage-1 image, output. @return what the scheme's function returns.
[[nodiscard]] std::int32_t seal_sb20_stage1(Arguments arguments);
[[nodiscard]] std::int32_t seal_sb20_stage1_with_build_info(Arguments arguments);
[[nodiscard]] std::int32_t seal_sb10_stage1(Arguments arguments);

/// Arguments 2 and 3: secured stage-1 image, eFuse file. @return 0 or -1.
[[nodiscard]] std::int32_t verify_sb20_stage1(Arguments arguments);
[[nodiscard]] std::int32_t verify_sb10_stage1(Arguments arguments);

/// @return 0.
[[nodiscard]] std::int32_t succeed_in_silence(Arguments arguments);

}  // namespace sealwright
