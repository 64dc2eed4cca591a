#pragma once

#include <cstddef>
#include <cstring>
#include <span>

// Secrets are cleared from memory when they are no longer needed.

namespace sealwright {

/// Fills `length` bytes at `bytes` with zeros; the compiler cannot leave it out.
inline void wipe(void* bytes, std::size_t length) {
  std::memset(bytes, 0, length);
  // The memory counts as read here, so the fill before it has to happen.
  __asm__ __volatile__("" : : "r"(bytes) : "memory");
}

/// Clears the 8 KiB of stack below the caller's frame, where the functions it called may have left
/// parts of a secret: the compiler spills registers to places that have no name. For the end of an
/// operation with a private key.
[[gnu::noinline]] inline void wipe_dead_stack() {
  std::byte below[8192];
  wipe(below, sizeof below);
}

}  // namespace sealwright

/// Clears an object when the scope ends, on every path. Declare it right after the object.
class WipeOnExit {
 public:
  /// `object` is an array or a plain record that outlives the guard.
  template <typename Object>
  explicit WipeOnExit(Object& object)
      : secret_(std::as_writable_bytes(std::span<Object, 1>(&object, 1))) {}
  ~WipeOnExit() { sealwright::wipe(secret_.data(), secret_.size()); }
  WipeOnExit(const WipeOnExit&) = delete;
  WipeOnExit(WipeOnExit&&) = delete;
  WipeOnExit& operator=(const WipeOnExit&) = delete;
  WipeOnExit& operator=(WipeOnExit&&) = delete;

 private:
  std::span<std::byte> secret_;
};
