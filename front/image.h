#pragma once

#include <cstdint>

#include "base/bytes.h"
#include "crypto/status.h"
#include "util/large_buffer.h"

// Images as the commands read and write them, and what commands on images share.

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

/// Aborts where neither /dev/random nor the kernel's generator delivers: without them keys and
/// salts could be guessed. For the start of commands that make keys or signatures.
void require_randomness();

/// Prints the line for the verdict. @return 0 when valid, otherwise -1.
[[nodiscard]] std::int32_t print_verdict(bool valid, const char* success_line,
                                         const char* failure_line);

}  // namespace sealwright
