#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "base/bytes.h"

// PEM blocks (RFC 7468), line ends included.

namespace sealwright {

/// Characters of a block with `der_length` bytes of content.
[[nodiscard]] std::size_t pem_length(std::string_view label, std::size_t der_length);

/// Writes a block of that length to `text`, and what it encodes nowhere else.
void write_pem(std::span<char> text, std::string_view label, ByteView der);

}  // namespace sealwright
