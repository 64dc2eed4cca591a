#pragma once

#include <string>

#include "artefact/private_key_file.h"
#include "artefact/public_key_file.h"
#include "seal/inputs.h"

// Keys as commands find them in files.

namespace sealwright {

/// A stage-2 public-key file, sound: of the format to the letter, its proof of possession holds.
struct Stage2File {
  InputFile file;
  PublicKey key;
};

[[nodiscard]] Objection read_stage2_file(Stage2File& stage2, const char* name);

/// A private-key file whose numbers agree.
struct PrivateFile {
  InputFile file;
  PrivateKey key;
};

/// Whether a command needs the private half, or somebody else signs.
enum class PrivateHalf { needed, elsewhere };

enum class KeyRole { root, stage2 };

/// Reads the private half of `public_half`, which stands in the file `public_name`.
[[nodiscard]] Objection read_private_half(PrivateFile& file, std::string name, KeyRole role,
                                          const PublicKey& public_half,
                                          const std::string& public_name);

/// Reads a private key of any scheme and role.
[[nodiscard]] Objection read_private_file(PrivateFile& file, std::string name);

/// Fixed names in a folder of root keys, and what a stage-2 pair adds to its name.
struct KeyNames {
  const char* root_public;
  const char* root_private;
  const char* efuse;
  const char* stage2_public;
  const char* stage2_private;
};

const KeyNames& key_names(Scheme scheme);

}  // namespace sealwright
