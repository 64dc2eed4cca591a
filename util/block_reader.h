#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "base/bytes.h"
#include "util/input_file.h"

namespace sealwright {

/// A file that is read once, from start to end, through one block of memory: for what is hashed and
/// not kept. What cannot be opened or sized ends the process as get_file_length does.
class BlockReader {
 public:
  explicit BlockReader(const char* path);

  /// Bytes that have not been read yet, by the length that the file had when it was opened.
  [[nodiscard]] std::uint32_t left() const { return left_; }

  /// The next bytes: as many as are wanted, left and fit the block of 128 KiB. They stay until the
  /// next call. A file that has fewer after all ends the process as fail_file_open does.
  [[nodiscard]] ByteView next(std::uint32_t wanted);

 private:
  // Fits the processor's second cache, so that hashing finds there what reading has left.
  static constexpr std::size_t block_length = 128 << 10;

  File file_;
  std::uint32_t left_;
  std::array<std::uint8_t, block_length> block_ = {};
};

}  // namespace sealwright
