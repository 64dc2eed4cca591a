#pragma once

#include "seal/key_inputs.h"

namespace sealwright {

/// The root keys of one scheme in a folder, which belong together. The proof in the public-key file
/// is not asked for: a public-key info that was cut out of a BL1 serves.
struct RootSet {
  InputFile public_file;
  InputFile efuse;
  PrivateFile private_file;  // where it was asked for
  RootInfo info;
  PublicKey key;
};

/// Reads the set that a stage-2 key of this file and scheme needs.
[[nodiscard]] Objection read_root_set(RootSet& set, const char* folder, PrivateHalf private_half,
                                      const Stage2File& stage2);

}  // namespace sealwright
