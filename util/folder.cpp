#include "util/folder.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/random.h>

#include <algorithm>
#include <cerrno>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>

namespace sealwright {

namespace {

constexpr int longest_wait = 1000;                         // tries: ten seconds
constexpr timespec between_tries = {0, 10 * 1000 * 1000};  // ten milliseconds

/// A number that other runs do not come upon. It need not be secret: a name that is taken is
/// refused, not used.
std::uint64_t distinct_number() {
  std::uint64_t number = 0;
  if (getrandom(&number, sizeof number, GRND_NONBLOCK) == sizeof number) return number;
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  const auto process = static_cast<std::uint64_t>(getpid());
  return process << 32 ^ static_cast<std::uint64_t>(now.tv_sec) << 30 ^
         static_cast<std::uint64_t>(now.tv_nsec);
}

bool continues_character(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;  // UTF-8
}

}  // namespace

Failure failure_of(int error) {
  if (error == EBUSY) return {"Cannot be replaced", true};
  const bool in_the_way =
      error == EEXIST || error == ENOTEMPTY || error == EISDIR || error == ENOTDIR;
  return {std::strerror(error), in_the_way};
}

const char* last_part(const char* path) {
  const char* slash = std::strrchr(path, '/');
  return slash == nullptr ? path : slash + 1;
}

Failure open_folder_of(Descriptor& folder, const char* path) {
  std::array<char, PATH_MAX> folder_path = {'.'};
  const auto length = static_cast<std::size_t>(last_part(path) - path);
  if (length >= folder_path.size()) return failure_of(ENAMETOOLONG);
  std::copy_n(path, length, folder_path.data());
  constexpr int flags = O_DIRECTORY | O_CLOEXEC;
  folder = Descriptor(open(folder_path.data(), flags | O_RDONLY));
  if (folder.is_open() || errno != EACCES) return folder.is_open() ? Failure() : failure_of(errno);
  folder = Descriptor(open(folder_path.data(), flags | O_PATH));
  return folder.is_open() ? Failure() : failure_of(errno);
}

Name temporary_name(const char* final_name) {
  constexpr std::size_t short_length = 64;  // every file system takes so much
  Name name = {};
  const auto mark = static_cast<std::size_t>(
      std::snprintf(name.data(), name.size(), ".sealwright-%016" PRIx64 ".", distinct_number()));
  const std::size_t final_length = std::strlen(final_name);
  const std::size_t room = std::clamp(final_length, short_length, name.size() - 1) - mark;
  const char* shown = final_name + (final_length - std::min(final_length, room));
  while (shown != final_name && continues_character(*shown)) ++shown;
  std::copy_n(shown, std::strlen(shown), name.data() + mark);
  return name;
}

Failure flush(int descriptor) {
  if (fsync(descriptor) == 0) return {};
  const bool is_lost = errno == ENOSPC || errno == EDQUOT || errno == EFBIG || errno == EIO;
  return is_lost ? failure_of(errno) : Failure();
}

FolderLock::FolderLock(int folder) : folder_(folder) {
  for (int i = 0; i < longest_wait; ++i) {
    if (flock(folder_, LOCK_EX | LOCK_NB) == 0 || (errno != EWOULDBLOCK && errno != EINTR)) return;
    nanosleep(&between_tries, nullptr);
  }
}

FolderLock::~FolderLock() {
  flock(folder_, LOCK_UN);
}

}  // namespace sealwright
