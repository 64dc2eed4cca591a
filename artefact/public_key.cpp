#include "artefact/public_key.h"

#include <algorithm>
#include <array>

namespace sealwright {

namespace {

ByteView bytes_of(const PublicKey& key) {
  return std::visit([](const auto& stored) { return view_of(stored); }, key.stored);
}

template <typename Stored>
PublicKey make_public_key(Scheme scheme, const Stored& stored, bool lengths_agree) {
  const ByteView modulus = stored.n;
  const std::uint32_t exponent = load_le32(stored.e);
  const bool sizes_fit = modulus.back() >= 0x80 && exponent > 1;
  const bool odd = (modulus.front() & exponent & 1) != 0;
  return {scheme,
          stored,
          {modulus.rbegin(), modulus.rend()},
          exponent,
          lengths_agree && sizes_fit && odd};
}

}  // namespace

PublicKey to_public_key(const RsaPublicKey1024& stored) {
  return make_public_key(Scheme::sb10, stored, true);
}

PublicKey to_public_key(const RsaPublicKey2048& stored) {
  const bool lengths_agree = stored.nLen == sizeof stored.n && stored.eLen == sizeof stored.e;
  return make_public_key(Scheme::sb20, stored, lengths_agree);
}

bool is_of_the_format(const PublicKey& key) {
  return key.regular && key.exponent == facts_of(key.scheme).exponent;
}

RsaPublicNumbers numbers_of(const PublicKey& key) {
  return std::visit(
      [](const auto& stored) {
        return RsaPublicNumbers{stored.n, stored.e};
      },
      key.stored);
}

bool is_same_key(const PublicKey& a, const PublicKey& b) {
  return a.scheme == b.scheme && std::ranges::equal(bytes_of(a), bytes_of(b));
}

bool has_signed(const PublicKey& key, ByteView digest, ByteView signature) {
  if (!key.regular || signature.size() != key.modulus.size()) return false;
  // Copies, because a verification that fails wipes what it was given.
  std::array<std::uint8_t, sha1_digest_length> hashed = {};
  std::array<std::uint8_t, signature_bytes_2048> given = {};
  std::ranges::copy(digest, hashed.begin());
  std::ranges::copy(signature, given.begin());
  const ByteView stored = bytes_of(key);
  return Verify_PSS_RSASignature(stored.data(), length_of(stored), hashed.data(), hashed.size(),
                                 given.data(), length_of(signature)) == ZEB_SUCCESS;
}

}  // namespace sealwright
