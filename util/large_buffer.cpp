#include "util/large_buffer.h"

#include <sys/mman.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <utility>

namespace sealwright {

namespace {

constexpr std::size_t large_page_length = std::size_t{2} << 20;

}  // namespace

LargeBuffer::LargeBuffer(std::size_t size) {
  if (size < large_page_length) {
    data_ = static_cast<std::uint8_t*>(std::calloc(std::max<std::size_t>(size, 1), 1));
    return;
  }
  // A large page more than asked for leaves room to start on a large-page boundary.
  std::size_t room = size + large_page_length;
  void* start = mmap(nullptr, room, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (start == MAP_FAILED) return;
  mapping_ = start;
  mapped_length_ = room;
  void* aligned = std::align(large_page_length, size, start, room);
#ifdef MADV_HUGEPAGE
  // Only a hint: without it the pages are small and the result is the same.
  madvise(aligned, size, MADV_HUGEPAGE);
#endif
  data_ = static_cast<std::uint8_t*>(aligned);
}

LargeBuffer::~LargeBuffer() {
  if (mapping_ != nullptr) {
    munmap(mapping_, mapped_length_);
  } else {
    std::free(data_);
  }
}

LargeBuffer::LargeBuffer(LargeBuffer&& other) noexcept
    : mapping_(std::exchange(other.mapping_, nullptr)),
      mapped_length_(std::exchange(other.mapped_length_, 0)),
      data_(std::exchange(other.data_, nullptr)) {}

}  // namespace sealwright
