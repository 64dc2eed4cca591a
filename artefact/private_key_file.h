#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "artefact/public_key.h"
#include "base/wipe.h"
#include "crypto/checked_signature.h"
#include "crypto/rsa_key.h"
#include "sb20/records.h"

namespace sealwright {

/// A decrypted private-key file; wiped at its end.
struct PrivateKey {
  Scheme scheme = Scheme::sb20;
  ZEB_RSA_PRIVATE_KEY numbers = {};
  bool complete = false;  // each number states the length that the format gives it
  /// The file's plaintext, of which `items` is the list of numbers.
  std::array<std::uint8_t, sizeof(Sb20PrivateKeyFile)> plain = {};
  ByteView items = {};

  PrivateKey() = default;
  ~PrivateKey() {
    wipe(&numbers, sizeof numbers);
    wipe(plain.data(), plain.size());
  }
  PrivateKey(const PrivateKey&) = delete;
  PrivateKey(PrivateKey&&) = delete;
  PrivateKey& operator=(const PrivateKey&) = delete;
  PrivateKey& operator=(PrivateKey&&) = delete;
};

/// Opens a private-key file of any kind, recognised by its length and, once decrypted, by its
/// header or the stated length of its modulus. In scheme 1.1, where e is not stored, it is 65537.
/// @return false when it is no such file; `key` is not to be used then.
[[nodiscard]] bool open_private_key_file(PrivateKey& key, ByteView file);

/// Whether all numbers have the lengths of the format and belong together: n = p q; d, dP and dQ
/// undo e; qInv inverts q; and in scheme 2.1, which signs with all of them, p is above q.
[[nodiscard]] bool numbers_agree(const PrivateKey& key);

/// The list as the scheme's signatures are made from it. A view of `key`.
[[nodiscard]] SigningKey signing_key_of(const PrivateKey& key);

[[nodiscard]] PublicKey public_half_of(const PrivateKey& key);

/// What may be told of a private-key file.
struct PrivateKeyFile {
  PublicKey key;
  bool consistent;  // the numbers agree
};
std::optional<PrivateKeyFile> read_private_key_file(ByteView file);

}  // namespace sealwright
