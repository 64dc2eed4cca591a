#pragma once

#include "sb20/key_buffers.h"
#include "sb20/key_files.h"
#include "util/file.h"

/// Reads "eFuseData_V21.dat" into the cleared eFuse buffer. The length becomes what the file has,
/// even above the buffer's 20 bytes; the engines refuse any other length.
inline void read_sb20_efuse_file() {
  sb20_eFuseDataLen = static_cast<std::uint32_t>(
      read_record(sb20_efuse_file, sb20_eFuseData, sizeof sb20_eFuseData));
}
