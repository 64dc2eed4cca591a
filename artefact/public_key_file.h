#pragma once

#include <optional>
#include <variant>

#include "artefact/public_key.h"
#include "sb10/records.h"
#include "sb20/records.h"

namespace sealwright {

/// A root key with the HMAC that ties it to fuses.
using RootInfo = std::variant<Sb10PublicKeyInfo, Sb20PublicKeyInfo>;

/// A public-key file of either scheme.
struct PublicKeyFile {
  PublicKey key;
  /// Absent in a stage-2 file of scheme 1.1, whose key is no root. In scheme 2.1 files of root and
  /// stage-2 keys have one form, and only the fuses tell them apart.
  std::optional<RootInfo> root_info;
  /// The proof that its maker holds the private key verifies, and all lengths are the format's.
  bool proven;
};

/// Recognises a public-key file by its length and, where it has one, its header.
std::optional<PublicKeyFile> read_public_key_file(ByteView file);

/// The root key at the start of a root public-key file, or one that was cut out of a boot context
/// (288 or 152 bytes). Recognised by the length; nothing is checked.
std::optional<RootInfo> read_root_info(ByteView file);

[[nodiscard]] PublicKey root_key_of(const RootInfo& info);

/// Whether fuses with this data hold the root key.
[[nodiscard]] bool fuses_hold(ByteView efuse, const RootInfo& info);

}  // namespace sealwright
