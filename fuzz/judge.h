#pragma once

#include <cstring>

#include "crypto/prng.h"
#include "fuzz/input.h"
#include "tests/support/generator.h"

// What the library has to answer to keys and signatures of any kind, worked out with OpenSSL's
// SHA-1 and big numbers. The lenient rules of the verifier are rules here too.

inline Number number_at(const Bytes& bytes, std::size_t at, std::size_t digits) {
  Number number(digits);
  if (digits != 0) std::memcpy(number.data(), &bytes.at(at), 4 * digits);
  return number;
}

/// The number as so many little-endian bytes.
inline Bytes bytes_of(const Big& number, std::size_t length) {
  const Number digits = number.digits(length / 4);
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(digits.data());
  return Bytes(bytes, bytes + length);
}

inline bool has_top_bit(const Number& number) {
  return !number.empty() && number.back() >> 31;
}

/// The first byte of an unmasked encoding that is not zero, or the end of its data block.
inline auto pss_separator(const Bytes& opened) {
  return std::find_if(opened.begin(), opened.end() - 21, [](auto byte) { return byte != 0; });
}

/// SHA-1 over what the hash of an unmasked encoding covers; empty when there is no separator.
inline Bytes pss_hash(const Bytes& opened, const Bytes& digest) {
  const auto separator = pss_separator(opened);
  if (separator == opened.end() - 21) return {};
  Bytes covered(opened.begin(), opened.begin() + 8);
  covered.insert(covered.end(), digest.begin(), digest.end());
  covered.insert(covered.end(), separator + 1, opened.end() - 21);
  return sha1(covered);
}

/// Masks or unmasks an encoding with MGF1.
inline void pss_mask(Bytes& em) {
  Bytes seed(em.end() - 21, em.end() - 1);
  seed.resize(24);
  Bytes mask;
  for (std::size_t i = 0; i + 21 < em.size(); ++i) {
    if (i % 20 == 0) {
      mask = sha1(seed);
      ++seed.back();
    }
    em[i] ^= mask[i % 20];
  }
  em[0] &= 0x7F;
}

/// Encoding of a digest with the data block that `opened` starts with, as a number.
inline Big pss_seal(Bytes opened, const Bytes& digest) {
  std::ranges::copy(pss_hash(opened, digest), opened.end() - 21);
  opened.back() = 0xBC;
  pss_mask(opened);
  return Big::from_big_endian(opened);
}

inline bool judge_verify(const Number& n, const Number& e, const Bytes& signature,
                         const Bytes& digest) {
  if (n.size() < 6 || n.size() > 64 || !has_top_bit(n) || e.empty() || e.size() > 64) return false;
  const Big number = number_at(signature, 0, signature.size() / 4);
  Bytes em = bytes_of(power(number.low(n.size()), e, n), 4 * n.size());
  std::ranges::reverse(em);
  if (em.back() != 0xBC) return false;
  pss_mask(em);
  return *pss_separator(em) == 1 && pss_hash(em, digest) == Bytes(em.end() - 21, em.end() - 1);
}

/// With a public key in the form that belongs to the signature's length.
inline bool judge_verify(const Bytes& public_key, const Bytes& signature, const Bytes& digest) {
  const bool wide = signature.size() == 256;
  return judge_verify(number_at(public_key, wide ? 4 : 0, wide ? 64 : 32),
                      number_at(public_key, wide ? 264 : 128, 1), signature, digest);
}

/// The items of a key list: n, d or n, e, d, p, q, dP, dQ, qInv. Empty when it is no usable key.
inline std::vector<Number> judge_key(const Bytes& list, bool crt) {
  std::vector<Number> items;
  for (std::size_t at = 0; items.size() < (crt ? 8 : 2);) {
    if (list.size() - at < 4) return {};
    const std::size_t digits = load_le32(&list[at]) / 4;
    if (digits > (items.size() < 3 ? 66 : 34) || 4 * digits > list.size() - at - 4) return {};
    items.push_back(number_at(list, at + 4, digits));
    at += 4 + 4 * digits;
  }
  const std::size_t width = items[0].size();
  if (width > 64 || !has_top_bit(items[0])) return {};
  const auto fits = [&](const Number& p) { return 2 * p.size() == width && has_top_bit(p); };
  return !crt || (fits(items[3]) && fits(items[4])) ? items : std::vector<Number>();
}

/// The next signature of a digest with whatever numbers a key list holds; empty when it is refused.
/// Puts the generator into a known state for it.
inline Bytes judge_sign(const Bytes& list, bool crt, const Bytes& digest) {
  Bytes salt(20);
  set_generator(0);
  ZEB_SHA1_PRNG_Rand(20, salt.data());
  set_generator(0);
  const std::vector<Number> key = judge_key(list, crt);
  if (key.empty() || key[0].size() < 11) return {};  // 42 bytes of encoding
  const std::size_t width = key[0].size();
  Bytes opened(4 * width);
  opened[opened.size() - 42] = 1;
  std::ranges::copy(salt, opened.end() - 41);
  const Big em = pss_seal(opened, digest);
  if (!crt) return bytes_of(power(em, Big(key[1]).low(width), key[0]), 4 * width);
  const Big p = key[3];
  const Big q = key[4];
  const Big m1 = power(em % p, key[5], p);
  const Big m2 = power(em % q, key[6], q);
  const Big difference = (m1 < m2 ? m1 - m2 + p : m1 - m2).low(width / 2);
  const Big t = difference * Big(key[7]).low(width / 2) % p;
  return bytes_of((t * q + m2).low(width), 4 * width);
}
