#pragma once

#include <cstddef>

#include "artefact/der_tag.h"
#include "base/bytes.h"

namespace sealwright {

/// DER (X.690) on its way, in room that the caller owns: it is written from its end to its start,
/// so that what an element holds is there before its length. Nothing of it is kept elsewhere.
struct Der {
  WritableBytes room;
  std::size_t start = room.size();  // of what is written

  [[nodiscard]] ByteView written() const { return room.subspan(start); }
};

/// Bytes before what is written. The room suffices for them, here and below.
void prepend(Der& der, ByteView bytes);

/// Makes an element of all that was written after `start` was `end`; at most 65535 bytes.
void wrap(Der& der, DerTag tag, std::size_t end);

/// A non-negative number of little-endian bytes, without its leading zeros.
void prepend_integer(Der& der, ByteView number);

/// AlgorithmIdentifier: rsaEncryption with NULL parameters (RFC 8017, A.1).
void prepend_rsa_encryption(Der& der);

}  // namespace sealwright
