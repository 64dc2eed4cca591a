#include "seal/bl1.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>
#include <utility>

#include "artefact/escape.h"
#include "artefact/key_encoding.h"
#include "artefact/opened_code.h"
#include "artefact/secured_bl1.h"
#include "crypto/aes.h"
#include "seal/image_file.h"
#include "seal/outside_signer.h"
#include "seal/verbs.h"
#include "util/build_info.h"

namespace sealwright {

namespace {

/// Whether the scheme can seal an image of this length.
Objection check_code(const Bl1& bl1, bool with_build_info) {
  const Scheme scheme = bl1.stage2.key.scheme;
  const std::size_t length = bl1.code.bytes().size();
  if (scheme == Scheme::sb10 && with_build_info) {
    return Complaint{ExitStatus::not_done, "--build-info is for scheme 2.1, but " +
                                               show_name(bl1.stage2.file.name) +
                                               " is a key of scheme 1.1"};
  }
  const std::size_t missing = (aes_block_length - length % aes_block_length) % aes_block_length;
  if (scheme == Scheme::sb20 && missing != 0) {
    return refuse(bl1.code.name, std::to_string(length) + " bytes are no whole blocks of 16, as " +
                                     "scheme 2.1 encrypts them; add " + std::to_string(missing) +
                                     (missing == 1 ? " zero byte" : " zero bytes") +
                                     ", as truncate -s %16 does");
  }
  return std::nullopt;
}

/// Takes room for the whole image and puts the code to its start.
Objection place_code(Bl1& bl1, bool with_build_info) {
  const ByteView code = bl1.code.bytes();
  bl1.sealed_length = code.size() + (with_build_info ? sizeof(BuildInfo) : 0);
  const std::size_t length = bl1.sealed_length + view_of_context(bl1.context).size();
  constexpr std::size_t longest = std::numeric_limits<std::int32_t>::max();
  if (length > longest) {
    return refuse(bl1.code.name, "too large: sealed it passes 2147483647 bytes");
  }
  bl1.image.emplace(length);
  if (bl1.image->data() == nullptr) return give_up(bl1.code.name, "not enough memory");
  std::ranges::copy(code, bl1.image->data());
  return std::nullopt;
}

/// Writes the build information after the code. For an image that waited, it has the time of that.
void write_build_info(Bl1& bl1) {
  const std::size_t code_length = bl1.code.bytes().size();
  mk_BL_Info(bl1.image->data() + code_length);
  const InputFile& waiting = bl1.taken_up.pending;
  if (!waiting.input || waiting.bytes().size() != bl1.whole().size()) return;
  BuildInfo waited;
  std::ranges::copy(waiting.bytes().subspan(code_length, sizeof waited),
                    writable_view_of(waited).begin());
  store_le32(bl1.image->data() + code_length + offsetof(BuildInfo, build_time), waited.build_time);
}

/// Whether the finished image is one that a device with these fuses boots, running this very code.
/// `code_sha1` becomes that of the code as it was opened again.
bool prove(std::string& code_sha1, Bl1& bl1) {
  const ByteView efuse = bl1.root.efuse.bytes();
  if (!check_as_device(bl1.context, efuse, bl1.sealed())) return false;
  std::ranges::copy(view_of_context(bl1.context), bl1.image->data() + bl1.sealed_length);
  const ByteView image = bl1.whole();
  const FileSource made(image);
  const auto found = find_secured_bl1(made.end(), made.size(), bl1.task.key.scheme);
  if (!found || found->code_size != bl1.code.bytes().size()) return false;
  FileSource expected(bl1.code.bytes());
  CodeOpener opener(found, efuse, &expected);
  opener.add(image);
  const OpenedCode opened = opener.finish();
  code_sha1 = opened.sha1;
  return opened.state == CodeState::opened && opened.is_expected;
}

/// What is known of an image before it is signed.
void describe(Result& result, const Bl1& bl1) {
  result.made = bl1.task.makes;
  result.scheme = facts_of(bl1.task.key.scheme).name;
  result.root_key = key_sha1(bl1.root.key);
  result.stage2_key = key_sha1(bl1.stage2.key);
  result.signed_digest = to_hex(bl1.task.digest);
}

}  // namespace

Objection assemble_bl1(Bl1& bl1, const Options& options, PrivateHalf private_half) {
  if (auto objection = read_stage2_file(bl1.stage2, options.stage2_key)) return objection;
  if (auto objection = read_root_set(bl1.root, options.root, private_half, bl1.stage2)) {
    return objection;
  }
  if (auto objection = read_image(bl1.code, options.names[0])) return objection;
  if (auto objection = check_code(bl1, options.build_info)) return objection;
  if (auto objection =
          check_outputs(options.names[1], options,
                        {&bl1.stage2.file, &bl1.root.public_file, &bl1.root.efuse,
                         &bl1.root.private_file.file, &bl1.code, &bl1.taken_up.signature})) {
    return objection;
  }
  bl1.context = assemble_context(bl1.root.info, bl1.stage2.key);
  if (auto objection = place_code(bl1, options.build_info)) return objection;
  const std::size_t code_length = bl1.code.bytes().size();
  if (!seal_code(bl1.sealed().first(code_length), bl1.context, bl1.root.efuse.bytes())) {
    return give_up(bl1.code.name, "encrypting it failed: not enough memory, or a faulty machine");
  }
  if (options.build_info) write_build_info(bl1);
  bl1.task = {"bl1", bl1.root.key, digest_of(bl1.context, bl1.sealed())};
  return std::nullopt;
}

Objection finish_bl1(Result& result, Bl1& bl1, const Signature& signature, const Options& options) {
  attach_signature(bl1.context, signature.bytes());
  std::string code_sha1;
  if (!prove(code_sha1, bl1)) {
    return refuse(options.names[1], "not written: the sealed image fails the device's own check");
  }
  const char* scheme = facts_of(bl1.task.key.scheme).name;
  const ByteView image = bl1.whole();
  if (auto objection = write_image(options.names[1], {image})) return objection;
  result.files = {{options.names[1], image.size(), sha1_hex(image),
                   std::string("secured BL1 of scheme ") + scheme + ", " +
                       std::to_string(image.size()) + " bytes; a device fused with " +
                       show_name(bl1.root.efuse.name) + " boots it"}};
  result.code_sha1 = std::move(code_sha1);
  return std::nullopt;
}

Objection make_bl1(Result& result, const Options& options) {
  if (auto objection = require_random_source()) return objection;
  const char* name = options.names[1];
  Bl1 bl1;
  if (auto objection = read_taken_up(bl1.taken_up, options, name)) return objection;
  const bool elsewhere = is_signed_elsewhere(options);
  const PrivateHalf private_half = elsewhere ? PrivateHalf::elsewhere : PrivateHalf::needed;
  if (auto objection = assemble_bl1(bl1, options, private_half)) return objection;
  describe(result, bl1);
  const std::array<ByteView, 2> pieces = {bl1.sealed(), view_of_context(bl1.context)};
  if (options.prepare) {
    result.code_sha1 = sha1_hex(bl1.code.bytes());
    return write_pending(result, name, pieces, bl1.task, options);
  }
  const std::array<KeyCandidate, 2> keys = {
      {{bl1.root.public_file.name, bl1.root.key}, {bl1.stage2.file.name, bl1.stage2.key}}};
  Signature signature;
  if (auto objection = sign_image(signature, result, options, bl1.taken_up,
                                  {bl1.task, pieces, bl1.root.private_file, keys})) {
    return objection;
  }
  if (auto objection = finish_bl1(result, bl1, signature, options)) return objection;
  if (bl1.taken_up.pending.input) remove_pending(name);
  return std::nullopt;
}

}  // namespace sealwright
