#include "seal/inputs.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

#include "artefact/escape.h"
#include "artefact/private_key_file.h"
#include "util/folder.h"

namespace sealwright {

Objection read_input(InputFile& file, std::string name) {
  file.name = std::move(name);
  file.input.emplace(file.name.c_str());
  if (file.input->failure().empty()) return std::nullopt;
  return give_up(file.name, file.input->failure());
}

Objection read_image(InputFile& file, std::string name) {
  if (auto objection = read_input(file, std::move(name))) return objection;
  return file.bytes().empty() ? Objection(refuse(file.name, "empty; there is nothing to seal"))
                              : std::nullopt;
}

namespace {

/// Whether the file is PEM of a private key of whatever kind (RFC 7468).
bool is_private_pem(ByteView file) {
  constexpr std::string_view label = "PRIVATE KEY-----";
  return std::search(file.begin(), file.end(), label.begin(), label.end()) != file.end();
}

/// A private key that nobody else may have: an image written over it would be its end.
bool is_private_key(const char* name, off_t size) {
  constexpr off_t largest_key = 16 * 1024;  // PEM may hold more than the key
  if (size > largest_key) return false;
  const Input input(name);
  if (!input.failure().empty()) return false;
  PrivateKey key;
  return is_private_pem(input.bytes()) ||
         (open_private_key_file(key, input.bytes()) && numbers_agree(key));
}

/// Whether the folder that a name is in lets files be made. An answer before anybody is asked for a
/// signature: writing has the last word.
Objection check_folder_of(const char* name) {
  Descriptor folder;
  const Failure failure = open_folder_of(folder, name);
  if (failed(failure)) return complain(name, failure);
  const bool writable = faccessat(folder.number(), ".", W_OK | X_OK, AT_EACCESS) == 0;
  return writable ? std::nullopt : Objection(complain(name, failure_of(errno)));
}

}  // namespace

Objection check_output(const char* name, std::initializer_list<const InputFile*> inputs) {
  if (auto objection = check_folder_of(name)) return objection;
  struct stat status = {};
  if (lstat(name, &status) != 0) return std::nullopt;  // writing says what is wrong, if anything
  if (!S_ISREG(status.st_mode) && !S_ISLNK(status.st_mode)) {
    return refuse(name, S_ISDIR(status.st_mode) ? "a directory; name a file"
                                                : "a pipe or device; name a file");
  }
  if (stat(name, &status) != 0) return std::nullopt;  // a link that leads nowhere
  const FileIdentity output = {status.st_dev, status.st_ino};
  for (const InputFile* file : inputs) {
    if (!file->input || file->input->identity() != output) continue;
    const bool same_name = file->name == name;
    return refuse(name, same_name ? "an input; give the output another name"
                                  : "the same file as " + show_name(file->name) +
                                        ", an input; give the output another name");
  }
  if (!is_private_key(name, status.st_size)) return std::nullopt;
  return refuse(name, "holds a private key; give the output another name");
}

std::string join_path(const std::string& folder, const char* name) {
  return folder.empty() || folder.back() == '/' ? folder + name : folder + '/' + name;
}

bool exists(const std::string& name) {
  struct stat status = {};
  return lstat(name.c_str(), &status) == 0;
}

}  // namespace sealwright
