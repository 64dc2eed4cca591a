#include "util/file_set.h"

#include <array>
#include <csignal>

#include "util/process.h"

namespace sealwright {

namespace {

constexpr std::size_t largest_set = 3;  // files: the root keys

/// Has a write past the limit of file sizes fail instead of ending the process.
class FileSizeSignalIgnored {
 public:
  FileSizeSignalIgnored() {
    struct sigaction ignored = {};
    ignored.sa_handler = SIG_IGN;
    sigaction(SIGXFSZ, &ignored, &before_);
  }
  ~FileSizeSignalIgnored() { sigaction(SIGXFSZ, &before_, nullptr); }
  FileSizeSignalIgnored(const FileSizeSignalIgnored&) = delete;
  FileSizeSignalIgnored(FileSizeSignalIgnored&&) = delete;
  FileSizeSignalIgnored& operator=(const FileSizeSignalIgnored&) = delete;
  FileSizeSignalIgnored& operator=(FileSizeSignalIgnored&&) = delete;

 private:
  struct sigaction before_ = {};
};

/// Makes the file under a temporary name. @return whether it is complete.
bool make_file(NewFile& made, int folder, const OutputFile& file) {
  if (folder < 0) return false;
  made.create_in(folder, last_part(file.path), file.access, Existing::replaced);
  made.write(file.content);
  made.complete();
  return !failed(made.failure());
}

}  // namespace

void write_file_set(std::span<const OutputFile> files) {
  if (files.size() > largest_set) abort_run();
  const FileSizeSignalIgnored guard;
  Descriptor folder;
  if (failed(open_folder_of(folder, files.front().path))) folder.reset();
  std::array<NewFile, largest_set> made;
  bool complete = true;
  for (std::size_t i = 0; i < files.size(); ++i) {
    if (make_file(made[i], folder.number(), files[files.size() - 1 - i])) continue;
    print_file_open_error();
    complete = false;
  }
  if (!complete) return;
  if (failed(publish(std::span(made).first(files.size())))) print_file_open_error();
}

}  // namespace sealwright
