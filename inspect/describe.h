#pragma once

#include <string_view>

#include "inspect/report.h"

namespace sealwright {

/// What a file is and what it holds. `name` is only repeated.
Report describe(std::string_view name, ByteView file);

}  // namespace sealwright
