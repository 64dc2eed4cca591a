#include "front/image.h"

#include <limits>
#include <tuple>

#include "util/file.h"
#include "util/process.h"

namespace sealwright {

Image read_image(const char* path, std::uint32_t room) {
  const auto length = static_cast<std::uint32_t>(get_file_length(path));
  if (length > std::numeric_limits<std::int32_t>::max() - room) fail_file_open();
  Image image = {LargeBuffer(std::size_t{length} + room), length, room};
  if (image.buffer.data() == nullptr) fail_file_open();
  read_whole_or_fail({image.buffer.data(), length}, path);
  return image;
}

std::uint8_t* end_of(Image& image) {
  return image.buffer.data() + image.length;
}

std::int32_t publish(const char* path, const Image& image, Status status) {
  if (status == ZEB_SUCCESS) {
    // An output that could not be created has said so and changes no exit status.
    std::ignore =
        write_file(path, image.buffer.data(), static_cast<std::int32_t>(image.length + image.room));
  }
  return static_cast<std::int32_t>(status);
}

SecuredImage split(const Image& image, std::uint32_t tail_length) {
  if (image.length < tail_length) return {};
  const ByteView whole = {image.buffer.data(), image.length};
  return {whole.first(image.length - tail_length), whole.last(tail_length)};
}

}  // namespace sealwright
