#pragma once

#include <cstddef>
#include <cstdint>

namespace sealwright {

/// Zero-filled memory for whole images. A large one comes straight from the system, which clears
/// each page once when it is first touched; large pages are asked for, since touching small ones
/// would cost more than hashing them.
class LargeBuffer {
 public:
  /// Room for `size` bytes, also for 0; data() is null when there is no memory for it.
  explicit LargeBuffer(std::size_t size);
  ~LargeBuffer();
  LargeBuffer(LargeBuffer&& other) noexcept;
  LargeBuffer(const LargeBuffer&) = delete;
  LargeBuffer& operator=(const LargeBuffer&) = delete;
  LargeBuffer& operator=(LargeBuffer&&) = delete;

  [[nodiscard]] std::uint8_t* data() { return data_; }
  [[nodiscard]] const std::uint8_t* data() const { return data_; }

 private:
  void* mapping_ = nullptr;  // null when the memory comes from the heap
  std::size_t mapped_length_ = 0;
  std::uint8_t* data_ = nullptr;
};

}  // namespace sealwright
