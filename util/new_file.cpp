#include "util/new_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace sealwright {

namespace {

constexpr mode_t mode_0600 = 0600;
constexpr std::size_t largest_write = std::size_t{1} << 30;  // bytes; the system takes 2^31 - 4096
constexpr int most_attempts = 100;  // at a name that somebody makes and removes all the time

mode_t mode_by_umask() {
  const mode_t mask = umask(S_IRWXG | S_IRWXO);  // can only be asked for by setting it
  umask(mask);
  return 0666 & ~mask;
}

/// Whether a flag of renameat2, or a hard link, is what the file system does not have.
bool is_unsupported(int error) {
  return error == EINVAL || error == ENOSYS || error == EOPNOTSUPP;
}

}  // namespace

NewFile::~NewFile() {
  if (state_ == State::temporary) unlinkat(folder_, temporary_.data(), 0);
}

void NewFile::create(const char* path, FileAccess access, Existing existing) {
  failure_ = *path == '\0' ? failure_of(ENOENT) : open_folder_of(own_folder_, path);
  if (!failed(failure_)) create_in(own_folder_.number(), last_part(path), access, existing);
}

void NewFile::create_in(int folder, const char* name, FileAccess access, Existing existing) {
  folder_ = folder;
  access_ = access;
  existing_ = existing;
  const std::size_t length = std::strlen(name);
  if (length == 0) failure_ = failure_of(EISDIR);
  if (length >= name_.size()) failure_ = failure_of(ENAMETOOLONG);
  if (failed(failure_)) return;
  std::copy_n(name, length, name_.data());
  failure_ = find_obstacle(name_);
  if (failed(failure_)) return;
  temporary_ = temporary_name(name);
  constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  file_ = Descriptor(openat(folder_, temporary_.data(), flags, mode_0600));
  if (!file_.is_open()) {
    failure_ = failure_of(errno);
    return;
  }
  state_ = State::temporary;
}

void NewFile::write(ByteView bytes) {
  while (!failed(failure_) && !bytes.empty()) {
    const ssize_t count =
        ::write(file_.number(), bytes.data(), std::min(bytes.size(), largest_write));
    if (count > 0) bytes = bytes.subspan(static_cast<std::size_t>(count));
    if (count == 0) failure_ = failure_of(EIO);
    if (count < 0 && errno != EINTR) failure_ = failure_of(errno);
  }
}

void NewFile::complete() {
  if (failed(failure_) || !file_.is_open()) return;
  const bool owner_only = access_ == FileAccess::owner_only;
  const bool has_mode = fchmod(file_.number(), owner_only ? mode_0600 : mode_by_umask()) == 0;
  // Where modes cannot be set, what is to be readable may be less so.
  failure_ = has_mode || !owner_only ? flush(file_.number()) : failure_of(errno);
  file_.reset();
}

/// Whether what has this name may not be replaced.
Failure NewFile::find_obstacle(const Name& name) const {
  struct stat status = {};
  if (fstatat(folder_, name.data(), &status, AT_SYMLINK_NOFOLLOW) != 0) {
    return errno == ENOENT ? Failure() : failure_of(errno);
  }
  if (S_ISDIR(status.st_mode)) return failure_of(EISDIR);
  if (existing_ == Existing::kept) return failure_of(EEXIST);
  const bool is_file = S_ISREG(status.st_mode) || S_ISLNK(status.st_mode);
  if (existing_ == Existing::replaced || is_file) return {};
  return {"Not a regular file", true};
}

bool NewFile::rename_to(const Name& to, const Name& from, unsigned flags) const {
  return renameat2(folder_, from.data(), folder_, to.data(), flags) == 0;
}

Failure NewFile::get_name() {
  return existing_ == Existing::kept ? get_free_name() : replace_by_exchange();
}

/// Gives the file its final name where nothing has it.
Failure NewFile::get_free_name() {
  bool done = rename_to(name_, temporary_, RENAME_NOREPLACE);
  if (!done && is_unsupported(errno)) {
    done = linkat(folder_, temporary_.data(), folder_, name_.data(), 0) == 0;
    if (!done && (is_unsupported(errno) || errno == EPERM)) {
      return {"The file system cannot tell whether the name is free", false};
    }
    if (done) unlinkat(folder_, temporary_.data(), 0);
  }
  if (!done) return failure_of(errno);
  state_ = State::named;
  return {};
}

/// Gives the file its final name and what stood there the temporary one, in one step.
Failure NewFile::replace_by_exchange() {
  for (int i = 0; i < most_attempts; ++i) {
    if (rename_to(name_, temporary_, RENAME_EXCHANGE)) {
      state_ = State::exchanged;
      const Failure obstacle = find_obstacle(temporary_);  // it may have come just now
      if (failed(obstacle)) return_name();
      return obstacle;
    }
    if (errno == ENOENT && rename_to(name_, temporary_, RENAME_NOREPLACE)) {
      state_ = State::named;
      return {};
    }
    if (is_unsupported(errno)) return replace_by_steps();
    if (errno != EEXIST) break;
  }
  return failure_of(errno);
}

/// Does it in two steps, where the file system has no exchange.
Failure NewFile::replace_by_steps() {
  older_ = temporary_name(name_.data());
  const bool has_older = rename_to(older_, name_);
  if (!has_older && errno != ENOENT) return failure_of(errno);
  Failure failure = has_older ? find_obstacle(older_) : Failure();
  if (!failed(failure) && !rename_to(name_, temporary_)) failure = failure_of(errno);
  if (!failed(failure)) state_ = has_older ? State::set_aside : State::named;
  // Should this fail, the older file stays beside its name.
  if (failed(failure) && has_older && !rename_to(name_, older_)) state_ = State::settled;
  return failure;
}

/// Undoes what gave the file its final name. Where that fails, everything keeps the name it has.
void NewFile::return_name() {
  bool done = true;
  if (state_ == State::exchanged) done = rename_to(name_, temporary_, RENAME_EXCHANGE);
  if (state_ == State::named) done = rename_to(temporary_, name_);
  if (state_ == State::set_aside) done = rename_to(temporary_, name_) && rename_to(name_, older_);
  state_ = done ? State::temporary : State::settled;
}

void NewFile::remove_older() {
  // Where it cannot be removed, the older file stays beside its name; the new one is in place.
  if (state_ == State::exchanged) unlinkat(folder_, temporary_.data(), 0);
  if (state_ == State::set_aside) unlinkat(folder_, older_.data(), 0);
  state_ = State::settled;
}

Failure publish(std::span<NewFile> files) {
  for (NewFile& file : files) {
    file.complete();
    if (failed(file.failure_)) return file.failure_;
  }
  const int folder = files.front().folder_;
  const FolderLock lock(folder);
  for (const NewFile& file : files) {
    const Failure obstacle = file.find_obstacle(file.name_);
    if (failed(obstacle)) return obstacle;
  }
  std::size_t named = 0;
  Failure failure;
  while (!failed(failure) && named < files.size()) {
    failure = files[named].get_name();
    if (!failed(failure)) ++named;
  }
  if (!failed(failure)) failure = flush(folder);
  if (failed(failure)) {
    while (named > 0) files[--named].return_name();
    return failure;
  }
  for (NewFile& file : files) file.remove_older();
  return {};
}

}  // namespace sealwright
