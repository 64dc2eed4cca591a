#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "artefact/open_file.h"

namespace sealwright {

/// Longest end of a file that can be seen before the rest is read: a boot context with build
/// information before it, and any key file.
inline constexpr std::size_t longest_end = 2048;

/// A file's bytes from start to end, for what is read once and not kept. Its end can be seen first;
/// a file whose last bytes are others when their turn comes has failed.
class FileSource {
 public:
  /// What was opened tells failure().
  explicit FileSource(const char* path);
  /// Bytes in memory, which outlive the source.
  explicit FileSource(ByteView bytes);
  ~FileSource();
  FileSource(FileSource&&) noexcept = default;
  FileSource(const FileSource&) = delete;
  FileSource& operator=(const FileSource&) = delete;
  FileSource& operator=(FileSource&&) = delete;

  /// Why the file could not be opened or read so far; empty while all went well.
  [[nodiscard]] std::string failure() const;
  [[nodiscard]] std::size_t size() const { return size_; }
  /// The last 2048 bytes, or the whole of a shorter file.
  [[nodiscard]] ByteView end() const { return end_; }

  /// The next bytes: as many as are left, wanted and fit a block, which holds 128 KiB. They stay
  /// until the next call. None at the end of the file and after a failure.
  [[nodiscard]] ByteView next(std::size_t wanted = block_length);

 private:
  static constexpr std::size_t block_length = 128UL * 1024;

  void expect_end_as_seen(ByteView piece);

  std::optional<OpenFile> file_;  // none where the bytes are in memory
  ByteView memory_;
  std::size_t size_ = 0;
  std::size_t left_ = 0;
  std::vector<std::uint8_t> end_;  // wiped, since a short file may hold a private key
  std::vector<std::uint8_t> block_;
  bool has_changed_ = false;
};

}  // namespace sealwright
