#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>

#include "base/bytes.h"

namespace sealwright {

/// Closes without a look at the result, which says nothing about what was read.
struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

/// Opens for reading without waiting for a pipe's other end. What cannot be opened or is no
/// seekable file ends the process as fail_file_open does.
[[nodiscard]] File require_input(const char* path);

/// Length of an open file, whose position is the start again afterwards. A file whose length cannot
/// be had or passes the signed 32-bit range ends the process as fail_file_open does.
[[nodiscard]] std::int32_t length_of_open(std::FILE* file);

/// Fills the buffer and, unlike read_file, stops at the end of the file or an error: some files
/// deliver less than their length says. @return the bytes that arrived.
[[nodiscard]] std::size_t read_what_there_is(WritableBytes buffer, std::FILE* file);

}  // namespace sealwright
