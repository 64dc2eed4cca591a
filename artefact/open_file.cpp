#include "artefact/open_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <limits>

namespace sealwright {

namespace {

constexpr off_t largest_input = std::numeric_limits<std::int32_t>::max();

}  // namespace

// Opening does not wait for the other end of a pipe, which is refused then.
OpenFile::OpenFile(const char* path)
    : descriptor_(open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)),
      failure_(descriptor_.is_open() ? find_obstacle() : std::strerror(errno)) {}

const char* OpenFile::find_obstacle() {
  if (fstat(descriptor_.number(), &status_) != 0) return std::strerror(errno);
  if (S_ISDIR(status_.st_mode)) return std::strerror(EISDIR);
  if (!S_ISREG(status_.st_mode)) return "Not a regular file";
  return status_.st_size > largest_input ? "Larger than 2147483647 bytes" : nullptr;
}

void OpenFile::read_fully(WritableBytes bytes) {
  read_at(bytes, at_);
  at_ += bytes.size();
}

void OpenFile::read_end(WritableBytes bytes) {
  if (failure_ == nullptr) read_at(bytes, size() - bytes.size());
}

void OpenFile::expect_end() {
  std::uint8_t more = 0;
  const bool ended = failure_ != nullptr || read_some({&more, 1}, at_) == 0;
  if (!ended) failure_ = "Longer than its size says";
}

/// How many bytes came; 0 also for an error, which is noted.
std::size_t OpenFile::read_some(WritableBytes bytes, std::size_t at) {
  ssize_t got = 0;
  do {
    got = pread(descriptor_.number(), bytes.data(), bytes.size(), static_cast<off_t>(at));
  } while (got < 0 && errno == EINTR);
  if (got < 0) failure_ = std::strerror(errno);
  return got < 0 ? 0 : static_cast<std::size_t>(got);
}

void OpenFile::read_at(WritableBytes bytes, std::size_t at) {
  while (failure_ == nullptr && !bytes.empty()) {
    const std::size_t got = read_some(bytes, at);
    if (failure_ == nullptr && got == 0) failure_ = "Shorter than its size says";
    bytes = bytes.subspan(got);
    at += got;
  }
}

}  // namespace sealwright
