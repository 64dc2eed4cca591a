#pragma once

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>

#include "base/bytes.h"
#include "util/descriptor.h"

namespace sealwright {

/// Which file it is, whatever the name it was reached by.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;

  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

/// An input: a regular file of at most 2^31 - 1 bytes, opened and read without waiting for
/// anything. After a failure nothing more is read.
class OpenFile {
 public:
  explicit OpenFile(const char* path);

  /// Why it could not be opened or read; null while all went well. The rest holds only then.
  [[nodiscard]] const char* failure() const { return failure_; }
  [[nodiscard]] std::size_t size() const { return static_cast<std::size_t>(status_.st_size); }
  [[nodiscard]] FileIdentity identity() const { return {status_.st_dev, status_.st_ino}; }

  /// Reads the next bytes.
  void read_fully(WritableBytes bytes);
  /// Reads the last bytes; the next ones stay the next ones.
  void read_end(WritableBytes bytes);
  /// To be called where the size says that the file ends.
  void expect_end();

 private:
  const char* find_obstacle();
  std::size_t read_some(WritableBytes bytes, std::size_t at);
  void read_at(WritableBytes bytes, std::size_t at);

  struct stat status_ = {};
  Descriptor descriptor_;
  std::size_t at_ = 0;  // where the next bytes are
  const char* failure_;
};

}  // namespace sealwright
