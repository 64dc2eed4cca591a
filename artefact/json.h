#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace sealwright {

// JSON text (RFC 8259), each value on one line.

/// Name and value, which is JSON text already.
using JsonMember = std::pair<const char*, std::string>;

std::string json_string(std::string_view text);
/// An array of strings.
std::string json_strings(const std::vector<std::string>& texts);
/// An array of values that are JSON text already.
std::string json_array(const std::vector<std::string>& values);
std::string json_object(const std::vector<JsonMember>& members);

/// The parts with the separator between them.
std::string join(const std::vector<std::string>& parts, const char* separator);

}  // namespace sealwright
