#include "artefact/input.h"

#include <cerrno>
#include <cstring>

#include "base/wipe.h"

namespace sealwright {

namespace {

constexpr std::size_t largest_secret = 4096;  // bytes; key and eFuse files are smaller

}  // namespace

Input::Input(const char* path) {
  OpenFile file(path);
  if (file.failure() == nullptr) {
    length_ = file.size();
    identity_ = file.identity();
    buffer_.emplace(length_);
    if (buffer_->data() == nullptr) {
      failure_ = std::strerror(ENOMEM);
      return;
    }
    file.read_fully({buffer_->data(), length_});
    file.expect_end();
  }
  if (file.failure() != nullptr) failure_ = file.failure();
}

Input::~Input() {
  const bool was_filled = buffer_ && buffer_->data() != nullptr;
  if (was_filled && length_ <= largest_secret) wipe(buffer_->data(), length_);
}

}  // namespace sealwright
