#pragma once

#include <cstdint>

#include "crypto/status.h"
#include "front/command_table.h"

// The two shapes that all image commands of both schemes have.

/// Seals the image of `length` bytes at `image` and puts what belongs behind it there.
using Seal = Status (*)(Arguments arguments, std::uint8_t* image, std::uint32_t length);

/// Reads the file of argument 2 with `room` zero bytes behind it, seals it and, only when that
/// succeeded, writes file and room to argument 3.
/// @return the status of `seal`.
std::int32_t seal_image(Arguments arguments, std::uint32_t room, Seal seal);

/// How a secured image is checked.
struct ImageCheck {
  std::uint32_t tail_length;                 // bytes of context or signature behind the image
  void (*read_reference)(const char* path);  // eFuse data or public key, from argument 3
  // 0 when the image is good; may wipe the tail.
  Status (*verify)(const std::uint8_t* image, std::uint32_t length, std::uint8_t* tail);
  const char* success_line;
  const char* failure_line;
};

/// Reads the secured image of argument 2, checks it and prints the verdict; an image shorter than
/// its tail fails.
/// @return 0 or -1.
std::int32_t check_image(Arguments arguments, const ImageCheck& check);
