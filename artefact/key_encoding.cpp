#include "artefact/key_encoding.h"

#include <array>
#include <cstddef>

#include "artefact/der.h"
#include "artefact/hex.h"
#include "artefact/pem.h"

namespace sealwright {

namespace {

constexpr std::size_t longest_der = 512;  // bytes; a modulus of 256 makes 292

}  // namespace

std::vector<std::uint8_t> encode_der(const PublicKey& key) {
  constexpr std::array<std::uint8_t, 1> no_unused_bits = {0};
  std::array<std::uint8_t, longest_der> room;
  std::array<std::uint8_t, 4> exponent;
  store_le32(exponent.data(), key.exponent);
  const std::vector<std::uint8_t> modulus(key.modulus.rbegin(), key.modulus.rend());
  Der der = {room};
  prepend_integer(der, exponent);
  prepend_integer(der, modulus);
  wrap(der, DerTag::sequence, room.size());
  prepend(der, no_unused_bits);
  wrap(der, DerTag::bit_string, room.size());
  prepend_rsa_encryption(der);
  wrap(der, DerTag::sequence, room.size());
  return {der.written().begin(), der.written().end()};
}

std::string encode_pem(const PublicKey& key) {
  constexpr std::string_view label = "PUBLIC KEY";
  const std::vector<std::uint8_t> der = encode_der(key);
  std::string pem(pem_length(label, der.size()), '\0');
  write_pem(pem, label, der);
  return pem;
}

std::string key_sha1(const PublicKey& key) {
  return sha1_hex(encode_der(key));
}

}  // namespace sealwright
