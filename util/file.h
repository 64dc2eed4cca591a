#pragma once

#include <array>
#include <cstdint>
#include <cstdio>

#include "base/bytes.h"

// Whole files between disk and memory. Counts are signed 32-bit byte counts; the callers size
// their buffers.

/// Length of a file in bytes. A file that cannot be opened or sized (missing, a directory, a pipe)
/// or whose length passes the signed 32-bit range ends the process as fail_file_open does.
std::int32_t get_file_length(const char* path);

/// Reads exactly `count` bytes to `destination`. Keeps requesting until they have arrived, so that
/// with a shorter file it never returns: ask only for what the file holds.
/// @return the result of closing the file, 0 on success.
int read_file(const char* path, std::uint8_t* destination, std::int32_t count);

/// Writes `count` bytes to a file, emptied first, or to a pipe or device. When it cannot be opened,
/// prints "file open error\n" and returns; the process goes on. Write errors are ignored. Without
/// memory it aborts before anything is opened.
/// @return the result of closing the file, or the character count of the message.
int write_file(const char* path, const std::uint8_t* source, std::int32_t count);

namespace sealwright {

/// Reads a record of fixed size: clears `record`, then reads as many bytes as the file has. What a
/// shorter file lacks stays zero; what a longer one has beyond is ignored.
/// @return the file's length in bytes, which may be above the record's.
std::int32_t read_record(WritableBytes record, const char* path);

/// Reads a whole file into a buffer, cleared first. A longer file aborts.
/// @return the file's length in bytes.
std::int32_t read_whole_or_abort(WritableBytes buffer, const char* path);

/// Reads a file of the buffer's length, as get_file_length gave it. One that turns out shorter ends
/// the process as fail_file_open does.
void read_whole_or_fail(WritableBytes buffer, const char* path);

/// The writing loop of write_file: one request for each whole 256 bytes, then one for the
/// remainder, also when that is empty; a single request when there are fewer than 256.
void write_in_blocks(std::FILE* file, const std::uint8_t* source, std::int32_t count);

/// A file's name with its terminator.
using FileName = std::array<char, 128>;

/// Base name and suffix joined; aborts when they do not fit.
FileName join_file_name(const char* base_name, const char* suffix);

}  // namespace sealwright
