#include "artefact/file_scan.h"

#include <algorithm>

#include "base/wipe.h"

namespace sealwright {

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
  sha1_init(scan.before_end);
  sha1_update(scan.before_end, file.first(file.size() - end.size()));
  return scan;
}

Digest digest_before(const FileScan& file, std::size_t tail_length, ByteView appended) {
  ZEB_SHA1 hash = file.before_end;
  sha1_update(hash, ByteView(file.end).first(file.end.size() - tail_length));
  if (!appended.empty()) sha1_update(hash, appended);
  Digest digest = {};
  sha1_final(hash, digest.data());
  return digest;
}

}  // namespace sealwright
