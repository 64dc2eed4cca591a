#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "base/bytes.h"
#include "crypto/sha1.h"

namespace sealwright {

using Digest = std::array<std::uint8_t, sha1_digest_length>;

/// Lower-case hexadecimal digits, two for each byte.
std::string to_hex(ByteView bytes);

/// SHA-1 in hexadecimal digits.
std::string sha1_hex(ByteView bytes);

}  // namespace sealwright
