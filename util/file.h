#pragma once

#include <cstdint>
#include <cstdio>

// Whole files between disk and memory. Counts are signed 32-bit byte counts; the callers size
// their buffers.

/// Prints "file open error\n" and ends the process with exit status 255.
[[noreturn]] void fail_file_open();

/// Length of a file in bytes. A file that cannot be opened or sized (missing, a directory, a pipe)
/// or whose length passes the signed 32-bit range ends the process as fail_file_open does.
std::int32_t get_file_length(const char* path);

/// Reads exactly `count` bytes to `destination`. Keeps requesting until they have arrived, so a
/// shorter file never lets it return, on purpose: ask only for what the file holds.
/// @return the result of closing the file, 0 on success.
int read_file(const char* path, std::uint8_t* destination, std::int32_t count);

/// Writes `count` bytes as a new file. When it cannot be created, prints "file open error\n" and
/// returns; unlike the readers it does not end the process, on purpose. Write errors are ignored.
/// @return the result of closing the file, or the character count of the message.
int write_file(const char* path, const std::uint8_t* source, std::int32_t count);

/// write_file for a private key: the file is readable and writable by its owner alone (mode 0600),
/// also when it replaces an older one, before the first byte is written.
int write_private_file(const char* path, const std::uint8_t* source, std::int32_t count);

/// Reads a record of fixed size: clears the `size` bytes of `record`, then reads as many as the
/// file has. What a shorter file lacks stays zero; what a longer one has beyond is ignored.
/// @return the file's length in bytes, which may be above `size`.
std::int32_t read_record(const char* path, std::uint8_t* record, std::int32_t size);

/// Reads a whole file into a buffer of `capacity` bytes, cleared first. A longer file aborts.
/// @return the file's length in bytes.
std::int32_t read_whole_or_abort(const char* path, std::uint8_t* buffer, std::int32_t capacity);

/// Reads a file of `length` bytes, as get_file_length gave it. One that turns out shorter ends the
/// process as fail_file_open does.
void read_whole_or_fail(const char* path, std::uint8_t* buffer, std::int32_t length);

/// The writing loop of write_file: one request for each whole 256 bytes, then one for the
/// remainder, also when that is empty; a single request when there are fewer than 256.
void write_in_blocks(std::FILE* file, const std::uint8_t* source, std::int32_t count);
