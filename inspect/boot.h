#pragma once

#include "artefact/boot_check.h"
#include "inspect/report.h"

namespace sealwright {

/// Whether a device with these fuses boots this chain. Each check is made whatever the others say.
Report describe_boot(const BootChain& chain);

}  // namespace sealwright
