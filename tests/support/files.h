#pragma once

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <stdexcept>
#include <string>
#include <vector>

// Files of a test, read and written whole, in directories that are gone afterwards.

using Bytes = std::vector<std::uint8_t>;
using Path = std::filesystem::path;
using Snapshot = std::map<std::string, Bytes>;  // files by name

inline Bytes slice(const Bytes& bytes, std::size_t offset, std::size_t count) {
  if (offset + count > bytes.size()) throw std::runtime_error("slice past the end");
  const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
  return Bytes(first, first + static_cast<std::ptrdiff_t>(count));
}

inline Bytes joined(Bytes head, const Bytes& tail) {
  head.insert(head.end(), tail.begin(), tail.end());
  return head;
}

inline Bytes counted_bytes(std::size_t count) {
  Bytes bytes(count + 1);  // room, so that data() is never null
  for (std::size_t i = 0; i < count; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
  bytes.pop_back();
  return bytes;
}

inline Bytes read_bytes(const Path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

inline void write_bytes(const Path& path, const Bytes& bytes) {
  std::ofstream file(path, std::ios::binary);
  const auto count = static_cast<std::streamsize>(bytes.size());
  file.write(reinterpret_cast<const char*>(bytes.data()), count);
  file.close();
  if (!file) throw std::runtime_error("cannot write " + path.string());
}

/// The regular files of a directory.
inline Snapshot read_directory(const Path& directory) {
  Snapshot files;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    if (entry.is_regular_file()) files[entry.path().filename()] = read_bytes(entry.path());
  }
  return files;
}

class TempDirectory {
 public:
  TempDirectory() {
    std::string name = (std::filesystem::temp_directory_path() / "sealwright-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
    path_ = name;
  }
  ~TempDirectory() { std::filesystem::remove_all(path_); }
  TempDirectory(const TempDirectory&) = delete;
  TempDirectory& operator=(const TempDirectory&) = delete;
  const Path& path() const { return path_; }
  Path operator/(const Path& name) const { return path_ / name; }

 private:
  Path path_;
};

/// A temporary directory that is the working directory for as long as it lives.
class WorkingDirectory : public TempDirectory {
 public:
  WorkingDirectory() { std::filesystem::current_path(path()); }
  ~WorkingDirectory() { std::filesystem::current_path(previous_); }

 private:
  Path previous_ = std::filesystem::current_path();
};
