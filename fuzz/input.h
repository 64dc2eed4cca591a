#pragma once

#include <algorithm>
#include <cstddef>

#include "crypto/bytes.h"
#include "crypto/cpu.h"
#include "tests/support/openssl_util.h"
#include "tests/support/test_bytes.h"

/// Takes a fuzz input apart from front to back, so that a seed is its parts in a row. What the
/// input lacks counts as zero.
class FuzzInput {
 public:
  /// Also puts the portable paths or those of this processor in force, as the first byte says.
  FuzzInput(const std::uint8_t* data, std::size_t size) : next_(data), left_(size) {
    const std::uint8_t portable = byte();
    force_crypto_paths(
        {(portable & 1) == 0, (portable & 2) == 0, (portable & 4) == 0, (portable & 8) == 0});
  }
  /// The key list that ends the input. Wide keys sign on the fastest path only, for speed.
  Bytes key_list() {
    Bytes list = rest(2048);
    if (list.size() > 400) force_crypto_paths({true, true, true, true});
    return list;
  }

  std::size_t left() const { return left_; }
  Bytes bytes(std::size_t count) {
    const std::size_t got = std::min(count, left_);
    Bytes taken(next_, next_ + got);
    taken.resize(count);
    next_ += got;
    left_ -= got;
    return taken;
  }
  Bytes rest(std::size_t most) { return bytes(std::min(most, left_)); }
  std::uint8_t byte() { return bytes(1)[0]; }
  std::uint32_t word() { return load_le32(bytes(4).data()); }

 private:
  const std::uint8_t* next_;
  std::size_t left_;
};
