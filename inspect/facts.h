#pragma once

#include <optional>
#include <string>

#include "inspect/report.h"
#include "util/build_info.h"

// What is said alike of a file and of a chain.

namespace sealwright {

/// Sentences without effect on whether something is sound. An exponent that is not the one of the
/// scheme's own keys.
Sentences exponent_notes(const PublicKey& key, const std::string& what);

/// The same for both keys in a BL1, and whether they are one.
Sentences image_notes(const PublicKey& root, const PublicKey& stage2);

/// An array, and a line where there are any.
Fact notes_fact(const Sentences& notes);

Fact build_info_fact(const std::optional<BuildInfo>& info);

}  // namespace sealwright
