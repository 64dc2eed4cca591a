#include "front/image.h"

#include <cstdio>
#include <limits>

#include "util/file.h"
#include "util/process.h"

Image read_image(const char* path, std::uint32_t room) {
  const auto length = static_cast<std::uint32_t>(get_file_length(path));
  if (length > std::numeric_limits<std::int32_t>::max() - room) sealwright::fail_file_open();
  Image image = {sealwright::LargeBuffer(std::size_t{length} + room), length, room};
  if (image.buffer.data() == nullptr) sealwright::fail_file_open();
  sealwright::read_whole_or_fail({image.buffer.data(), length}, path);
  return image;
}

std::uint8_t* end_of(Image& image) {
  return image.buffer.data() + image.length;
}

std::int32_t publish(const char* path, const Image& image, Status status) {
  if (status == ZEB_SUCCESS) {
    write_file(path, image.buffer.data(), static_cast<std::int32_t>(image.length + image.room));
  }
  return static_cast<std::int32_t>(status);
}

SecuredImage split(Image& image, std::uint32_t tail_length) {
  if (image.length < tail_length) return {};
  const std::uint32_t body_length = image.length - tail_length;
  return {{image.buffer.data(), body_length}, {image.buffer.data() + body_length, tail_length}};
}

std::int32_t print_verdict(bool valid, const char* success_line, const char* failure_line) {
  std::fputs(valid ? success_line : failure_line, stdout);
  return valid ? 0 : -1;
}
