#pragma once

#include "crypto/key_items.h"
#include "crypto/prng_state.h"
#include "crypto/rsa.h"
#include "tests/support/openssl.h"

// RSA keys of tests, by OpenSSL's arithmetic, and the generator in a known state.

/// n, e, d, p, q, dP, dQ, qInv.
using Key = std::vector<Big>;

inline Key make_key(const Big& p, const Big& q, const Big& e) {
  const Big d = inverse(e, (p - 1) * (q - 1));
  return {p * q, e, d, p, q, d % (p - 1), d % (q - 1), inverse(q, p)};
}

/// The key of so many bits in vectors.txt: e is 65537 for 1024 bits and 3 for 2048.
inline Key test_key(std::size_t bits) {
  const std::vector<Bytes> row = read_vectors("rsa" + std::to_string(bits)).at(0);
  return make_key(reversed(row[0]), reversed(row[1]), reversed(row[2]));
}

/// Bytes of each number of a key with a modulus of so many bytes.
using Widths = std::vector<std::size_t>;

inline Widths full_widths(std::size_t length) {
  return {length, 4, length, length / 2, length / 2, length / 2, length / 2, length / 2};
}

/// The numbers of a key as items, each behind its length; without e where a scheme leaves it out.
inline Bytes key_list(const Key& key, const Widths& widths, bool with_e) {
  Bytes list;
  for (std::size_t i = 0; i < key.size(); ++i) {
    if (i == 1 && !with_e) continue;
    list = joined(list, bytes_of(static_cast<std::uint32_t>(widths[i])), key[i].bytes(widths[i]));
  }
  return list;
}

/// The record that key generation makes, zero above the numbers.
inline ZEB_RSA_PRIVATE_KEY record_of(const Key& key, std::size_t length) {
  const Bytes list = key_list(key, full_widths(length), true);
  ZEB_RSA_PRIVATE_KEY record = {};
  require(sealwright::read_private_key(list.data(), length_of(list), KeyItemLayout::crt, record),
          "a record");
  return record;
}

/// Whether the numbers are those of a key with two primes in order.
inline bool is_sound(const Key& key) {
  return key[3].is_prime() && key[4].is_prime() && key[4] < key[3] &&
         key == make_key(key[3], key[4], key[1]);
}

/// What stands before the numbers in a stage-2 key file of scheme 1.1.
inline Bytes header_of(const std::string& text, std::uint32_t length) {
  return joined(bytes_of(28U), padded(Bytes(text.begin(), text.end()), 28), bytes_of(length));
}

/// Public key in the form that goes with 128-byte or 256-byte signatures.
inline Bytes public_key_of(const Key& key, std::size_t length) {
  const Bytes n = key[0].bytes(length), e = key[1].bytes(4);
  return length == 128 ? joined(n, e) : joined(bytes_of(256U), n, bytes_of(4U), e);
}

/// Verifies by the wrapper for messages or by the one for digests and checks that a refusal, and no
/// other outcome, wipes what it was given.
inline Status verify(bool by_message, Bytes key, const Bytes& covered, const Bytes& signature) {
  key.resize(1024);  // as the tool has it
  Bytes digest = covered, left = signature;
  const auto length = length_of(covered), signature_length = length_of(signature);
  const Status status = by_message ? Verify_PSS_RSASignature2(key.data(), 0, covered.data(), length,
                                                              left.data(), signature_length)
                                   : Verify_PSS_RSASignature(key.data(), 0, digest.data(), length,
                                                             left.data(), signature_length);
  const bool wiped = status == VERIFY_ERR_RSA;
  require(left == (wiped ? Bytes(left.size()) : signature), "signature after a verification");
  require(digest == (wiped && !by_message ? Bytes(digest.size()) : covered), "digest after it");
  return status;
}

/// Puts the generator into a known state that is not due for a re-seed, with its pool used up.
inline void set_generator(std::uint8_t seed) {
  for (std::uint32_t i = 0; i < prng_block_length; ++i) {
    sabSecretState[i] = static_cast<std::uint8_t>(seed + 3 * i);
    sabRandPool[i] = static_cast<std::uint8_t>(seed ^ (7 * i));
  }
  uIndexRandPool = prng_block_length;
  suCount = 0;
}
