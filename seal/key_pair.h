#pragma once

#include "seal/key_record.h"
#include "seal/options.h"
#include "seal/signer.h"
#include "util/new_file.h"

// The steps of "root-key" and "stage2-key": assemble, sign, finish.

namespace sealwright {

/// The files of a key on their way.
struct KeyPair {
  KeyRole role = KeyRole::root;
  PublicRecord public_file;
  PrivateRecord private_file;  // empty where the key is somebody else's
  SigningTask task = {};       // for the key itself
};

/// The scheme that --scheme names, or 2.1.
Scheme scheme_of(const Options& options);

/// Whether nothing stands in the way of the files.
[[nodiscard]] Objection check_key_names(const Options& options, KeyRole role);

/// The public file of a key but for its proof.
[[nodiscard]] Objection assemble_key_pair(KeyPair& pair, const PublicKey& key, KeyRole role);

/// What is said of the files under these names, and what of them may be known.
MadeFile made_public(const KeyPair& pair, std::string name);
MadeFile made_efuse(const KeyPair& pair, std::string name);

/// Who may read eFuse data: that of scheme 2.1 decrypts BL1.
FileAccess efuse_access(Scheme scheme);

inline constexpr char never_replaced[] = "exists already; a key is never replaced";

/// What is known of a key before its proof is made.
void describe(Result& result, const KeyPair& pair);

/// Puts the proof in and checks everything once more. `name` is the one to complain about.
[[nodiscard]] Objection attach_and_check(KeyPair& pair, const Signature& proof, const char* name);

/// Puts the proof in, checks everything once more and publishes the files.
[[nodiscard]] Objection finish_key_pair(Result& result, KeyPair& pair, const Signature& proof,
                                        const Options& options);

/// "root-key" and "stage2-key" of a key that is not here.
[[nodiscard]] Objection make_key_elsewhere(Result& result, const Options& options, KeyRole role);

}  // namespace sealwright
