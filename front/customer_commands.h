#pragma once

#include "front/dispatch.h"

// The commands that both programs have, for customers who make and check stage-2 keys and images of
// their own: one function each, whose result becomes the exit status.

namespace sealwright {

/// Argument 2: base name of the stage-2 pair. @return 0.
[[nodiscard]] std::int32_t generate_sb20_stage2_keys(Arguments arguments);
[[nodiscard]] std::int32_t generate_sb10_stage2_keys(Arguments arguments);

/// Arguments 2 to 4: stage-2 image, output, private-key file.
/// @return what the scheme's function returns.
[[nodiscard]] std::int32_t sign_sb20_stage2(Arguments arguments);
[[nodiscard]] std::int32_t sign_sb10_stage2(Arguments arguments);

/// Arguments 2 and 3: secured stage-2 image, public-key file. @return 0 or -1.
[[nodiscard]] std::int32_t verify_sb20_stage2(Arguments arguments);
[[nodiscard]] std::int32_t verify_sb10_stage2(Arguments arguments);

/// Prints the version line. @return 0.
[[nodiscard]] std::int32_t show_version(Arguments arguments);

}  // namespace sealwright
