#include "util/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "util/process.h"

namespace {

constexpr std::int32_t block_length = 256;               // bytes per write request
constexpr std::size_t stream_buffer_length = 256 << 10;  // bytes; batches the small requests
constexpr mode_t mode_0666 = 0666;
constexpr mode_t mode_0600 = 0600;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

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

/// Fills the buffer and, unlike read_file, stops at the end of the file or an error: some files
/// deliver less than their length says. @return the bytes that arrived.
std::size_t read_what_there_is(std::span<std::uint8_t> buffer, std::FILE* file) {
  return std::fread(buffer.data(), 1, buffer.size(), file);
}

/// An output that is open, its old content still in place.
struct Output {
  File file;
  bool is_new;      // made by opening it
  bool is_regular;  // not a device or a pipe
};

bool is_missing(const char* path) {
  struct stat status = {};
  return stat(path, &status) != 0 && errno == ENOENT;
}

/// Opens for writing without waiting for a pipe's reader. No file when it cannot be done, or when a
/// file that is to be its owner's alone is somebody else's.
Output open_output(const char* path, FileAccess access) {
  const bool owner_only = access == FileAccess::owner_only;
  const bool is_new = is_missing(path);
  const int descriptor =
      open(path, O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, owner_only ? mode_0600 : mode_0666);
  if (descriptor < 0) return {nullptr, false, false};
  struct stat status = {};
  bool usable = fstat(descriptor, &status) == 0;
  const bool is_regular = S_ISREG(status.st_mode);
  if (owner_only && is_regular && !is_new) usable = usable && status.st_uid == geteuid();
  usable = usable && fcntl(descriptor, F_SETFL, 0) == 0;  // waiting is right once it is open
  std::FILE* file = usable ? fdopen(descriptor, "wb") : nullptr;
  if (file == nullptr) close(descriptor);
  return {File(file), is_new && file != nullptr, is_regular};
}

/// Takes the room on the disk that the content needs. True also where that cannot be asked for.
bool reserve(const Output& output, std::size_t length) {
  if (!output.is_regular || length == 0) return true;
  const auto wanted = static_cast<off_t>(length);
  return fallocate(fileno(output.file.get()), FALLOC_FL_KEEP_SIZE, 0, wanted) == 0 ||
         errno != ENOSPC;
}

/// Makes the file its owner's alone, where that is asked for.
bool narrow(const Output& output, FileAccess access) {
  if (!output.is_regular || access != FileAccess::owner_only) return true;
  return fchmod(fileno(output.file.get()), mode_0600) == 0;
}

/// Empties the file, where it is one, writes the content and closes it.
int write_and_close(Output output, const std::uint8_t* source, std::int32_t count) {
  if (output.is_regular && ftruncate(fileno(output.file.get()), 0) != 0) {
    return print_file_open_error();
  }
  const auto stream_buffer = std::make_unique_for_overwrite<char[]>(stream_buffer_length);
  std::FILE* file = output.file.release();
  std::setvbuf(file, stream_buffer.get(), _IOFBF, stream_buffer_length);
  write_in_blocks(file, source, count);
  const int result = std::fclose(file);
  // What was used of the buffer may have held a secret; the rest is never touched.
  const auto used = std::min(static_cast<std::size_t>(std::max(count, 0)), stream_buffer_length);
  explicit_bzero(stream_buffer.get(), used);
  return result;
}

/// Removes what opening the output has made, at the end of a link, too.
void remove_new(const Output& output, const char* path) {
  if (!output.is_new) return;
  char* target = realpath(path, nullptr);
  if (target != nullptr) unlink(target);
  std::free(target);
}

}  // namespace

std::int32_t get_file_length(const char* path) {
  return length_of(require_input(path).get());
}

int read_file(const char* path, std::uint8_t* destination, std::int32_t count) {
  File file = require_input(path);
  std::int32_t got = 0;
  while (got < count) {
    // Quirk: no test for the end of the file or an error; callers of the platform's own routine
    // depend on a return meaning that all bytes are there.
    std::clearerr(file.get());
    const auto wanted = static_cast<std::size_t>(count - got);
    got += static_cast<std::int32_t>(std::fread(destination + got, 1, wanted, file.get()));
  }
  return std::fclose(file.release());
}

int write_file(const char* path, const std::uint8_t* source, std::int32_t count) {
  Output output = open_output(path, FileAccess::by_umask);
  // Quirk: unlike the readers this does not end the process; scripts depend on the exit status 0
  // of a command whose output could not be created.
  if (!output.file) return print_file_open_error();
  return write_and_close(std::move(output), source, count);
}

void write_file_set(std::span<const OutputFile> files) {
  std::vector<Output> outputs(files.size());
  bool complete = true;
  for (std::size_t i = files.size(); i > 0; --i) {
    Output& output = outputs[i - 1];
    output = open_output(files[i - 1].path, files[i - 1].access);
    if (output.file && reserve(output, files[i - 1].content.size())) continue;
    print_file_open_error();
    complete = false;
  }
  for (std::size_t i = 0; complete && i < files.size(); ++i) {
    complete = narrow(outputs[i], files[i].access);
    if (!complete) print_file_open_error();
  }
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (!complete) {
      remove_new(outputs[i], files[i].path);
      continue;
    }
    // Write errors are ignored as in write_file.
    write_and_close(std::move(outputs[i]), files[i].content.data(),
                    static_cast<std::int32_t>(files[i].content.size()));
  }
}

std::int32_t read_record(std::span<std::uint8_t> record, const char* path) {
  std::fill(record.begin(), record.end(), std::uint8_t{0});
  const File file = require_input(path);
  std::setvbuf(file.get(), nullptr, _IONBF, 0);  // a buffer would keep a copy
  const std::int32_t length = length_of(file.get());
  read_what_there_is(record.first(std::min(record.size(), static_cast<std::size_t>(length))),
                     file.get());
  return length;
}

std::int32_t read_whole_or_abort(std::span<std::uint8_t> buffer, const char* path) {
  const std::int32_t length = read_record(buffer, path);
  if (static_cast<std::size_t>(length) > buffer.size()) abort_run();
  return length;
}

void read_whole_or_fail(std::span<std::uint8_t> buffer, const char* path) {
  const File file = require_input(path);
  if (read_what_there_is(buffer, file.get()) != buffer.size()) fail_file_open();
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

FileName join_file_name(const char* base_name, const char* suffix) {
  FileName name = {};
  const std::size_t base_length = std::strlen(base_name);
  const std::size_t suffix_length = std::strlen(suffix);
  if (base_length + suffix_length >= name.size()) abort_run();
  std::copy_n(base_name, base_length, name.data());
  std::copy_n(suffix, suffix_length, name.data() + base_length);
  return name;
}
