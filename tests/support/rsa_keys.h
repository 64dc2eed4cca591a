#pragma once

#include "crypto/rsa_key.h"
#include "tests/support/openssl_util.h"

/// The key record of p, q and a one-digit e, filled in with OpenSSL's arithmetic.
inline ZEB_RSA_PRIVATE_KEY make_key_record(const Big& p, const Big& q, const Big& e,
                                           std::uint32_t bits) {
  ZEB_RSA_PRIVATE_KEY key = {};
  const auto store = [](Digit* field, std::uint32_t& count, const Big& value, std::uint32_t width) {
    std::ranges::copy(value.digits(width), field);
    count = width;
  };
  const std::uint32_t width = bits / digit_bits;
  const Big d = inverse(e, (p - 1) * (q - 1));
  store(key.n, key.nWords, p * q, width);
  store(key.e, key.eWords, e, 1);
  store(key.d, key.dWords, d, width);
  store(key.p, key.pWords, p, width / 2);
  store(key.q, key.qWords, q, width / 2);
  store(key.dP, key.dPWords, d % (p - 1), width / 2);
  store(key.dQ, key.dQWords, d % (q - 1), width / 2);
  store(key.qInv, key.qInvWords, inverse(q, p), width / 2);
  return key;
}

/// The key of so many bits in rsa_keys.txt.
inline ZEB_RSA_PRIVATE_KEY read_key_record(std::uint32_t bits) {
  const std::string name = "rsa" + std::to_string(bits);
  for (const Vector& key : read_vectors("rsa_keys.txt")) {
    if (key.at("name") != Bytes(name.begin(), name.end())) continue;
    const auto number = [&](const char* field) { return Big::from_big_endian(key.at(field)); };
    return make_key_record(number("p"), number("q"), number("e"), bits);
  }
  throw std::runtime_error("no key " + name);
}

inline EvpKey make_evp_key(const ZEB_RSA_PRIVATE_KEY& key) {
  return make_evp_key({key.n, key.nWords}, {key.e, key.eWords}, {key.d, key.dWords});
}
