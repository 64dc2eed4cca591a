#pragma once

#include "artefact/boot_check.h"
#include "inspect/report.h"

namespace sealwright {

/// What may have gone wrong where people slip: files in a wrong order, fuses read out in another
/// order of bytes. Sentences for a reader, without effect on any verdict.
Sentences boot_hints(const BootChain& chain, const BootCheck& check);

}  // namespace sealwright
