#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <numeric>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "base/bytes.h"

using sealwright::length_of;
using sealwright::load_le32;
using sealwright::store_le32;
using sealwright::view_of;
using sealwright::writable_view_of;

// Bytes and files of a test, ways to damage them, and the reader of the vectors.

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

/// Picks a number below its argument: a random engine's or a fuzzer's.
using Choose = std::function<std::size_t(std::size_t)>;

/// Damages bytes. Small words at multiples of four are taken for length fields.
inline void damage(Bytes& bytes, const Choose& choose) {
  constexpr std::uint32_t hostile[] = {
      0,   1,   3,   4,    7,    64,         128,        132,        256,       257,
      260, 273, 308, 1024, 1025, 0x7FFFFFFC, 0x80000000, 0xFFFFFFFC, 0xFFFFFFFF};
  const auto any_byte = [&] { return static_cast<std::uint8_t>(choose(256)); };
  do {
    const std::size_t size = bytes.size(), how = size < 4 ? 0 : choose(6);
    if (how == 0) {
      for (std::size_t i = choose(4) == 0 ? choose(2100) : 32; i > 0; --i)
        bytes.push_back(any_byte());
    } else if (how == 1) {
      bytes.resize(choose(size));
    } else if (how == 2) {
      bytes[choose(size)] ^= static_cast<std::uint8_t>(1 << choose(8));
    } else if (how == 3) {
      const std::size_t from = choose(size), what = choose(3);
      for (std::size_t i = from; i < std::min(size, from + 64); ++i) {
        bytes[i] = what == 0 ? any_byte() : what == 1 ? 0 : 255;
      }
    } else {
      std::size_t at = choose(size / 4);
      for (std::size_t i = 0; i < size && load_le32(&bytes[4 * at]) - 1 > 2048; ++i)
        at = (at + 1) % (size / 4);
      store_le32(&bytes[4 * at], hostile[choose(std::size(hostile))]);
    }
  } while (choose(4) == 3);
}

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
