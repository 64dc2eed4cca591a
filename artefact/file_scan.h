#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "artefact/file_source.h"
#include "artefact/hex.h"
#include "base/bytes.h"
#include "crypto/sha1.h"

namespace sealwright {

/// What is kept of a file that was read once from start to end: enough to recognise it, to take its
/// keys out and to check every signature over it. The end is wiped, since a short file may hold a
/// private key.
struct FileScan {
  std::size_t size = 0;
  std::vector<std::uint8_t> end;  // the last 2048 bytes, or the whole of a shorter file
  ZEB_SHA1 before_end = {};       // the hash of everything before

  FileScan() = default;
  ~FileScan();
  FileScan(FileScan&&) noexcept = default;
  FileScan(const FileScan&) = delete;
  FileScan& operator=(const FileScan&) = delete;
  FileScan& operator=(FileScan&&) = delete;
};

/// Reads a file to its end and shows each piece to `visit`, too. Whether all went well says the
/// file.
[[nodiscard]] FileScan scan(FileSource& file, const std::function<void(ByteView)>& visit = {});

[[nodiscard]] FileScan scan_bytes(ByteView file);

/// SHA-1 over the file without its last `tail_length` bytes, at most those of `end`, and then over
/// `appended`.
[[nodiscard]] Digest digest_before(const FileScan& file, std::size_t tail_length,
                                   ByteView appended);

}  // namespace sealwright
