#include "util/input_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <limits>

#include "util/process.h"

namespace sealwright {

namespace {

/// Null for what cannot be opened or is no seekable file.
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

}  // namespace

File require_input(const char* path) {
  File file = open_input(path);
  if (!file) fail_file_open();
  return file;
}

std::int32_t length_of_open(std::FILE* file) {
  if (fseeko(file, 0, SEEK_END) != 0) fail_file_open();
  const off_t length = ftello(file);
  if (length < 0 || length > std::numeric_limits<std::int32_t>::max()) fail_file_open();
  std::rewind(file);
  return static_cast<std::int32_t>(length);
}

std::size_t read_what_there_is(WritableBytes buffer, std::FILE* file) {
  return std::fread(buffer.data(), 1, buffer.size(), file);
}

}  // namespace sealwright
