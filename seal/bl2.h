#pragma once

#include "artefact/file_scan.h"
#include "seal/key_inputs.h"
#include "seal/options.h"
#include "seal/pending.h"
#include "seal/signer.h"

// The steps of "bl2": assemble, sign, finish.

namespace sealwright {

/// A BL2 on its way: the image stays as it is, and its signature comes after it.
struct Bl2 {
  Stage2File stage2;
  PrivateFile private_file;  // where it was asked for
  InputFile code;
  std::optional<FileScan> scan;  // of the code
  SigningTask task = {};         // for the stage-2 key
  TakenUp taken_up;              // where it waited for its signature
};

/// Reads and checks everything.
[[nodiscard]] Objection assemble_bl2(Bl2& bl2, const Options& options, PrivateHalf private_half);

/// Publishes the image with its signature.
[[nodiscard]] Objection finish_bl2(Result& result, Bl2& bl2, const Signature& signature,
                                   const Options& options);

}  // namespace sealwright
