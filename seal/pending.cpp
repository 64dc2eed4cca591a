#include "seal/pending.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <tuple>

#include "artefact/escape.h"
#include "artefact/key_encoding.h"
#include "crypto/pss.h"
#include "crypto/sha1.h"
#include "util/new_file.h"

namespace sealwright {

namespace {

std::size_t size_of(Pieces pieces) {
  std::size_t size = 0;
  for (const ByteView piece : pieces) size += piece.size();
  return size;
}

Digest sha1_of(Pieces pieces) {
  ZEB_SHA1 hash = {};
  Digest digest = {};
  sha1_init(hash);
  for (const ByteView piece : pieces) sha1_update(hash, piece);
  sha1_final(hash, digest.data());
  return digest;
}

}  // namespace

PendingNames pending_names(const std::string& name) {
  return {name + ".pending", name + ".digest", name + ".block"};
}

ToSign::ToSign(const SigningTask& task, bool padded)
    : length_(padded ? task.key.modulus.size() : task.digest.size()), is_block_(padded) {
  const WritableBytes room = WritableBytes(room_).first(length_);
  // The result can be dropped: the block of a whole modulus has room.
  if (padded) std::ignore = emsa_pss_encode_afresh(room, task.digest, pss_salt_length);
  if (!padded) std::ranges::copy(task.digest, room.begin());
}

Objection read_taken_up(TakenUp& taken_up, const Options& options, const std::string& name) {
  if (options.signature == nullptr) return std::nullopt;
  const PendingNames names = pending_names(name);
  if (auto objection = read_input(taken_up.pending, names.pending)) {
    if (!exists(names.pending)) objection->text += "; --prepare makes it";
    return objection;
  }
  if (auto objection = read_input(taken_up.signature, options.signature)) return objection;
  return options.padded && exists(names.block) ? read_input(taken_up.block, names.block)
                                               : std::nullopt;
}

Objection check_pending(const InputFile& pending, Pieces pieces) {
  ByteView left = pending.bytes();
  bool same = left.size() == size_of(pieces);
  for (const ByteView piece : pieces) {
    same = same && std::ranges::equal(left.first(piece.size()), piece);
    if (same) left = left.subspan(piece.size());
  }
  if (same) return std::nullopt;
  return refuse(pending.name,
                "does not belong to these inputs: one of them, or this file, has changed since "
                "--prepare");
}

Objection check_outputs(const std::string& name, const Options& options,
                        std::initializer_list<const InputFile*> inputs) {
  if (auto objection = check_output(name.c_str(), inputs)) return objection;
  if (!options.prepare && options.signature == nullptr) return std::nullopt;
  const PendingNames names = pending_names(name);
  for (const std::string& waiting : {names.pending, names.digest, names.block}) {
    if (auto objection = check_output(waiting.c_str(), inputs)) return objection;
  }
  return std::nullopt;
}

Objection write_pending(Result& result, const std::string& name, Pieces pieces,
                        const SigningTask& task, const Options& options) {
  const bool is_image = options.verb == Verb::bl1 || options.verb == Verb::bl2;
  const PendingNames names = pending_names(name);
  const ToSign to_sign(task, options.padded);
  const std::string& goes_out = to_sign.is_block() ? names.block : names.digest;
  const std::string& stale = to_sign.is_block() ? names.digest : names.block;
  // What is to be signed comes first: what waits without it could not be told from another.
  std::array<NewFile, 2> files;
  files[0].create(goes_out.c_str(), FileAccess::by_umask, Existing::replaced_if_file);
  files[0].write(to_sign.bytes());
  files[1].create(names.pending.c_str(), FileAccess::by_umask,
                  is_image ? Existing::replaced_if_file : Existing::kept);
  for (const ByteView piece : pieces) files[1].write(piece);
  const Failure failure = publish(files);
  if (failed(failure)) {
    return complain(failed(files[0].failure()) ? goes_out : names.pending, failure);
  }
  unlink(stale.c_str());  // of an older one; where it stays, its signature is noticed
  result.signer = "pending";
  result.files = {made_pending(names.pending, pieces), made_to_sign(goes_out, to_sign, task)};
  return std::nullopt;
}

MadeFile made_pending(const std::string& name, Pieces pieces) {
  const std::size_t size = size_of(pieces);
  return {name, size, to_hex(sha1_of(pieces)),
          std::to_string(size) + " bytes, waits for its signature: the same command with " +
              "--signature FILE in place of --prepare puts it in"};
}

MadeFile made_to_sign(const std::string& name, const ToSign& to_sign, const SigningTask& task) {
  const std::size_t size = to_sign.bytes().size();
  const std::string by = " by the key with SHA-1 " + key_sha1(task.key);
  const std::string how = to_sign.is_block() ? "block, to be signed by the bare RSA operation" + by
                                             : "digest, to be signed" + by +
                                                   ": RSASSA-PSS, SHA-1, MGF1-SHA-1, salt of 20";
  return {name, size, sha1_hex(to_sign.bytes()), std::to_string(size) + " bytes of " + how};
}

void remove_pending(const std::string& name) {
  const PendingNames names = pending_names(name);
  // What cannot be removed does no harm: it is made again or refused.
  unlink(names.digest.c_str());
  unlink(names.block.c_str());
  unlink(names.pending.c_str());
}

}  // namespace sealwright
