#include "seal/pkcs8.h"

#include <string_view>

#include "artefact/der.h"
#include "artefact/pem.h"

namespace sealwright {

namespace {

ByteView bytes_of(const Digit* digits, std::uint32_t count) {
  return {reinterpret_cast<const std::uint8_t*>(digits), std::size_t{digit_bytes} * count};
}

}  // namespace

void encode_pkcs8(PrivatePem& pem, const ZEB_RSA_PRIVATE_KEY& key) {
  constexpr std::string_view label = "PRIVATE KEY";
  constexpr std::array<std::uint8_t, 1> version = {0};
  std::array<std::uint8_t, 1280> room;  // bytes; a key of 2048 bits takes 1218 or 1219
  const WipeOnExit room_guard(room);
  const ByteView numbers[] = {
      version,
      bytes_of(key.n, key.nWords),
      bytes_of(key.e, key.eWords),
      bytes_of(key.d, key.dWords),
      bytes_of(key.p, key.pWords),
      bytes_of(key.q, key.qWords),
      bytes_of(key.dP, key.dPWords),
      bytes_of(key.dQ, key.dQWords),
      bytes_of(key.qInv, key.qInvWords),
  };
  Der der = {room};
  for (std::size_t i = std::size(numbers); i > 0; --i) prepend_integer(der, numbers[i - 1]);
  wrap(der, DerTag::sequence, room.size());
  wrap(der, DerTag::octet_string, room.size());
  prepend_rsa_encryption(der);
  prepend_integer(der, version);
  wrap(der, DerTag::sequence, room.size());
  pem.length = pem_length(label, der.written().size());
  write_pem(std::span(pem.room).first(pem.length), label, der.written());
}

}  // namespace sealwright
