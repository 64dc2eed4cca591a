#include "front/image_commands.h"

#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>

#include "util/file.h"

namespace {

struct Free {
  void operator()(std::uint8_t* bytes) const { std::free(bytes); }
};

/// A file and the zero bytes behind it.
struct Image {
  std::unique_ptr<std::uint8_t, Free> bytes;
  std::uint32_t length;  // of the file alone
};

/// Reads a whole file. One that is too large, with its room, for signed 32-bit lengths or for
/// memory ends the process as one that cannot be opened.
Image read_image(const char* path, std::uint32_t room) {
  const auto length = static_cast<std::uint32_t>(get_file_length(path));
  if (length > std::numeric_limits<std::int32_t>::max() - room) fail_file_open();
  // Zeroed by the system, page by page, as the pages are touched; never of size 0.
  const std::size_t size = std::size_t{length} + room + 1;
  Image image = {
      std::unique_ptr<std::uint8_t, Free>(static_cast<std::uint8_t*>(std::calloc(size, 1))),
      length};
  if (!image.bytes) fail_file_open();
  read_file(path, image.bytes.get(), static_cast<std::int32_t>(length));
  return image;
}

}  // namespace

std::int32_t seal_image(Arguments arguments, std::uint32_t room, Seal seal) {
  const Image image = read_image(arguments[2], room);
  const Status status = seal(arguments, image.bytes.get(), image.length);
  if (status == ZEB_SUCCESS) {
    write_file(arguments[3], image.bytes.get(), static_cast<std::int32_t>(image.length + room));
  }
  return static_cast<std::int32_t>(status);
}

std::int32_t check_image(Arguments arguments, const ImageCheck& check) {
  const Image image = read_image(arguments[2], 0);
  check.read_reference(arguments[3]);
  bool valid = false;
  if (image.length >= check.tail_length) {
    const std::uint32_t length = image.length - check.tail_length;
    std::uint8_t* bytes = image.bytes.get();
    valid = check.verify(bytes, length, bytes + length) == ZEB_SUCCESS;
  }
  std::fputs(valid ? check.success_line : check.failure_line, stdout);
  return valid ? 0 : -1;
}
