#include "util/file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <tuple>
#include <utility>

#include "util/descriptor.h"
#include "util/input_file.h"
#include "util/process.h"

namespace sealwright {

namespace {

constexpr std::int32_t block_length = 256;               // bytes per write request
constexpr std::size_t stream_buffer_length = 256 << 10;  // bytes; batches the small requests

/// Writes what stdio hands over to a descriptor. @return the bytes that were written.
ssize_t write_through(void* cookie, const char* bytes, std::size_t count) {
  const int descriptor = static_cast<Descriptor*>(cookie)->number();
  std::size_t written = 0;
  while (written < count) {
    const ssize_t more = write(descriptor, bytes + written, count - written);
    if (more == 0 || (more < 0 && errno != EINTR)) break;
    if (more > 0) written += static_cast<std::size_t>(more);
  }
  return static_cast<ssize_t>(written);
}

/// Opens for writing, without waiting for a pipe's reader, and empties what is a file.
Descriptor open_output(const char* path) {
  constexpr mode_t mode_0666 = 0666;
  Descriptor output(open(path, O_WRONLY | O_CREAT | O_NONBLOCK | O_CLOEXEC, mode_0666));
  struct stat status = {};
  const bool usable = output.is_open() && fstat(output.number(), &status) == 0 &&
                      fcntl(output.number(), F_SETFL, 0) == 0 &&  // waiting is right from here on
                      (!S_ISREG(status.st_mode) || ftruncate(output.number(), 0) == 0);
  return usable ? std::move(output) : Descriptor();
}

}  // namespace

}  // namespace sealwright

std::int32_t get_file_length(const char* path) {
  return sealwright::length_of_open(sealwright::require_input(path).get());
}

int read_file(const char* path, std::uint8_t* destination, std::int32_t count) {
  sealwright::File file = sealwright::require_input(path);
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
  // All memory first: without it an older file has to stay.
  const std::unique_ptr<char[]> stream_buffer(
      new (std::nothrow) char[sealwright::stream_buffer_length]);
  sealwright::Descriptor output;
  sealwright::File file(
      fopencookie(&output, "wb", {nullptr, sealwright::write_through, nullptr, nullptr}));
  if (!stream_buffer || !file) sealwright::abort_run();
  std::setvbuf(file.get(), stream_buffer.get(), _IOFBF, sealwright::stream_buffer_length);
  output = sealwright::open_output(path);
  // Quirk: unlike the readers this does not end the process; scripts depend on the exit status 0
  // of a command whose output could not be created.
  if (!output.is_open()) return sealwright::print_file_open_error();
  sealwright::write_in_blocks(file.get(), source, count);
  const int result = std::fclose(file.release());
  return close(output.release()) == 0 ? result : EOF;
}

namespace sealwright {

std::int32_t read_record(WritableBytes record, const char* path) {
  std::fill(record.begin(), record.end(), std::uint8_t{0});
  const File file = require_input(path);
  std::setvbuf(file.get(), nullptr, _IONBF, 0);  // a buffer would keep a copy
  const std::int32_t length = length_of_open(file.get());
  // What does not arrive stays zero, as what a shorter file lacks.
  std::ignore = read_what_there_is(
      record.first(std::min(record.size(), static_cast<std::size_t>(length))), file.get());
  return length;
}

std::int32_t read_whole_or_abort(WritableBytes buffer, const char* path) {
  const std::int32_t length = read_record(buffer, path);
  if (static_cast<std::size_t>(length) > buffer.size()) abort_run();
  return length;
}

void read_whole_or_fail(WritableBytes buffer, const char* path) {
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

}  // namespace sealwright
