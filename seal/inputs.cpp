#include "seal/inputs.h"

#include <sys/stat.h>

#include <utility>

#include "artefact/escape.h"
#include "artefact/private_key_file.h"

namespace sealwright {

Objection read_input(InputFile& file, std::string name) {
  file.name = std::move(name);
  file.input.emplace(file.name.c_str());
  if (file.input->failure().empty()) return std::nullopt;
  return give_up(file.name, file.input->failure());
}

namespace {

/// A private key that nobody else may have: an image written over it would be its end.
bool is_private_key(const char* name, off_t size) {
  constexpr off_t largest_key = sizeof(Sb20PrivateKeyFile);
  if (size > largest_key) return false;
  const Input input(name);
  PrivateKey key;
  return input.failure().empty() && open_private_key_file(key, input.bytes()) && numbers_agree(key);
}

}  // namespace

Objection check_output(const char* name, std::initializer_list<const InputFile*> inputs) {
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
