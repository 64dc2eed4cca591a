#pragma once

#include <array>
#include <variant>

#include "artefact/hex.h"
#include "artefact/public_key.h"
#include "base/wipe.h"
#include "sb10/records.h"
#include "sb20/records.h"
#include "seal/key_inputs.h"

// The steps in which the public file of a key is made, whoever signs, and its private file.

namespace sealwright {

/// A public-key file on its way, and the eFuse data that goes with it.
struct PublicRecord {
  std::variant<Sb20PublicKeyFile, Sb10RootPublicKeyFile, Sb10PublicKeyFile> file;
  std::array<std::uint8_t, sb20_efuse_length> efuse_room = {};
  std::size_t efuse_length = 0;  // 0 for a stage-2 key

  PublicRecord() = default;
  ~PublicRecord() { wipe(efuse_room.data(), efuse_room.size()); }
  PublicRecord(const PublicRecord&) = delete;
  PublicRecord(PublicRecord&&) = delete;
  PublicRecord& operator=(const PublicRecord&) = delete;
  PublicRecord& operator=(PublicRecord&&) = delete;

  [[nodiscard]] ByteView efuse() const { return ByteView(efuse_room).first(efuse_length); }
  [[nodiscard]] ByteView bytes() const {
    return std::visit([](const auto& stored) { return view_of(stored); }, file);
  }
};

/// Everything but the proof of possession, for a key of the format; a root key is bound to new
/// eFuse data.
/// @return false where no HMAC key could be drawn.
[[nodiscard]] bool assemble_public_record(PublicRecord& record, const PublicKey& key, KeyRole role);

/// Takes the binding to eFuse data from a record that was assembled before: its HMAC, and the data,
/// of which a stage-2 key has none. A record of another size is ignored.
void adopt_binding(PublicRecord& record, ByteView assembled, ByteView efuse);

/// What the key signs to prove possession.
[[nodiscard]] Digest digest_of(const PublicRecord& record);

void attach_proof(PublicRecord& record, ByteView signature);

/// Whether the finished file is taken for what it should be: it holds this key, the proof verifies,
/// and the eFuse data, where there is some, holds it.
[[nodiscard]] bool record_holds(const PublicRecord& record, const PublicKey& key);

/// A private-key file, encrypted; wiped at its end.
struct PrivateRecord {
  std::array<std::uint8_t, sizeof(Sb20PrivateKeyFile)> room = {};
  std::size_t length = 0;

  PrivateRecord() = default;
  ~PrivateRecord() { wipe(room.data(), room.size()); }
  PrivateRecord(const PrivateRecord&) = delete;
  PrivateRecord(PrivateRecord&&) = delete;
  PrivateRecord& operator=(const PrivateRecord&) = delete;
  PrivateRecord& operator=(PrivateRecord&&) = delete;

  [[nodiscard]] ByteView bytes() const { return ByteView(room).first(length); }
};

/// Makes the private-key file of a new key and opens it again as `key`.
/// @return false where it could not be encrypted, or does not open to numbers that agree.
[[nodiscard]] bool make_private_record(PrivateRecord& record, PrivateKey& key,
                                       const ZEB_RSA_PRIVATE_KEY& numbers, Scheme scheme,
                                       KeyRole role);

}  // namespace sealwright
