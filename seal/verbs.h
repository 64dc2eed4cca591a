#pragma once

#include "seal/options.h"
#include "seal/outcome.h"

// What the verbs do. Nothing is printed; what they made is in `result`.

namespace sealwright {

/// Runs the verb that the options name.
[[nodiscard]] Objection make(Result& result, const Options& options);

[[nodiscard]] Objection make_root_key(Result& result, const Options& options);
[[nodiscard]] Objection make_stage2_key(Result& result, const Options& options);
[[nodiscard]] Objection make_bl1(Result& result, const Options& options);
[[nodiscard]] Objection make_bl2(Result& result, const Options& options);
[[nodiscard]] Objection export_key(Result& result, const Options& options);

}  // namespace sealwright
