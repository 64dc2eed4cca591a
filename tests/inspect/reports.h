#pragma once

#include "artefact/boot_check.h"
#include "inspect/boot.h"
#include "inspect/describe.h"
#include "tests/e2e/end_to_end.h"

// What the tests of the companion share.

using NamedBytes = std::vector<std::pair<std::string, Bytes>>;

inline const std::string inspect_tool = tool("SEALWRIGHT_INSPECT_TOOL", INSPECT_TOOL);

/// The reports on files named together.
inline std::vector<sealwright::Report> describe_all(const NamedBytes& named) {
  sealwright::FileSet files;
  std::vector<std::string_view> names;
  for (const auto& [name, bytes] : named) {
    add_file(files, sealwright::scan_bytes(bytes));
    names.emplace_back(name);
  }
  return describe(files, names);
}

/// The report on one file, which is called "f".
inline std::string describe_json(const Bytes& file) {
  return to_json(describe_all({{"f", file}}).front());
}

inline Bytes damage(Bytes bytes, std::size_t at) {
  bytes.at(at) ^= 0x10;
  return bytes;
}

/// A public key of 2048 bits as files of scheme 2.1 hold it.
inline RsaPublicKey2048 stored_key(const Bytes& n, std::uint32_t n_length, std::uint32_t e,
                                   std::uint32_t e_length) {
  RsaPublicKey2048 key = {n_length, {}, e_length, {}};
  std::ranges::copy(n, key.n);
  store_le32(key.e, e);
  return key;
}

/// A prime of 256 bits that is 3 modulo 4, for a short modulus.
inline Big some_prime(std::size_t seed = 0) {
  Bytes bytes = padded(some_bytes(32 + seed), 32);
  bytes.front() |= 3;
  bytes.back() |= 0x80;
  Big prime(bytes);
  while (!prime.is_prime()) prime = prime + 4;
  return prime;
}

/// A signature of 256 bytes by nobody under a key whose exponent is `ahead`, as it is stored, and
/// then the signature itself. Its first 32 bytes are the encoding of the digest; what comes after
/// them, which a modulus of 32 bytes ignores, makes the exponent 1 modulo n - 1.
inline Bytes fit_signature(const Big& n, const Bytes& digest, const Bytes& ahead) {
  const Bytes encoded = reversed(pss_encode(n, digest, 1));
  const Big odd_order = (n - 1) / 2, rest_at = Big::unit((ahead.size() + 32) / 4);
  const Big so_far = joined(ahead, encoded);
  const Big rest = (odd_order + 1 - so_far % odd_order) * inverse(rest_at, odd_order) % odd_order;
  return padded(joined(encoded, rest.bytes(32)), 256);
}
