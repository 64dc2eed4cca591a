#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <numeric>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "crypto/bytes.h"

// Bytes and files of a test, and the reader of the vectors.

using Bytes = std::vector<std::uint8_t>;
using Files = std::map<std::string, Bytes>;  // by name

/// Ends a test or a fuzz run with a reason.
inline void require(bool condition, const std::string& what) {
  if (!condition) throw std::runtime_error(what);
}

inline Bytes slice(const Bytes& bytes, std::size_t offset, std::size_t count) {
  require(offset <= bytes.size() && count <= bytes.size() - offset, "slice past the end");
  return Bytes(bytes.data() + offset, bytes.data() + offset + count);
}

template <typename... More>
Bytes joined(Bytes head, const More&... more) {
  (head.insert(head.end(), more.begin(), more.end()), ...);
  return head;
}

inline Bytes padded(Bytes bytes, std::size_t size) {
  bytes.resize(size);
  return bytes;
}

inline Bytes reversed(const Bytes& bytes) {
  return Bytes(bytes.rbegin(), bytes.rend());
}

template <typename Record>
Bytes bytes_of(const Record& record) {
  const ByteView view = view_of(record);
  return Bytes(view.begin(), view.end());
}

/// With room for one more, so that data() is never null.
inline Bytes random_bytes(std::mt19937_64& engine, std::size_t count) {
  Bytes bytes(count + 1);
  for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(engine());
  return padded(std::move(bytes), count);
}

/// Always the same bytes for a count.
inline Bytes some_bytes(std::size_t count) {
  std::mt19937_64 engine(count);
  return random_bytes(engine, count);
}

inline Bytes read_bytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  require(static_cast<bool>(file), "cannot read " + path);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

inline void write_bytes(const std::string& path, const Bytes& bytes) {
  std::filesystem::remove(path);  // some file systems flush a file that is cut and written again
  std::ofstream file(path, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
  file.close();
  require(static_cast<bool>(file), "cannot write " + path);
}

/// The regular files of the working directory.
inline Files read_all_files() {
  Files files;
  for (const auto& entry : std::filesystem::directory_iterator(".")) {
    if (entry.is_regular_file()) files[entry.path().filename()] = read_bytes(entry.path());
  }
  return files;
}

/// A fresh working directory, for as long as it lives.
class WorkingDirectory {
 public:
  WorkingDirectory() {
    std::string name = std::filesystem::temp_directory_path() / "sealwright-XXXXXX";
    require(mkdtemp(name.data()) != nullptr, "no temporary directory");
    std::filesystem::current_path(name);
  }
  ~WorkingDirectory() {
    const auto here = std::filesystem::current_path();
    std::filesystem::current_path(previous_);
    std::filesystem::remove_all(here);
  }
  WorkingDirectory(const WorkingDirectory&) = delete;
  WorkingDirectory& operator=(const WorkingDirectory&) = delete;

 private:
  const std::filesystem::path previous_ = std::filesystem::current_path();
};

/// Hex digits, repeated where "*count" follows.
inline Bytes parse_hex(const std::string& text) {
  const std::size_t star = text.find('*');
  Bytes unit, bytes;
  for (std::size_t i = 0; i < std::min(star, text.size()); i += 2) {
    unit.push_back(static_cast<std::uint8_t>(std::stoul(text.substr(i, 2), nullptr, 16)));
  }
  std::size_t count = star == std::string::npos ? 1 : std::stoul(text.substr(star + 1));
  for (; count > 0; --count) bytes.insert(bytes.end(), unit.begin(), unit.end());
  return bytes;
}

inline std::uint64_t from_big_endian(const Bytes& bytes) {
  return std::accumulate(bytes.begin(), bytes.end(), std::uint64_t{0},
                         [](std::uint64_t sum, std::uint8_t byte) { return sum << 8 | byte; });
}

/// The columns of the rows of vectors.txt that start with this word; throws when there are none.
inline std::vector<std::vector<Bytes>> read_vectors(const std::string& what) {
  std::ifstream file(TEST_DATA "/vectors.txt");
  std::vector<std::vector<Bytes>> rows;
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string word;
    if (!(words >> word) || word != what) continue;
    rows.emplace_back();
    while (words >> word) rows.back().push_back(parse_hex(word));
  }
  require(!rows.empty(), "no vectors for " + what);
  return rows;
}
