#pragma once

#include "base/bytes.h"
#include "util/folder.h"
#include "util/new_file.h"

namespace sealwright {

/// A folder (mode 0700) that is whole when it appears: made under a temporary name beside its
/// final one and renamed at the end. Removed with its files unless it was published. The first
/// failure stays, and later steps do nothing.
class NewFolder {
 public:
  NewFolder() = default;
  ~NewFolder();
  NewFolder(const NewFolder&) = delete;
  NewFolder(NewFolder&&) = delete;
  NewFolder& operator=(const NewFolder&) = delete;
  NewFolder& operator=(NewFolder&&) = delete;

  /// Makes it beside `path`, which may end in slashes.
  void create(const char* path);
  /// Puts a file into it. `name` is a name alone.
  void add(const char* name, ByteView content, FileAccess access);
  /// Gives the folder its final name. An empty folder there is replaced; a full one, anything else,
  /// and a folder that the system has in use, such as `.` or a mount point, are in the way.
  [[nodiscard]] Failure publish();

  [[nodiscard]] const Failure& failure() const { return failure_; }

 private:
  Descriptor parent_, folder_;
  Name name_ = {}, temporary_ = {};
  bool is_temporary_ = false;
  Failure failure_;
};

}  // namespace sealwright
