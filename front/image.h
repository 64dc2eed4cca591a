#pragma once

#include <cstdint>

#include "base/bytes.h"
#include "crypto/status.h"
#include "util/large_buffer.h"

namespace sealwright {

/// An image and the room after it.
struct Image {
  LargeBuffer buffer;
  std::uint32_t length;  // of the file alone
  std::uint32_t room;    // zero bytes after it, for what belongs there
};

/// Where the room after the image starts.
[[nodiscard]] std::uint8_t* end_of(Image& image);

/// Reads a whole file. One that is too large, with its room, for signed 32-bit lengths or for
/// memory ends the process as one that cannot be opened.
[[nodiscard]] Image read_image(const char* path, std::uint32_t room);

/// Writes image and room to `path`, only where `status` says success. @return the status.
[[nodiscard]] std::int32_t publish(const char* path, const Image& image, Status status);

/// A secured image: what was signed, and what was put after it.
struct SecuredImage {
  ByteView body;
  ByteView tail;  // empty when the image is shorter than its tail
};
[[nodiscard]] SecuredImage split(const Image& image, std::uint32_t tail_length);

}  // namespace sealwright
