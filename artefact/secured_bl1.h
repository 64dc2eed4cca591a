#pragma once

#include <cstddef>
#include <optional>
#include <variant>

#include "base/bytes.h"
#include "sb10/records.h"
#include "sb20/records.h"
#include "util/build_info.h"

/// A secured BL1 taken apart.
struct SecuredBl1 {
  const char* scheme;        // "2.1" or "1.1"
  std::size_t efuse_length;  // that it has
  std::variant<SB20_CONTEXT, SB10_CONTEXT> context;
  ByteView signed_part;  // code and build information, as stored
  ByteView code;
  std::optional<BuildInfo> build_info;
};

/// Recognises a secured BL1 by the magic in its context. Should it have that of both schemes, it
/// counts as one of scheme 2.1, unless `for_sb10` says that a device of scheme 1.1 reads it.
std::optional<SecuredBl1> find_secured_bl1(ByteView image, bool for_sb10);

// The checks that a device makes, each of them for itself.

/// Whether the root key in the context goes with the eFuse data.
bool verify_fuses(const SecuredBl1& bl1, ByteView efuse);

/// Whether the root key in the context signed code, build information and stage-2 key.
bool verify_bl1_signature(const SecuredBl1& bl1);

/// Whether the stage-2 key in the context signed this secured BL2.
bool verify_bl2_signature(const SecuredBl1& bl1, ByteView secured_bl2);
