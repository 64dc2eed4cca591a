#pragma once

#include <unistd.h>

#include <utility>

namespace sealwright {

/// An open file descriptor, or none; closed at the end.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() { reset(); }
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  /// Its number, negative where there is none.
  [[nodiscard]] int number() const { return number_; }
  [[nodiscard]] bool is_open() const { return number_ >= 0; }
  /// Leaves closing to whom the number is given.
  int release() { return std::exchange(number_, -1); }
  void reset() {
    if (is_open()) close(release());
  }

 private:
  int number_ = -1;
};

}  // namespace sealwright
