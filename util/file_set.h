#pragma once

#include <span>

#include "base/bytes.h"
#include "util/new_file.h"

namespace sealwright {

/// One file of a set that belongs together.
struct OutputFile {
  const char* path;
  ByteView content;
  FileAccess access;
};

/// Writes a set of up to three files, all in one folder, whole or not at all: all are made under
/// temporary names first, and then they get their own, the last file before the others. What
/// stands there, a pipe or a link, too, is replaced and never opened; a directory is not. Prints
/// "file open error\n" for each file that cannot be made, or once when the names cannot be given;
/// then each name holds what it held before.
void write_file_set(std::span<const OutputFile> files);

}  // namespace sealwright
