#pragma once

#include <optional>

#include "artefact/der_tag.h"
#include "base/bytes.h"

namespace sealwright {

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
