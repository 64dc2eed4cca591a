#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <span>

// Whole files between disk and memory. Counts are signed 32-bit byte counts; the callers size
// their buffers.

/// Length of a file in bytes. A file that cannot be opened or sized (missing, a directory, a pipe)
/// or whose length passes the signed 32-bit range ends the process as fail_file_open does.
std::int32_t get_file_length(const char* path);

/// Reads exactly `count` bytes to `destination`. Keeps requesting until they have arrived, so that
/// with a shorter file it never returns: ask only for what the file holds.
/// @return the result of closing the file, 0 on success.
int read_file(const char* path, std::uint8_t* destination, std::int32_t count);

/// Writes `count` bytes as a new file. When it cannot be created, prints "file open error\n" and
/// returns; the process goes on. Write errors are ignored.
/// @return the result of closing the file, or the character count of the message.
int write_file(const char* path, const std::uint8_t* source, std::int32_t count);

/// Who may read a new file.
enum class FileAccess {
  by_umask,
  owner_only,  // mode 0600, also when the file replaces an older one, which has to be one's own
};

/// One file of a set that belongs together.
struct OutputFile {
  const char* path;
  std::span<const std::uint8_t> content;
  FileAccess access;
};

/// Writes a set of files in their order. All are opened first, the last one before the others; for
/// each that cannot be opened, or has no room on the disk, "file open error\n" is printed, and then
/// what there was stays as it was. Later write errors are ignored.
void write_file_set(std::span<const OutputFile> files);

/// Reads a record of fixed size: clears `record`, then reads as many bytes as the file has. What a
/// shorter file lacks stays zero; what a longer one has beyond is ignored.
/// @return the file's length in bytes, which may be above the record's.
std::int32_t read_record(std::span<std::uint8_t> record, const char* path);

/// Reads a whole file into a buffer, cleared first. A longer file aborts.
/// @return the file's length in bytes.
std::int32_t read_whole_or_abort(std::span<std::uint8_t> buffer, const char* path);

/// Reads a file of the buffer's length, as get_file_length gave it. One that turns out shorter ends
/// the process as fail_file_open does.
void read_whole_or_fail(std::span<std::uint8_t> buffer, const char* path);

/// The writing loop of write_file: one request for each whole 256 bytes, then one for the
/// remainder, also when that is empty; a single request when there are fewer than 256.
void write_in_blocks(std::FILE* file, const std::uint8_t* source, std::int32_t count);

/// A file's name with its terminator.
using FileName = std::array<char, 128>;

/// Base name and suffix joined; aborts when they do not fit.
FileName join_file_name(const char* base_name, const char* suffix);
