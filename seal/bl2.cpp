#include "seal/bl2.h"

#include <array>
#include <limits>
#include <string_view>
#include <utility>

#include "artefact/escape.h"
#include "artefact/key_encoding.h"
#include "seal/image_file.h"
#include "seal/outside_signer.h"
#include "seal/verbs.h"

namespace sealwright {

namespace {

/// The private half stands beside the public one, unless it was named.
Objection read_private_key(Bl2& bl2, const Options& options) {
  std::string name;
  if (options.private_key != nullptr) {
    name = options.private_key;
  } else {
    constexpr std::string_view suffix = ".spk";
    const std::string_view stem = options.stage2_key;
    if (!stem.ends_with(suffix)) {
      return Complaint{ExitStatus::not_done, show_name(stem) +
                                                 " does not end in .spk: name the private key " +
                                                 "with --private-key FILE"};
    }
    name = std::string(stem.substr(0, stem.size() - suffix.size())) + ".prv";
    if (!exists(name)) return give_up(name, "not there; name the private key with --private-key");
  }
  return read_private_half(bl2.private_file, std::move(name), KeyRole::stage2, bl2.stage2.key,
                           bl2.stage2.file.name);
}

/// What is known of an image before it is signed.
void describe(Result& result, const Bl2& bl2) {
  result.made = bl2.task.makes;
  result.scheme = facts_of(bl2.task.key.scheme).name;
  result.stage2_key = key_sha1(bl2.task.key);
  result.code_sha1 = to_hex(bl2.task.digest);
  result.signed_digest = result.code_sha1;
}

}  // namespace

Objection assemble_bl2(Bl2& bl2, const Options& options, PrivateHalf private_half) {
  if (auto objection = read_stage2_file(bl2.stage2, options.stage2_key)) return objection;
  if (private_half == PrivateHalf::needed) {
    if (auto objection = read_private_key(bl2, options)) return objection;
  }
  if (auto objection = read_image(bl2.code, options.names[0])) return objection;
  if (auto objection = check_outputs(
          options.names[1], options,
          {&bl2.stage2.file, &bl2.private_file.file, &bl2.code, &bl2.taken_up.signature})) {
    return objection;
  }
  const PublicKey& key = bl2.stage2.key;
  constexpr std::size_t longest = std::numeric_limits<std::int32_t>::max();
  if (bl2.code.bytes().size() > longest - key.modulus.size()) {
    return refuse(bl2.code.name, "too large: signed it passes 2147483647 bytes");
  }
  bl2.scan.emplace(scan_bytes(bl2.code.bytes()));
  bl2.task = {"bl2", key, digest_before(*bl2.scan, 0, {})};
  return std::nullopt;
}

Objection finish_bl2(Result& result, Bl2& bl2, const Signature& signature, const Options& options) {
  const SchemeFacts& scheme = facts_of(bl2.task.key.scheme);
  const char* name = options.names[1];
  const std::size_t size = bl2.code.bytes().size() + signature.length;
  if (!has_signed(bl2.task.key, bl2.task.digest, signature.bytes())) {
    return refuse(name, "not written: the signature does not verify under " +
                            show_name(bl2.stage2.file.name));
  }
  if (auto objection = write_image(name, {bl2.code.bytes(), signature.bytes()})) return objection;
  result.files = {{name, size, to_hex(digest_before(*bl2.scan, 0, signature.bytes())),
                   std::string("secured BL2 of scheme ") + scheme.name + ", " +
                       std::to_string(size) + " bytes; a BL1 sealed with " +
                       show_name(bl2.stage2.file.name) + " starts it"}};
  return std::nullopt;
}

Objection make_bl2(Result& result, const Options& options) {
  if (auto objection = require_random_source()) return objection;
  const char* name = options.names[1];
  Bl2 bl2;
  if (auto objection = read_taken_up(bl2.taken_up, options, name)) return objection;
  const bool elsewhere = is_signed_elsewhere(options);
  const PrivateHalf private_half = elsewhere ? PrivateHalf::elsewhere : PrivateHalf::needed;
  if (auto objection = assemble_bl2(bl2, options, private_half)) return objection;
  describe(result, bl2);
  constexpr std::array<std::uint8_t, signature_bytes_2048> zeros = {};
  const std::array<ByteView, 2> pieces = {bl2.code.bytes(),
                                          ByteView(zeros).first(bl2.task.key.modulus.size())};
  if (options.prepare) return write_pending(result, name, pieces, bl2.task, options);
  const KeyCandidate key = {bl2.stage2.file.name, bl2.stage2.key};
  Signature signature;
  if (auto objection = sign_image(signature, result, options, bl2.taken_up,
                                  {bl2.task, pieces, bl2.private_file, {&key, 1}})) {
    return objection;
  }
  if (auto objection = finish_bl2(result, bl2, signature, options)) return objection;
  if (bl2.taken_up.pending.input) remove_pending(name);
  return std::nullopt;
}

}  // namespace sealwright
