#pragma once

#include <initializer_list>

#include "base/bytes.h"
#include "seal/outcome.h"

namespace sealwright {

/// Writes an image, piece after piece, whole and on the disk or not at all; an older one is
/// replaced.
[[nodiscard]] Objection write_image(const char* name, std::initializer_list<ByteView> pieces);

}  // namespace sealwright
