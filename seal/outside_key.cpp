#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "artefact/escape.h"
#include "seal/key_pair.h"
#include "seal/outside_signer.h"
#include "util/new_file.h"
#include "util/new_folder.h"

// Keys whose private half is elsewhere: in one step by a program, or in two.

namespace sealwright {

namespace {

/// What a key on its way was named for, and its files.
struct KeyPlace {
  std::string folder;       // of a root key; empty for a stage-2 key
  std::string public_name;  // beside which it waits
  std::string efuse_name;   // empty for a stage-2 key
};

KeyPlace place_of(const Options& options, KeyRole role) {
  const KeyNames& names = key_names(scheme_of(options));
  const std::string name = options.names[0];
  if (role == KeyRole::stage2) return {"", name + names.stage2_public, ""};
  return {name, join_path(name, names.root_public), join_path(name, names.efuse)};
}

/// What waits has an HMAC key that is nowhere else.
Objection check_nothing_waits(const KeyPlace& place) {
  const std::string waiting = pending_names(place.public_name).pending;
  if (!exists(waiting)) return std::nullopt;
  return refuse(waiting,
                "waits for its signature already and is not replaced: its HMAC key would be lost; "
                "put the signature in with --signature FILE, or remove it to begin anew");
}

/// The name without its folder, which gets it with others at once.
const char* in_folder(const std::string& path) {
  return last_part(path.c_str());
}

Objection prepare_root(Result& result, const KeyPair& pair, const Options& options,
                       const KeyPlace& place) {
  const PendingNames names = pending_names(place.public_name);
  const std::string efuse_name = pending_names(place.efuse_name).pending;
  const ToSign to_sign(pair.task, options.padded);
  const std::string& goes_out = to_sign.is_block() ? names.block : names.digest;
  const ByteView bytes = pair.public_file.bytes();
  NewFolder folder;
  folder.create(place.folder.c_str());
  folder.add(in_folder(efuse_name), pair.public_file.efuse(), FileAccess::owner_only);
  folder.add(in_folder(names.pending), bytes, FileAccess::by_umask);
  folder.add(in_folder(goes_out), to_sign.bytes(), FileAccess::by_umask);
  const Failure failure = folder.publish();
  if (failed(failure)) return complain(place.folder, failure);
  MadeFile efuse = made_efuse(pair, efuse_name);
  efuse.words = "eFuse data, " + std::to_string(efuse.size) +
                " bytes, waits with the key: fuse nothing before the key is proved";
  result.signer = "pending";
  result.files = {std::move(efuse), made_pending(names.pending, {&bytes, 1}),
                  made_to_sign(goes_out, to_sign, pair.task)};
  return std::nullopt;
}

/// A folder may hold other files at the second step, but no keys of another set; a stage-2 key may
/// have no private half beside it.
Objection check_no_other_keys(const KeyPlace& place, const Options& options, Scheme scheme) {
  if (place.folder.empty()) {
    const std::string path = options.names[0] + std::string(key_names(scheme).stage2_private);
    return exists(path) ? Objection(refuse(path, never_replaced)) : std::nullopt;
  }
  const Scheme other = scheme == Scheme::sb20 ? Scheme::sb10 : Scheme::sb20;
  const KeyNames& others = key_names(other);
  for (const char* name :
       {key_names(scheme).root_private, others.root_private, others.root_public, others.efuse}) {
    const std::string path = join_path(place.folder, name);
    if (exists(path)) return refuse(path, "exists already; a set of root keys has its own folder");
  }
  return std::nullopt;
}

/// The eFuse data that waits, or that an interrupted second step has named already.
Objection read_waiting_efuse(InputFile& efuse, const KeyPlace& place) {
  if (place.efuse_name.empty()) return std::nullopt;
  const std::string waiting = pending_names(place.efuse_name).pending;
  const bool named = !exists(waiting) && exists(place.efuse_name);
  return read_input(efuse, named ? place.efuse_name : waiting);
}

/// Makes the key once more, bound as what waits is, and compares.
Objection assemble_again(KeyPair& pair, const KeyCandidate& key, const TakenUp& taken_up,
                         const InputFile& efuse, KeyRole role) {
  if (auto objection = assemble_key_pair(pair, key.key, role)) return objection;
  const ByteView data = efuse.input ? efuse.bytes() : ByteView();
  adopt_binding(pair.public_file, taken_up.pending.bytes(), data);
  pair.task.digest = digest_of(pair.public_file);
  const ByteView bytes = pair.public_file.bytes();
  if (auto objection = check_pending(taken_up.pending, {&bytes, 1})) return objection;
  if (role == KeyRole::stage2) return std::nullopt;
  const auto info = read_root_info(bytes);
  if (info && fuses_hold(data, *info)) return std::nullopt;
  return refuse(efuse.name, "does not belong to " + show_name(taken_up.pending.name) +
                                ": one of the two has changed since --prepare");
}

/// A file of a key that is to be there at the end.
struct WantedFile {
  const std::string& name;
  ByteView bytes;
  FileAccess access;
};

/// Gives the files their names in this order. Those that an interrupted second step has named
/// already stay, when they are what they should be.
Objection publish_wanted(std::span<const WantedFile> wanted) {
  std::array<NewFile, 2> files;
  std::size_t count = 0;
  for (const WantedFile& file : wanted) {
    if (exists(file.name)) {
      InputFile found;
      if (auto objection = read_input(found, file.name)) return objection;
      if (!std::ranges::equal(found.bytes(), file.bytes)) return refuse(file.name, never_replaced);
      continue;
    }
    files[count].create(file.name.c_str(), file.access, Existing::kept);
    files[count++].write(file.bytes);
  }
  if (count == 0) return std::nullopt;
  const Failure failure = publish(std::span(files).first(count));
  return failed(failure) ? Objection(complain(wanted.back().name, failure)) : std::nullopt;
}

Objection publish_taken_up(Result& result, const KeyPair& pair, const KeyPlace& place) {
  const WantedFile public_file = {place.public_name, pair.public_file.bytes(),
                                  FileAccess::by_umask};
  if (pair.role == KeyRole::root) {
    const WantedFile efuse = {place.efuse_name, pair.public_file.efuse(),
                              efuse_access(pair.task.key.scheme)};
    if (auto objection = publish_wanted(std::array{efuse, public_file})) return objection;
    result.files.push_back(made_efuse(pair, place.efuse_name));
    // What cannot be removed does no harm.
    unlink(pending_names(place.efuse_name).pending.c_str());
  } else if (auto objection = publish_wanted({&public_file, 1})) {
    return objection;
  }
  result.files.push_back(made_public(pair, place.public_name));
  remove_pending(place.public_name);
  return std::nullopt;
}

Objection take_up_key(Result& result, const Options& options, const KeyCandidate& key,
                      const InputFile& key_file, KeyRole role) {
  const KeyPlace place = place_of(options, role);
  TakenUp taken_up;
  InputFile efuse;
  if (auto objection = read_taken_up(taken_up, options, place.public_name)) return objection;
  if (auto objection = read_waiting_efuse(efuse, place)) return objection;
  if (auto objection = check_no_other_keys(place, options, key.key.scheme)) return objection;
  if (auto objection =
          check_outputs(place.public_name, options, {&key_file, &taken_up.signature})) {
    return objection;
  }
  KeyPair pair;
  if (auto objection = assemble_again(pair, key, taken_up, efuse, role)) return objection;
  const Signer signer = outside_signer(options, taken_up, {&key, 1});
  Signature proof;
  if (auto objection = obtain_signature(proof, signer, pair.task)) return objection;
  if (auto objection = attach_and_check(pair, proof, place.public_name.c_str())) return objection;
  describe(result, pair);
  result.signer = signer.name;
  return publish_taken_up(result, pair, place);
}

}  // namespace

Objection make_key_elsewhere(Result& result, const Options& options, KeyRole role) {
  InputFile key_file;
  KeyCandidate key;
  if (auto objection = read_outside_key(key, key_file, options, scheme_of(options))) {
    return objection;
  }
  if (auto objection = require_random_source()) return objection;
  if (options.signature != nullptr) return take_up_key(result, options, key, key_file, role);

  const KeyPlace place = place_of(options, role);
  if (auto objection = check_nothing_waits(place)) return objection;
  if (auto objection = check_key_names(options, role)) return objection;
  KeyPair pair;
  if (auto objection = assemble_key_pair(pair, key.key, role)) return objection;
  if (options.prepare) {
    describe(result, pair);
    if (role == KeyRole::root) return prepare_root(result, pair, options, place);
    if (auto objection = check_outputs(place.public_name, options, {&key_file})) return objection;
    const ByteView bytes = pair.public_file.bytes();
    return write_pending(result, place.public_name, {&bytes, 1}, pair.task, options);
  }
  const TakenUp nothing;
  const Signer signer = outside_signer(options, nothing, {&key, 1});
  Signature proof;
  if (auto objection = obtain_signature(proof, signer, pair.task)) return objection;
  // The program may have taken hours.
  if (auto objection = check_key_names(options, role)) return objection;
  result.signer = signer.name;
  return finish_key_pair(result, pair, proof, options);
}

}  // namespace sealwright
