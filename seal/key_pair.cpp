#include "seal/key_pair.h"

#include <dirent.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <memory>
#include <string_view>
#include <utility>

#include "artefact/escape.h"
#include "artefact/key_encoding.h"
#include "sb10/key_files.h"
#include "sb20/key_files.h"
#include "seal/verbs.h"
#include "util/new_file.h"
#include "util/new_folder.h"

namespace sealwright {

namespace {

struct FolderCloser {
  void operator()(DIR* folder) const { closedir(folder); }
};

/// A folder may be empty; anything else may not be there.
Objection check_folder(const char* name) {
  if (!exists(name)) return std::nullopt;
  struct stat status = {};
  if (lstat(name, &status) == 0 && !S_ISDIR(status.st_mode)) {
    return refuse(name, "exists already, and is no folder");
  }
  const std::unique_ptr<DIR, FolderCloser> folder(opendir(name));
  if (!folder) return give_up(name, std::strerror(errno));
  while (const dirent* entry = readdir(folder.get())) {
    const std::string_view found = entry->d_name;
    if (found != "." && found != "..") {
      return refuse(name, "is not empty; a set of root keys gets a folder of its own");
    }
  }
  return std::nullopt;
}

/// Makes a key; its private file opens again and its numbers agree.
Objection make_new_key(KeyPair& pair, PrivateKey& key, Scheme scheme, KeyRole role) {
  const bool sb20 = scheme == Scheme::sb20;
  ZEB_RSA_PRIVATE_KEY numbers;
  const WipeOnExit numbers_guard(numbers);
  const Status status = make_rsa_key(numbers, sb20 ? sb20_public_exponent : sb10_public_exponent,
                                     sb20 ? sb20_modulus_bits : sb10_modulus_bits);
  if (status != ZEB_SUCCESS ||
      !make_private_record(pair.private_file, key, numbers, scheme, role)) {
    return Complaint{ExitStatus::refused,
                     "the new key fails its check, and nothing was written: out of memory, or this "
                     "machine miscalculates"};
  }
  return std::nullopt;
}

std::string in_words(const char* what, std::size_t size, const char* advice) {
  return std::string(what) + ", " + std::to_string(size) + " bytes" + advice;
}

/// As made_public.
MadeFile made_private(const KeyPair& pair, std::string name) {
  const std::size_t size = pair.private_file.length;
  const bool is_root = pair.role == KeyRole::root;
  return {std::move(name), size, "",
          is_root ? in_words("private root key", size, "; back it up and show it to nobody")
                  : in_words("private stage-2 key", size, "; keep it secret")};
}
Objection publish_root_set(Result& result, const KeyPair& pair, const char* folder_name) {
  const KeyNames& names = key_names(pair.task.key.scheme);
  NewFolder folder;
  folder.create(folder_name);
  folder.add(names.efuse, pair.public_file.efuse(), efuse_access(pair.task.key.scheme));
  folder.add(names.root_public, pair.public_file.bytes(), FileAccess::by_umask);
  if (pair.private_file.length != 0) {
    folder.add(names.root_private, pair.private_file.bytes(), FileAccess::owner_only);
  }
  const Failure failure = folder.publish();
  if (failed(failure)) return complain(folder_name, failure);
  result.files.push_back(made_efuse(pair, join_path(folder_name, names.efuse)));
  result.files.push_back(made_public(pair, join_path(folder_name, names.root_public)));
  if (pair.private_file.length != 0) {
    result.files.push_back(made_private(pair, join_path(folder_name, names.root_private)));
  }
  return std::nullopt;
}

Objection publish_pair(Result& result, const KeyPair& pair, const std::string& stem) {
  const KeyNames& names = key_names(pair.task.key.scheme);
  const std::string private_name = stem + names.stage2_private;
  const std::string public_name = stem + names.stage2_public;
  const bool has_private = pair.private_file.length != 0;
  // A pair without its private half would be worse than a private half alone, which says all.
  std::array<NewFile, 2> files;
  const std::size_t first = has_private ? 0 : 1;
  if (has_private) {
    files[0].create(private_name.c_str(), FileAccess::owner_only, Existing::kept);
    files[0].write(pair.private_file.bytes());
  }
  files[1].create(public_name.c_str(), FileAccess::by_umask, Existing::kept);
  files[1].write(pair.public_file.bytes());
  const Failure failure = publish(std::span(files).subspan(first));
  if (failed(failure)) {
    // What came under one of the names meanwhile is what is in the way.
    const bool is_private = has_private && (!failure.in_the_way || exists(private_name));
    const std::string& name = is_private ? private_name : public_name;
    return failure.in_the_way ? refuse(name, never_replaced) : complain(name, failure);
  }
  if (has_private) result.files.push_back(made_private(pair, private_name));
  result.files.push_back(made_public(pair, public_name));
  return std::nullopt;
}

Objection make_key(Result& result, const Options& options, KeyRole role) {
  if (is_signed_elsewhere(options)) return make_key_elsewhere(result, options, role);
  if (auto objection = check_key_names(options, role)) return objection;
  if (auto objection = require_random_source()) return objection;
  KeyPair pair;
  PrivateKey key;
  if (auto objection = make_new_key(pair, key, scheme_of(options), role)) return objection;
  if (auto objection = assemble_key_pair(pair, public_half_of(key), role)) return objection;
  Signature proof;
  if (auto objection = obtain_signature(proof, key_signer(key, options.names[0]), pair.task)) {
    return objection;
  }
  return finish_key_pair(result, pair, proof, options);
}

}  // namespace

Scheme scheme_of(const Options& options) {
  return std::string_view(options.scheme) == "1.1" ? Scheme::sb10 : Scheme::sb20;
}

FileAccess efuse_access(Scheme scheme) {
  return scheme == Scheme::sb20 ? FileAccess::owner_only : FileAccess::by_umask;
}

MadeFile made_public(const KeyPair& pair, std::string name) {
  const ByteView bytes = pair.public_file.bytes();
  const bool is_root = pair.role == KeyRole::root;
  const std::string words =
      in_words(is_root ? "public root key" : "public stage-2 key", bytes.size(), "; key SHA-1 ") +
      key_sha1(pair.task.key);
  return {std::move(name), bytes.size(), sha1_hex(bytes), words};
}

MadeFile made_efuse(const KeyPair& pair, std::string name) {
  const std::size_t size = pair.public_file.efuse_length;
  return {std::move(name), size, "", in_words("eFuse data", size, ", for the fuses of devices")};
}

Objection check_key_names(const Options& options, KeyRole role) {
  const char* name = options.names[0];
  if (role == KeyRole::root) return check_folder(name);
  if (std::string_view(name).ends_with('/')) {
    return give_up(name, "no name for a key pair; the two files get it with endings of their own");
  }
  const KeyNames& names = key_names(scheme_of(options));
  for (const char* suffix : {names.stage2_private, names.stage2_public}) {
    const std::string file = std::string(name) + suffix;
    if (exists(file)) return refuse(file, never_replaced);
  }
  return std::nullopt;
}

Objection assemble_key_pair(KeyPair& pair, const PublicKey& key, KeyRole role) {
  pair.role = role;
  if (!assemble_public_record(pair.public_file, key, role)) {
    return Complaint{ExitStatus::refused, "no HMAC key could be drawn; nothing was written"};
  }
  pair.task = {role == KeyRole::root ? "root-key" : "stage2-key", key, digest_of(pair.public_file)};
  return std::nullopt;
}

void describe(Result& result, const KeyPair& pair) {
  result.made = pair.task.makes;
  result.scheme = facts_of(pair.task.key.scheme).name;
  result.key = key_sha1(pair.task.key);
  (pair.role == KeyRole::root ? result.root_key : result.stage2_key) = result.key;
  result.signed_digest = to_hex(pair.task.digest);
}

Objection attach_and_check(KeyPair& pair, const Signature& proof, const char* name) {
  attach_proof(pair.public_file, proof.bytes());
  if (record_holds(pair.public_file, pair.task.key)) return std::nullopt;
  return refuse(name, "not written: the new public-key file fails its check");
}

Objection finish_key_pair(Result& result, KeyPair& pair, const Signature& proof,
                          const Options& options) {
  const char* name = options.names[0];
  if (auto objection = attach_and_check(pair, proof, name)) return objection;
  describe(result, pair);
  return pair.role == KeyRole::root ? publish_root_set(result, pair, name)
                                    : publish_pair(result, pair, name);
}

Objection make_root_key(Result& result, const Options& options) {
  return make_key(result, options, KeyRole::root);
}

Objection make_stage2_key(Result& result, const Options& options) {
  return make_key(result, options, KeyRole::stage2);
}

}  // namespace sealwright
