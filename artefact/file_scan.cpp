#include "artefact/file_scan.h"

#include <algorithm>

#include "base/wipe.h"

namespace sealwright {

namespace {

/// The status of a hashing step can be dropped: it only tells of null pointers.
void append(ZEB_SHA1& hash, ByteView bytes) {
  if (!bytes.empty()) ZEB_SHA1_Update(&hash, bytes.data(), length_of(bytes));
}

}  // namespace

FileScan::~FileScan() {
  if (!end.empty()) wipe(end.data(), end.size());
}

ByteView end_of_image(ByteView image) {
  return image.last(std::min(image.size(), longest_end));
}

FileScan scan_bytes(ByteView file) {
  FileScan scan;
  const ByteView end = end_of_image(file);
  scan.size = file.size();
  scan.end.assign(end.begin(), end.end());
  ZEB_SHA1_Init(&scan.before_end);
  append(scan.before_end, file.first(file.size() - end.size()));
  return scan;
}

Digest digest_before(const FileScan& file, std::size_t tail_length, ByteView appended) {
  ZEB_SHA1 hash = file.before_end;
  append(hash, ByteView(file.end).first(file.end.size() - tail_length));
  append(hash, appended);
  Digest digest = {};
  ZEB_SHA1_Final(&hash, digest.data());
  return digest;
}

}  // namespace sealwright
