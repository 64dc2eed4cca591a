#pragma once

#include <optional>

#include "artefact/file_source.h"
#include "artefact/opened_code.h"
#include "artefact/secured_bl1.h"

namespace sealwright {

/// What a device would boot, in its order. `code` is the first-stage code that it should run.
struct BootChain {
  FileSource efuse;
  FileSource bl1;
  std::optional<FileSource> bl2 = {};
  std::optional<FileSource> code = {};
};

/// What a device with these fuses makes of a chain. Each check is made whatever the others say, and
/// none holds where BL1 carries no context.
struct BootCheck {
  std::optional<SecuredBl1> bl1;
  bool fuses;                         // they hold the root key in BL1
  bool keys;                          // root and stage-2 key are regular
  bool bl1_signature;                 // the root key signed the code and the stage-2 key
  std::optional<bool> bl2_signature;  // the stage-2 key signed BL2
  OpenedCode opened;
  std::optional<bool> code;  // it is the code that it should be
};

/// Reads each file of the chain once and to its end; nothing counts where one of them fails then.
/// Where the marks of both schemes stand in BL1, the length of the eFuse data says which one it is
/// read by.
[[nodiscard]] BootCheck check_boot_chain(BootChain& chain);

/// Whether everything holds and the code can be opened.
[[nodiscard]] bool boots(const BootCheck& check);

}  // namespace sealwright
