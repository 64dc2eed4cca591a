#include "seal/outside_signer.h"

#include <algorithm>

#include "artefact/key_encoding.h"
#include "artefact/public_key_import.h"
#include "crypto/pss.h"
#include "seal/program.h"

namespace sealwright {

namespace {

/// Most that a program may write: a signature as text, in whatever lines, is shorter.
constexpr std::size_t longest_output = 4096;

/// Turns what came round into the form in which signatures are stored, when it is the right one.
Objection accept(WritableBytes signature, const WrongSignature& given,
                 std::span<const KeyCandidate> keys, const std::string& source) {
  if (given.given.size() == signature.size()) {
    std::ranges::reverse_copy(given.given, signature.begin());
    const PssFindings findings =
        check_new_signature(signature, numbers_of(keys.front().key), given.digest);
    if (findings.verdict == PssVerdict::valid) return std::nullopt;
  }
  return refuse(source, "no right signature: " + diagnose(given, keys));
}

Objection sign_by_program(WritableBytes signature, const SigningTask& task, const Options& options,
                          std::span<const KeyCandidate> keys) {
  const ToSign to_sign(task, options.padded);
  const EnvironmentVariable environment[] = {{"SEALWRIGHT_MAKES", task.makes},
                                             {"SEALWRIGHT_SCHEME", facts_of(task.key.scheme).name},
                                             {"SEALWRIGHT_KEY_SHA1", key_sha1(task.key)}};
  const ProgramResult result =
      run_program({options.program, environment, to_sign.bytes(), longest_output});
  const char* name = options.program.front();
  if (result.end == ProgramEnd::not_started) return give_up(name, result.reason);
  if (result.end == ProgramEnd::failed) return refuse(name, result.reason);
  const ByteView block = to_sign.is_block() ? to_sign.bytes() : ByteView();
  return accept(signature, {result.output, task.digest, block}, keys, name);
}

}  // namespace

Objection read_outside_key(KeyCandidate& key, InputFile& file, const Options& options,
                           Scheme scheme) {
  if (auto objection = read_input(file, options.public_key)) return objection;
  ImportedKey imported = import_public_key(file.bytes(), scheme);
  if (!imported.key) return refuse(file.name, imported.refusal);
  key = {file.name, *std::move(imported.key)};
  return std::nullopt;
}

Signer outside_signer(const Options& options, const TakenUp& taken_up,
                      std::span<const KeyCandidate> keys) {
  if (options.signature == nullptr) {
    return {"program", [&options, keys](WritableBytes signature, const SigningTask& task) {
              return sign_by_program(signature, task, options, keys);
            }};
  }
  return {"signature", [&taken_up, keys](WritableBytes signature, const SigningTask& task) {
            const ByteView block = taken_up.block.input ? taken_up.block.bytes() : ByteView();
            return accept(signature, {taken_up.signature.bytes(), task.digest, block}, keys,
                          taken_up.signature.name);
          }};
}

Objection sign_image(Signature& signature, Result& result, const Options& options,
                     const TakenUp& taken_up, const UnsignedImage& image) {
  if (taken_up.pending.input) {
    if (auto objection = check_pending(taken_up.pending, image.pieces)) return objection;
  }
  const PrivateFile& here = image.private_file;
  const Signer signer = is_signed_elsewhere(options) ? outside_signer(options, taken_up, image.keys)
                                                     : key_signer(here.key, here.file.name);
  result.signer = signer.name;
  return obtain_signature(signature, signer, image.task);
}

}  // namespace sealwright
