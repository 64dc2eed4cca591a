#include "artefact/input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <limits>

#include "base/wipe.h"

namespace sealwright {

namespace {

constexpr off_t largest_input = std::numeric_limits<std::int32_t>::max();
constexpr std::size_t largest_secret = 4096;  // bytes; key and eFuse files are smaller

/// Why the open file cannot be an input; null when it can.
const char* find_obstacle(int descriptor, struct stat& status) {
  if (fstat(descriptor, &status) != 0) return std::strerror(errno);
  if (S_ISDIR(status.st_mode)) return std::strerror(EISDIR);
  if (!S_ISREG(status.st_mode)) return "Not a regular file";
  if (status.st_size > largest_input) return "Larger than 2147483647 bytes";
  return nullptr;
}

/// Reads `size` bytes. @return null, or why they did not all arrive.
const char* read_fully(int descriptor, std::uint8_t* bytes, std::size_t size) {
  if (bytes == nullptr) return std::strerror(ENOMEM);
  while (size != 0) {
    const ssize_t got = read(descriptor, bytes, size);
    if (got < 0 && errno != EINTR) return std::strerror(errno);
    if (got == 0) return "Shorter than its size says";
    if (got < 0) continue;
    bytes += got;
    size -= static_cast<std::size_t>(got);
  }
  std::uint8_t more = 0;
  const ssize_t got = read(descriptor, &more, sizeof more);
  if (got < 0) return std::strerror(errno);
  return got > 0 ? "Longer than its size says" : nullptr;
}

}  // namespace

Input::Input(const char* path) {
  // Opening does not wait for the other end of a pipe, which is refused then.
  const int descriptor = open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  struct stat status = {};
  const char* obstacle = descriptor < 0 ? std::strerror(errno) : find_obstacle(descriptor, status);
  if (obstacle == nullptr) {
    length_ = static_cast<std::size_t>(status.st_size);
    identity_ = {status.st_dev, status.st_ino};
    buffer_.emplace(length_);
    obstacle = read_fully(descriptor, buffer_->data(), length_);
  }
  if (obstacle != nullptr) failure_ = obstacle;
  if (descriptor >= 0) close(descriptor);
}

Input::~Input() {
  const bool was_filled = buffer_ && buffer_->data() != nullptr;
  if (was_filled && length_ <= largest_secret) wipe(buffer_->data(), length_);
}

}  // namespace sealwright
