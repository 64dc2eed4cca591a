#include "front/image_commands.h"

#include <cstdio>
#include <limits>

#include "util/file.h"
#include "util/large_buffer.h"

namespace {

/// A file and the zero bytes behind it.
struct Image {
  LargeBuffer bytes;
  std::uint32_t length;  // of the file alone
};

/// Reads a whole file. One that is too large, with its room, for signed 32-bit lengths or for
/// memory ends the process as one that cannot be opened.
Image read_image(const char* path, std::uint32_t room) {
  const auto length = static_cast<std::uint32_t>(get_file_length(path));
  if (length > std::numeric_limits<std::int32_t>::max() - room) fail_file_open();
  Image image = {LargeBuffer(std::size_t{length} + room), length};
  if (image.bytes.data() == nullptr) fail_file_open();
  read_whole_or_fail(path, image.bytes.data(), static_cast<std::int32_t>(length));
  return image;
}

}  // namespace

std::int32_t seal_image(Arguments arguments, std::uint32_t room, Seal seal) {
  const Image image = read_image(arguments[2], room);
  const Status status = seal(arguments, image.bytes.data(), image.length);
  if (status == ZEB_SUCCESS) {
    write_file(arguments[3], image.bytes.data(), static_cast<std::int32_t>(image.length + room));
  }
  return static_cast<std::int32_t>(status);
}

std::int32_t check_image(Arguments arguments, const ImageCheck& check) {
  const Image image = read_image(arguments[2], 0);
  check.read_reference(arguments[3]);
  bool valid = false;
  if (image.length >= check.tail_length) {
    const std::uint32_t length = image.length - check.tail_length;
    std::uint8_t* bytes = image.bytes.data();
    valid = check.verify(bytes, length, bytes + length) == ZEB_SUCCESS;
  }
  std::fputs(valid ? check.success_line : check.failure_line, stdout);
  return valid ? 0 : -1;
}
