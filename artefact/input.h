#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "artefact/open_file.h"
#include "util/large_buffer.h"

namespace sealwright {

/// A file read whole and once. A small one may hold a key or eFuse data and is wiped at the end.
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

}  // namespace sealwright
