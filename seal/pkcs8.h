#pragma once

#include <array>
#include <cstddef>
#include <span>

#include "base/bytes.h"
#include "base/wipe.h"
#include "crypto/rsa_key.h"

namespace sealwright {

/// A private key as text; wiped at its end.
struct PrivatePem {
  std::array<char, 2048> room = {};  // a key of 2048 bits takes 1704
  std::size_t length = 0;

  PrivatePem() = default;
  ~PrivatePem() { wipe(room.data(), room.size()); }
  PrivatePem(const PrivatePem&) = delete;
  PrivatePem(PrivatePem&&) = delete;
  PrivatePem& operator=(const PrivatePem&) = delete;
  PrivatePem& operator=(PrivatePem&&) = delete;

  [[nodiscard]] ByteView bytes() const {
    return {reinterpret_cast<const std::uint8_t*>(room.data()), length};
  }
};

/// Writes an RSA key of at most 2048 bits as an unencrypted PKCS #8 block (RFC 5208, 5, with the
/// key as in RFC 8017, A.1.2).
void encode_pkcs8(PrivatePem& pem, const ZEB_RSA_PRIVATE_KEY& key);

}  // namespace sealwright
