#include "util/new_folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <string>

namespace sealwright {

namespace {

constexpr mode_t mode_0700 = 0700;

struct FolderCloser {
  void operator()(DIR* folder) const { closedir(folder); }
};

/// Removes the files of a folder, which has no folders.
void remove_files(Descriptor descriptor) {
  const std::unique_ptr<DIR, FolderCloser> folder(fdopendir(descriptor.number()));
  if (!folder) return;
  descriptor.release();
  const int number = dirfd(folder.get());
  while (const dirent* entry = readdir(folder.get())) unlinkat(number, entry->d_name, 0);
}

}  // namespace

NewFolder::~NewFolder() {
  if (!is_temporary_) return;
  remove_files(std::move(folder_));
  unlinkat(parent_.number(), temporary_.data(), AT_REMOVEDIR);
}

void NewFolder::create(const char* path) {
  std::string final_path = path;
  while (final_path.size() > 1 && final_path.back() == '/') final_path.pop_back();
  const std::string name = last_part(final_path.c_str());
  if (name.size() >= name_.size()) failure_ = failure_of(ENAMETOOLONG);
  if (name.empty()) failure_ = failure_of(final_path.empty() ? ENOENT : EBUSY);
  if (!failed(failure_)) failure_ = open_folder_of(parent_, final_path.c_str());
  if (failed(failure_)) return;
  std::ranges::copy(name, name_.begin());
  temporary_ = temporary_name(name.c_str());
  if (mkdirat(parent_.number(), temporary_.data(), mode_0700) != 0) {
    failure_ = failure_of(errno);
    return;
  }
  is_temporary_ = true;
  constexpr int flags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
  folder_ = Descriptor(openat(parent_.number(), temporary_.data(), flags));
  // The mode that mkdirat gave is less the umask.
  if (!folder_.is_open() || fchmod(folder_.number(), mode_0700) != 0) failure_ = failure_of(errno);
}

void NewFolder::add(const char* name, ByteView content, FileAccess access) {
  if (failed(failure_)) return;
  NewFile file;
  file.create_in(folder_.number(), name, access, Existing::kept);
  file.write(content);
  failure_ = sealwright::publish({&file, 1});
}

Failure NewFolder::publish() {
  if (!failed(failure_)) failure_ = flush(folder_.number());
  if (failed(failure_)) return failure_;
  const int parent = parent_.number();
  if (renameat(parent, temporary_.data(), parent, name_.data()) != 0) {
    failure_ = failure_of(errno);
    return failure_;
  }
  is_temporary_ = false;
  return flush(parent);
}

}  // namespace sealwright
