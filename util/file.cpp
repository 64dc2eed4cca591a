#include "util/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

#include "util/early_end.h"

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
  bool is_new;  // made by opening it
};

int open_descriptor(const char* path, mode_t mode, bool& is_new) {
  constexpr int flags = O_WRONLY | O_NONBLOCK | O_CLOEXEC;
  const int created = open(path, flags | O_CREAT | O_EXCL, mode);
  is_new = created >= 0;
  if (is_new || errno != EEXIST) return created;
  const int existing = open(path, flags);
  // A link that leads to no file yet exists, and yet its file has to be created.
  return existing >= 0 || errno != ENOENT ? existing : open(path, flags | O_CREAT, mode);
}

/// Opens for writing without waiting for a pipe's reader. No file when it cannot be done.
Output open_output(const char* path, FileAccess access) {
  const bool owner_only = access == FileAccess::owner_only;
  bool is_new = false;
  const int descriptor = open_descriptor(path, owner_only ? mode_0600 : mode_0666, is_new);
  if (descriptor < 0) return {nullptr, false};
  struct stat status = {};
  bool usable = fstat(descriptor, &status) == 0;
  // The permissions are narrowed before the old content goes and the new one comes.
  if (usable && owner_only && S_ISREG(status.st_mode)) usable = fchmod(descriptor, mode_0600) == 0;
  usable = usable && fcntl(descriptor, F_SETFL, 0) == 0;  // waiting is right once it is open
  std::FILE* file = usable ? fdopen(descriptor, "wb") : nullptr;
  if (file == nullptr) close(descriptor);
  return {File(file), is_new};
}

/// Empties the file, where it is one, writes the content and closes it.
int write_and_close(File file, const std::uint8_t* source, std::int32_t count) {
  struct stat status = {};
  const int descriptor = fileno(file.get());
  if (fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) && ftruncate(descriptor, 0) != 0) {
    return print_file_open_error();
  }
  // Declared before the file that uses it until it is closed.
  const auto stream_buffer = std::make_unique_for_overwrite<char[]>(stream_buffer_length);
  File stream = std::move(file);
  std::setvbuf(stream.get(), stream_buffer.get(), _IOFBF, stream_buffer_length);
  write_in_blocks(stream.get(), source, count);
  return std::fclose(stream.release());
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
  return write_and_close(std::move(output.file), source, count);
}

void write_file_set(std::span<const OutputFile> files) {
  std::vector<Output> outputs(files.size());
  bool complete = true;
  for (std::size_t i = files.size(); i > 0; --i) {
    outputs[i - 1] = open_output(files[i - 1].path, files[i - 1].access);
    if (outputs[i - 1].file) continue;
    print_file_open_error();
    complete = false;
  }
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (complete) {
      write_and_close(std::move(outputs[i].file), files[i].content.data(),
                      static_cast<std::int32_t>(files[i].content.size()));
    } else if (outputs[i].is_new) {
      unlink(files[i].path);
    }
  }
}

std::int32_t read_record(std::span<std::uint8_t> record, const char* path) {
  std::fill(record.begin(), record.end(), std::uint8_t{0});
  const File file = require_input(path);
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
