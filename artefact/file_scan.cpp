#include "artefact/file_scan.h"

#include <algorithm>

#include "base/wipe.h"

namespace sealwright {

FileScan::~FileScan() {
  if (!end.empty()) wipe(end.data(), end.size());
}

FileScan scan(FileSource& file, const std::function<void(ByteView)>& visit) {
  FileScan made;
  made.size = file.size();
  made.end.assign(file.end().begin(), file.end().end());
  sha1_init(made.before_end);
  std::size_t left = made.size - made.end.size();
  for (ByteView piece = file.next(); !piece.empty(); piece = file.next()) {
    const ByteView before_end = piece.first(std::min(left, piece.size()));
    sha1_update(made.before_end, before_end);
    left -= before_end.size();
    if (visit) visit(piece);
  }
  return made;
}

FileScan scan_bytes(ByteView file) {
  FileSource source(file);
  return scan(source);
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
