#pragma once

#include <vector>

#include "seal/key_inputs.h"
#include "seal/pending.h"

// Signers whose key is not here: a program, or another room.

namespace sealwright {

/// Reads the key of --public-key, which has to be one of the scheme.
[[nodiscard]] Objection read_outside_key(KeyCandidate& key, InputFile& file, const Options& options,
                                         Scheme scheme);

/// The signer of the options, for what is signed elsewhere and does not only get prepared. What it
/// gives is checked, and a wrong one is explained: `keys` are those that the command line names,
/// the one that signs first. The arguments outlive the signer.
Signer outside_signer(const Options& options, const TakenUp& taken_up,
                      std::span<const KeyCandidate> keys);

/// An image that lacks its signature alone.
struct UnsignedImage {
  const SigningTask& task;
  Pieces pieces;
  const PrivateFile& private_file;  // that signs when it is not done elsewhere
  std::span<const KeyCandidate> keys;
};

/// Has it signed as the options say, what waits being the image, and notes who did.
[[nodiscard]] Objection sign_image(Signature& signature, Result& result, const Options& options,
                                   const TakenUp& taken_up, const UnsignedImage& image);

}  // namespace sealwright
