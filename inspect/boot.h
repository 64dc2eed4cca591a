#pragma once

#include "artefact/boot_check.h"
#include "inspect/report.h"

namespace sealwright {

/// The names of a chain's files as they were given; null where none was.
struct BootNames {
  const char* efuse = nullptr;
  const char* bl1 = nullptr;
  const char* bl2 = nullptr;
  const char* code = nullptr;
};

/// Whether a device with these fuses boots this chain. Each check is made whatever the others say,
/// and nothing counts where a file of the chain fails while it is read.
Report describe_boot(BootChain& chain, const BootNames& names = {});

}  // namespace sealwright
