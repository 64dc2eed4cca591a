#include "util/block_reader.h"

#include <algorithm>

#include "util/process.h"

namespace sealwright {

BlockReader::BlockReader(const char* path)
    : file_(require_input(path)), left_(static_cast<std::uint32_t>(length_of_open(file_.get()))) {
  std::setvbuf(file_.get(), nullptr, _IONBF, 0);  // straight into the block
}

ByteView BlockReader::next(std::uint32_t wanted) {
  const auto count = std::min<std::size_t>({wanted, left_, block_.size()});
  const WritableBytes bytes = WritableBytes(block_).first(count);
  if (read_what_there_is(bytes, file_.get()) != count) fail_file_open();
  left_ -= static_cast<std::uint32_t>(count);
  return bytes;
}

}  // namespace sealwright
