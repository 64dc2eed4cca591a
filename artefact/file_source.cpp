#include "artefact/file_source.h"

#include <algorithm>

#include "base/wipe.h"

namespace sealwright {

FileSource::FileSource(const char* path) : file_(path) {
  if (file_->failure() != nullptr) return;
  size_ = file_->size();
  left_ = size_;
  end_.resize(std::min(size_, longest_end));
  file_->read_end(end_);
  if (size_ == 0) file_->expect_end();
}

FileSource::FileSource(ByteView bytes) : memory_(bytes), size_(bytes.size()), left_(size_) {
  const ByteView last = bytes.last(std::min(size_, longest_end));
  end_.assign(last.begin(), last.end());
}

FileSource::~FileSource() {
  if (!end_.empty()) wipe(end_.data(), end_.size());
  // A file as short as this one went through the block whole.
  if (size_ <= longest_end && !block_.empty()) wipe(block_.data(), block_.size());
}

std::string FileSource::failure() const {
  if (has_changed_) return "Changed while it was read";
  return file_ && file_->failure() != nullptr ? file_->failure() : "";
}

ByteView FileSource::next(std::size_t wanted) {
  const std::size_t count = std::min({wanted, left_, block_length});
  if (count == 0 || !failure().empty()) return {};
  if (!file_) {
    left_ -= count;
    return memory_.subspan(size_ - left_ - count, count);
  }
  block_.resize(std::max(block_.size(), count));
  const WritableBytes piece = WritableBytes(block_).first(count);
  file_->read_fully(piece);
  left_ -= count;
  if (left_ == 0) file_->expect_end();
  if (file_->failure() == nullptr) expect_end_as_seen(piece);
  return failure().empty() ? piece : WritableBytes();
}

/// Compares what of the piece belongs to the end with what was seen of it.
void FileSource::expect_end_as_seen(ByteView piece) {
  const std::size_t to_end = left_ + piece.size();  // from the start of the piece
  const std::size_t before = to_end - std::min(to_end, end_.size());
  if (before >= piece.size()) return;
  const ByteView last = piece.subspan(before);
  const ByteView seen = ByteView(end_).subspan(end_.size() - left_ - last.size(), last.size());
  has_changed_ = !std::ranges::equal(last, seen);
}

}  // namespace sealwright
