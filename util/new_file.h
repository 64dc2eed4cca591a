#pragma once

#include <cstdint>
#include <span>

#include "base/bytes.h"
#include "util/folder.h"

// Files that are whole when they appear: each is written under a temporary name in the folder of
// its final one and renamed at the end. Nothing here takes memory from the heap. SIGXFSZ is the
// caller's to ignore; a write past the limit is a failure then.

namespace sealwright {

/// Who may read a new file, whatever stood under its name before.
enum class FileAccess {
  by_umask,
  owner_only,  // mode 0600
};

/// What happens to that which stands under the final name. It is never opened. A directory is never
/// replaced.
enum class Existing {
  replaced,          // a file, a pipe, a device, or a link itself, wherever it leads
  replaced_if_file,  // a regular file or a link itself; others are in the way
  kept,              // everything is in the way
};

/// A file under a temporary name, mode 0600 until its content is complete; removed at the end
/// unless it was published. The first failure stays, and later steps do nothing.
class NewFile {
 public:
  NewFile() = default;
  ~NewFile();
  NewFile(const NewFile&) = delete;
  NewFile(NewFile&&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  NewFile& operator=(NewFile&&) = delete;

  /// Makes it beside `path`; what is in the way there is a failure now already.
  void create(const char* path, FileAccess access, Existing existing);
  /// The same for a name in an open folder, which has to stay open.
  void create_in(int folder, const char* name, FileAccess access, Existing existing);
  /// Adds to the content.
  void write(ByteView bytes);
  /// Sets the final mode and brings the content to the disk.
  void complete();

  [[nodiscard]] const Failure& failure() const { return failure_; }

 private:
  friend Failure publish(std::span<NewFile> files);

  enum class State {
    unmade,
    temporary,  // the temporary name is its only one
    named,      // it has its final name, and nothing stood there
    exchanged,  // what stood there has the temporary name
    set_aside,  // what stood there has the name `older_`
    settled,    // nothing is left to be done
  };

  [[nodiscard]] Failure find_obstacle(const Name& name) const;
  [[nodiscard]] Failure get_name();
  [[nodiscard]] Failure get_free_name();
  [[nodiscard]] Failure replace_by_exchange();
  [[nodiscard]] Failure replace_by_steps();
  [[nodiscard]] bool rename_to(const Name& to, const Name& from, unsigned flags = 0) const;
  void return_name();
  void remove_older();

  Descriptor own_folder_, file_;
  int folder_ = -1;
  Name name_ = {}, temporary_ = {}, older_ = {};
  FileAccess access_ = FileAccess::owner_only;
  Existing existing_ = Existing::kept;
  State state_ = State::unmade;
  Failure failure_;
};

/// Completes files of one folder and gives them their final names in this order: all of them or,
/// with a failure, none, and then each name holds what it held before. Other runs do the same in
/// that folder before or after, not meanwhile. Only a process that is killed between two renames
/// leaves some names changed; what the others should hold, and what was replaced, is beside them
/// under temporary names then.
[[nodiscard]] Failure publish(std::span<NewFile> files);

}  // namespace sealwright
