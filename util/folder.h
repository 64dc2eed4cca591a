#pragma once

#include <array>
#include <climits>

#include "util/descriptor.h"

// Folders, and names in them. Whatever is done with a name is done relative to its open folder, so
// that a path whose parts change meanwhile leads nowhere else. Nothing here takes memory from the
// heap.

namespace sealwright {

/// Why something could not be made.
struct Failure {
  const char* reason = nullptr;  // a text that stays
  bool in_the_way = false;  // it is what stands under the name, not the system, that forbids it
};
[[nodiscard]] inline bool failed(const Failure& failure) {
  return failure.reason != nullptr;
}

/// The failure that an `errno` stands for. EEXIST, ENOTEMPTY, EISDIR, ENOTDIR and EBUSY, which is a
/// mount point or a folder's name for itself, are in the way.
[[nodiscard]] Failure failure_of(int error);

/// A name in a folder, with its terminator.
using Name = std::array<char, NAME_MAX + 1>;

/// The last part of a path: empty after a slash.
[[nodiscard]] const char* last_part(const char* path);

/// Opens the folder that the last part of a path is in. One that may not be read is opened for
/// looking up names alone.
[[nodiscard]] Failure open_folder_of(Descriptor& folder, const char* path);

/// A random hidden name for what gets the name `final_name` later: it shows the product and the end
/// of that name, and is no longer than it unless both are short.
[[nodiscard]] Name temporary_name(const char* final_name);

/// Brings a file or folder to the disk. That a file system cannot do so is no failure; lacking room
/// and damage are.
[[nodiscard]] Failure flush(int descriptor);

/// A lock on a folder against other runs of the same programs, for as long as it lives. Another run
/// is waited for, ten seconds at most; a folder that cannot be locked is worked in without.
class FolderLock {
 public:
  explicit FolderLock(int folder);
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock(FolderLock&&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;
  FolderLock& operator=(FolderLock&&) = delete;

 private:
  int folder_;
};

}  // namespace sealwright
