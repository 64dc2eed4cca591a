#pragma once

#include "seal/key_record.h"
#include "seal/options.h"
#include "seal/signer.h"

// The steps of "root-key" and "stage2-key": assemble, sign, finish.

namespace sealwright {

/// The files of a key on their way.
struct KeyPair {
  KeyRole role = KeyRole::root;
  PublicRecord public_file;
  PrivateRecord private_file;  // empty where the key is somebody else's
  SigningTask task = {};       // for the key itself
};

/// Whether nothing stands in the way of the files.
[[nodiscard]] Objection check_key_names(const Options& options, KeyRole role);

/// The public file of a key but for its proof.
[[nodiscard]] Objection assemble_key_pair(KeyPair& pair, const PublicKey& key, KeyRole role);

/// Puts the proof in, checks everything once more and publishes the files.
[[nodiscard]] Objection finish_key_pair(Result& result, KeyPair& pair, const Signature& proof,
                                        const Options& options);

}  // namespace sealwright
