#pragma once

#include <cstdint>
#include <optional>

#include "base/bytes.h"

namespace sealwright {

enum class DerTag : std::uint8_t {
  integer = 0x02,
  bit_string = 0x03,
  octet_string = 0x04,
  null = 0x05,
  object_identifier = 0x06,
  sequence = 0x30
};

/// Reads DER (X.690) element by element; it knows what is left and takes nothing that DER writes in
/// another way.
class DerCursor {
 public:
  explicit DerCursor(ByteView bytes) : left_(bytes) {}

  /// The content of the next element, which has this tag; nothing, and no step, otherwise.
  std::optional<ByteView> take(DerTag tag);

  /// The next element's number, big-endian without leading zeros (empty for 0); nothing for one
  /// below 0 or not written in the shortest way.
  std::optional<ByteView> take_number();

  [[nodiscard]] bool at_end() const { return left_.empty(); }

 private:
  ByteView left_;
};

}  // namespace sealwright
