#pragma once

#include <cctype>
#include <cstdint>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

// Reader of the test vectors: blocks of "name = value" lines, parted by empty lines. A value is hex
// digits or "text", with "* count" behind it to repeat it; an indented line continues the value
// above, and a line that starts with # is a comment.

using Bytes = std::vector<std::uint8_t>;
using Vector = std::map<std::string, Bytes>;

inline Bytes parse_value(const std::string& value) {
  std::string unit;
  std::size_t end = value.rfind('"') + 1;  // 0 without quotes
  if (end != 0) unit = value.substr(1, end - 2);
  for (; end + 1 < value.size() && std::isxdigit(value[end]) != 0; end += 2) {
    unit += static_cast<char>(std::stoul(value.substr(end, 2), nullptr, 16));
  }
  std::size_t count = end == value.size() ? 1 : std::stoul(value.substr(end + 2));
  Bytes bytes;
  for (; count > 0; --count) bytes.insert(bytes.end(), unit.begin(), unit.end());
  return bytes;
}

/// All blocks of one file of the vector folder; throws when there is none.
inline std::vector<Vector> read_vectors(const std::string& file_name) {
  std::ifstream file(std::string(TEST_VECTORS) + "/" + file_name);
  std::vector<Vector> vectors;
  std::map<std::string, std::string> block;
  std::string name;
  for (bool more = true; more;) {
    std::string line;
    more = static_cast<bool>(std::getline(file, line));  // the end counts as an empty line
    const std::size_t equals = line.find(" = ");
    if (line.starts_with(' ')) {
      block.at(name) += line.substr(line.find_first_not_of(' '));
    } else if (equals != std::string::npos) {
      name = line.substr(0, equals);
      block[name] = line.substr(equals + 3);
    } else if (line.empty() && !block.empty()) {
      vectors.emplace_back();
      for (const auto& [key, value] : block) vectors.back()[key] = parse_value(value);
      block.clear();
    }
  }
  if (vectors.empty()) throw std::runtime_error("no vectors in " + file_name);
  return vectors;
}
