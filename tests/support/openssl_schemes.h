#pragma once

#include <openssl/hmac.h>

#include <cstring>

#include "tests/support/files.h"
#include "tests/support/openssl_util.h"

// What the boot schemes compute, computed once more with OpenSSL.

/// The number that little-endian bytes spell.
inline Big little_endian(const Bytes& bytes) {
  return Big::from_big_endian(Bytes(bytes.rbegin(), bytes.rend()));
}

inline Bytes hmac_sha1(const Bytes& key, const Bytes& message) {
  Bytes mac(SHA_DIGEST_LENGTH);
  HMAC(EVP_sha1(), key.data(), static_cast<int>(key.size()), message.data(), message.size(),
       mac.data(), nullptr);
  return mac;
}

/// The bytes that AES-128-CBC stored under the parameters of a v2.1 public-key info.
inline Bytes open_code(const Bytes& info, const Bytes& efuse, const Bytes& ciphertext) {
  const Bytes iv = sha1(slice(info, 0, 268));
  Bytes key = slice(info, 268, 16);
  for (std::size_t i = 0; i < key.size(); ++i) key[i] ^= efuse.at(i);
  const Owned<EVP_CIPHER_CTX> context(EVP_CIPHER_CTX_new());
  Bytes plaintext(ciphertext.size() + 16);
  int length = 0;
  EVP_DecryptInit(context.get(), EVP_aes_128_cbc(), key.data(), iv.data());
  EVP_CIPHER_CTX_set_padding(context.get(), 0);
  EVP_DecryptUpdate(context.get(), plaintext.data(), &length, ciphertext.data(),
                    static_cast<int>(ciphertext.size()));
  require(static_cast<std::size_t>(length) == ciphertext.size(), "OpenSSL did not decrypt");
  plaintext.resize(ciphertext.size());
  return plaintext;
}

/// Whether OpenSSL takes a signature in the byte order of the files, with a salt of 20 bytes.
inline bool openssl_accepts(const Big& n, const Big& e, const Bytes& message,
                            const Bytes& signature) {
  const EvpKey key = make_evp_key(n, e, 1);  // the private exponent plays no part
  const Bytes big_endian(signature.rbegin(), signature.rend());
  return openssl_pss_verify(key.get(), sha1(message), big_endian, 20);
}
