#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "artefact/file_scan.h"
#include "util/large_buffer.h"

namespace sealwright {

/// Which file it is, whatever the name it was reached by.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t inode = 0;

  friend bool operator==(const FileIdentity&, const FileIdentity&) = default;
};

// Inputs are regular files of at most 2^31 - 1 bytes, read once and without waiting for anything.

/// A file read whole. A small one may hold a key or eFuse data and is wiped at the end.
class Input {
 public:
  explicit Input(const char* path);
  ~Input();
  Input(const Input&) = delete;
  Input(Input&&) = delete;
  Input& operator=(const Input&) = delete;
  Input& operator=(Input&&) = delete;

  /// Why it could not be read; empty when it was. The rest holds only then.
  [[nodiscard]] const std::string& failure() const { return failure_; }
  [[nodiscard]] std::span<std::uint8_t> bytes() { return {buffer_->data(), length_}; }
  [[nodiscard]] std::span<const std::uint8_t> bytes() const { return {buffer_->data(), length_}; }
  [[nodiscard]] const FileIdentity& identity() const { return identity_; }

 private:
  std::optional<LargeBuffer> buffer_;
  std::size_t length_ = 0;
  FileIdentity identity_;
  std::string failure_;
};

/// Reads a file piece by piece into a scan.
/// @return why it could not be read; empty when it was.
[[nodiscard]] std::string scan_file(FileScan& scan, const char* path);

}  // namespace sealwright
