#include "util/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>
#include <memory>

#include "util/abort.h"

namespace {

constexpr int exit_status_of_failure = 255;
constexpr std::int32_t block_length = 256;               // bytes per write request
constexpr std::size_t stream_buffer_length = 256 << 10;  // bytes; batches the small requests
constexpr mode_t everyone_by_umask = 0666;
constexpr mode_t owner_only = 0600;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

int print_open_error() {
  return std::printf("file open error\n");
}

/// Opens for reading without waiting for a pipe's other end. Null for what cannot be opened or is
/// no seekable file.
File open_input(const char* path) {
  const int descriptor = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) return nullptr;
  struct stat status = {};
  const bool usable = fstat(descriptor, &status) == 0 && !S_ISDIR(status.st_mode) &&
                      lseek(descriptor, 0, SEEK_SET) == 0;
  std::FILE* file =
      usable && fcntl(descriptor, F_SETFL, 0) == 0 ? fdopen(descriptor, "rb") : nullptr;
  if (file == nullptr) close(descriptor);
  return File(file);
}

File require_input(const char* path) {
  File file = open_input(path);
  if (!file) fail_file_open();
  return file;
}

/// Length of an open file, whose position is the start again afterwards.
std::int32_t length_of(std::FILE* file) {
  if (fseeko(file, 0, SEEK_END) != 0) fail_file_open();
  const off_t length = ftello(file);
  if (length < 0 || length > std::numeric_limits<std::int32_t>::max()) fail_file_open();
  std::rewind(file);
  return static_cast<std::int32_t>(length);
}

/// Reads at most `count` bytes and, unlike read_file, stops at the end of the file or an error:
/// some files deliver less than their length says. @return the bytes that arrived.
std::int32_t read_what_there_is(std::FILE* file, std::uint8_t* destination, std::int32_t count) {
  return static_cast<std::int32_t>(
      std::fread(destination, 1, static_cast<std::size_t>(count), file));
}

/// Opens for writing without waiting for a pipe's reader. Null when it cannot be done.
File open_output(const char* path, mode_t mode) {
  const int descriptor = open(path, O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, mode);
  if (descriptor < 0) return nullptr;
  struct stat status = {};
  bool usable = fstat(descriptor, &status) == 0;
  if (usable && S_ISREG(status.st_mode)) {
    // The permissions are narrowed before the old content goes and the new one comes.
    if (mode == owner_only) usable = fchmod(descriptor, owner_only) == 0;
    usable = usable && ftruncate(descriptor, 0) == 0;
  }
  usable = usable && fcntl(descriptor, F_SETFL, 0) == 0;  // waiting is right once it is open
  std::FILE* file = usable ? fdopen(descriptor, "wb") : nullptr;
  if (file == nullptr) close(descriptor);
  return File(file);
}

int write_new_file(const char* path, const std::uint8_t* source, std::int32_t count, mode_t mode) {
  // Declared before the file: the stream uses the buffer until it is closed.
  const auto stream_buffer = std::make_unique_for_overwrite<char[]>(stream_buffer_length);
  File file = open_output(path, mode);
  if (!file) return print_open_error();
  std::setvbuf(file.get(), stream_buffer.get(), _IOFBF, stream_buffer_length);
  write_in_blocks(file.get(), source, count);
  return std::fclose(file.release());
}

}  // namespace

void fail_file_open() {
  print_open_error();
  std::exit(exit_status_of_failure);
}

std::int32_t get_file_length(const char* path) {
  return length_of(require_input(path).get());
}

int read_file(const char* path, std::uint8_t* destination, std::int32_t count) {
  File file = require_input(path);
  std::int32_t got = 0;
  while (got < count) {
    // No test for the end of the file or an error, on purpose.
    std::clearerr(file.get());
    const auto wanted = static_cast<std::size_t>(count - got);
    got += static_cast<std::int32_t>(std::fread(destination + got, 1, wanted, file.get()));
  }
  return std::fclose(file.release());
}

int write_file(const char* path, const std::uint8_t* source, std::int32_t count) {
  return write_new_file(path, source, count, everyone_by_umask);
}

int write_private_file(const char* path, const std::uint8_t* source, std::int32_t count) {
  return write_new_file(path, source, count, owner_only);
}

std::int32_t read_record(const char* path, std::uint8_t* record, std::int32_t size) {
  std::fill_n(record, size, std::uint8_t{0});
  const File file = require_input(path);
  const std::int32_t length = length_of(file.get());
  read_what_there_is(file.get(), record, std::min(length, size));
  return length;
}

std::int32_t read_whole_or_abort(const char* path, std::uint8_t* buffer, std::int32_t capacity) {
  const std::int32_t length = read_record(path, buffer, capacity);
  if (length > capacity) abort_on_overflow();
  return length;
}

void read_whole_or_fail(const char* path, std::uint8_t* buffer, std::int32_t length) {
  const File file = require_input(path);
  if (read_what_there_is(file.get(), buffer, length) != length) fail_file_open();
}

void write_in_blocks(std::FILE* file, const std::uint8_t* source, std::int32_t count) {
  const std::int32_t total = std::max(count, 0);
  const std::int32_t blocks = total / block_length;
  for (std::int32_t i = 0; i < blocks; ++i) {
    std::fwrite(source, 1, block_length, file);
    source += block_length;
  }
  std::fwrite(source, 1, static_cast<std::size_t>(total % block_length), file);
}
