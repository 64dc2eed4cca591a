#pragma once

#include <optional>

#include "inspect/report.h"

/// Whether a device with these fuses boots this first stage and, when it is given, this second
/// stage. Each check is made whatever the others say.
Report check_boot(ByteView efuse, ByteView bl1, const std::optional<ByteView>& bl2);
