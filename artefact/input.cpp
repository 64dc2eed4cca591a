#include "artefact/input.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <vector>

#include "base/wipe.h"

namespace sealwright {

namespace {

constexpr off_t largest_input = std::numeric_limits<std::int32_t>::max();
constexpr std::size_t largest_secret = 4096;  // bytes; key and eFuse files are smaller

constexpr std::size_t piece_length = 128UL * 1024;

/// An open file, closed at its end.
class OpenFile {
 public:
  // Opening does not wait for the other end of a pipe, which is refused then.
  explicit OpenFile(const char* path)
      : descriptor_(open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)),
        failure_(descriptor_ < 0 ? std::strerror(errno) : find_obstacle()) {}
  ~OpenFile() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  OpenFile(const OpenFile&) = delete;
  OpenFile(OpenFile&&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  OpenFile& operator=(OpenFile&&) = delete;

  /// Why it could not be opened or read; null while all went well.
  [[nodiscard]] const char* failure() const { return failure_; }
  [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(status_.st_size); }
  [[nodiscard]] FileIdentity identity() const { return {status_.st_dev, status_.st_ino}; }

  /// Reads the next bytes unless something failed already.
  void read_fully(WritableBytes bytes) {
    while (failure_ == nullptr && !bytes.empty()) {
      const std::size_t got = read_some(bytes);
      if (failure_ == nullptr && got == 0) failure_ = "Shorter than its size says";
      bytes = bytes.subspan(got);
    }
  }

  /// To be called where the size says that the file ends.
  void expect_end() {
    std::uint8_t more = 0;
    const bool ended = failure_ != nullptr || read_some({&more, 1}) == 0;
    if (!ended) failure_ = "Longer than its size says";
  }

 private:
  const char* find_obstacle() {
    if (fstat(descriptor_, &status_) != 0) return std::strerror(errno);
    if (S_ISDIR(status_.st_mode)) return std::strerror(EISDIR);
    if (!S_ISREG(status_.st_mode)) return "Not a regular file";
    return status_.st_size > largest_input ? "Larger than 2147483647 bytes" : nullptr;
  }

  /// How many bytes came; 0 also for an error, which is noted.
  std::size_t read_some(WritableBytes bytes) {
    ssize_t got = 0;
    do {
      got = read(descriptor_, bytes.data(), bytes.size());
    } while (got < 0 && errno == EINTR);
    if (got < 0) failure_ = std::strerror(errno);
    return got < 0 ? 0 : static_cast<std::size_t>(got);
  }

  struct stat status_ = {};
  int descriptor_;
  const char* failure_;
};

std::string to_text(const char* failure) {
  return failure == nullptr ? "" : failure;
}

}  // namespace

Input::Input(const char* path) {
  OpenFile file(path);
  if (file.failure() == nullptr) {
    length_ = file.size();
    identity_ = file.identity();
    buffer_.emplace(length_);
    if (buffer_->data() == nullptr) {
      failure_ = std::strerror(ENOMEM);
      return;
    }
    file.read_fully({buffer_->data(), length_});
    file.expect_end();
  }
  failure_ = to_text(file.failure());
}

Input::~Input() {
  const bool was_filled = buffer_ && buffer_->data() != nullptr;
  if (was_filled && length_ <= largest_secret) wipe(buffer_->data(), length_);
}

std::string scan_file(FileScan& scan, const char* path) {
  OpenFile file(path);
  if (file.failure() != nullptr) return file.failure();
  scan.size = file.size();
  scan.end.resize(std::min(scan.size, longest_end));
  sha1_init(scan.before_end);
  std::size_t left = scan.size - scan.end.size();
  std::vector<std::uint8_t> buffer(std::min(left, piece_length));
  while (left != 0 && file.failure() == nullptr) {
    const WritableBytes piece = {buffer.data(), std::min(left, buffer.size())};
    file.read_fully(piece);
    sha1_update(scan.before_end, piece);
    left -= piece.size();
  }
  file.read_fully(scan.end);
  file.expect_end();
  return to_text(file.failure());
}

}  // namespace sealwright
