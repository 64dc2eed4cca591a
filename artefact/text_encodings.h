#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace sealwright {

/// The bytes that hexadecimal digits of either case stand for; white space and colons between them
/// are ignored. Nothing for other text.
std::optional<std::vector<std::uint8_t>> decode_hex(std::string_view text);

/// The bytes that base64 stands for (RFC 4648, 4), padding included; white space is ignored.
/// Nothing for other text.
std::optional<std::vector<std::uint8_t>> decode_base64(std::string_view text);

}  // namespace sealwright
