#pragma once

#include <openssl/bn.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/rsa.h>
#include <openssl/sha.h>
#include <openssl/x509.h>

#include <memory>

#include "crypto/bn.h"
#include "tests/support/bytes.h"

// OpenSSL as the independent judge. Numbers are little-endian, as in the files of the tool, but for
// the encodings of signatures.

using Number = std::vector<Digit>;  // least significant digit first

inline std::uint32_t width_of(const Number& number) {
  return static_cast<std::uint32_t>(number.size());
}

struct OpensslDeleter {
  void operator()(BIO* p) const { BIO_free(p); }
  void operator()(BIGNUM* p) const { BN_free(p); }
  void operator()(BN_CTX* p) const { BN_CTX_free(p); }
  void operator()(EVP_CIPHER_CTX* p) const { EVP_CIPHER_CTX_free(p); }
  void operator()(RSA* p) const { RSA_free(p); }
};
template <typename T>
using Owned = std::unique_ptr<T, OpensslDeleter>;

/// A BIGNUM with value semantics.
class Big {
 public:
  Big(std::uint64_t word) { BN_set_word(get(), word); }
  Big(const Bytes& bytes) : Big(bytes.data(), bytes.size()) {}
  Big(const Number& number) : Big(number.data(), digit_bytes * number.size()) {}
  Big(const void* bytes, std::size_t count) {
    BN_lebin2bn(static_cast<const unsigned char*>(bytes), static_cast<int>(count), get());
  }
  Big(const Big& other) { BN_copy(get(), other.get()); }
  Big& operator=(Big other) {
    number_.swap(other.number_);
    return *this;
  }
  BIGNUM* get() const { return number_.get(); }

  friend Big operator+(const Big& a, const Big& b) { return made_by(BN_add, a, b); }
  friend Big operator-(const Big& a, const Big& b) { return made_by(BN_sub, a, b); }
  friend Big operator*(const Big& a, const Big& b) { return made_by(BN_mul, a, b, context()); }
  friend Big operator%(const Big& a, const Big& b) { return made_by(BN_nnmod, a, b, context()); }
  friend Big operator/(const Big& a, const Big& b) {
    return made_by([&](BIGNUM* r) { return BN_div(r, nullptr, a.get(), b.get(), context()); });
  }
  friend Big gcd(const Big& a, const Big& b) { return made_by(BN_gcd, a, b, context()); }
  friend Big power(const Big& base, const Big& e, const Big& m) {
    return made_by(BN_mod_exp, base, e, m, context());
  }
  friend Big inverse(const Big& a, const Big& m) {
    return made_by(BN_mod_inverse, a, m, context());
  }
  friend int compare(const Big& a, const Big& b) { return BN_cmp(a.get(), b.get()); }
  friend bool operator==(const Big& a, const Big& b) { return compare(a, b) == 0; }
  friend bool operator<(const Big& a, const Big& b) { return compare(a, b) < 0; }

  /// 2^(32 digits).
  static Big unit(std::size_t digits) {
    return made_by(BN_lshift, Big(1), static_cast<int>(digit_bits * digits));
  }
  Bytes bytes(std::size_t count) const {
    Bytes bytes(count);
    require(BN_bn2lebinpad(get(), bytes.data(), static_cast<int>(count)) >= 0, "number too wide");
    return bytes;
  }
  Number digits(std::size_t count) const {
    Number number(count);
    std::ranges::copy(bytes(digit_bytes * count), reinterpret_cast<std::uint8_t*>(number.data()));
    return number;
  }
  bool is_prime() const { return BN_check_prime(get(), context(), nullptr) == 1; }

 private:
  static BN_CTX* context() {
    static const Owned<BN_CTX> instance(BN_CTX_new());
    return instance.get();
  }
  static BIGNUM* raw(const Big& a) { return a.get(); }
  static BN_CTX* raw(BN_CTX* a) { return a; }
  static int raw(int a) { return a; }
  template <typename Operation, typename... Operands>
  static Big made_by(Operation operation, const Operands&... operands) {
    Big r(0);
    require(operation(r.get(), raw(operands)...), "OpenSSL refused an operation on big numbers");
    return r;
  }
  Owned<BIGNUM> number_{BN_new()};
};

inline Bytes sha1(const Bytes& message) {
  Bytes digest(SHA_DIGEST_LENGTH);
  SHA1(message.data(), message.size(), digest.data());
  return digest;
}

inline Bytes hmac_sha1(const Bytes& key, const Bytes& message) {
  Bytes mac(SHA_DIGEST_LENGTH);
  HMAC(EVP_sha1(), key.data(), static_cast<int>(key.size()), message.data(), message.size(),
       mac.data(), nullptr);
  return mac;
}

/// AES in CBC mode; without padding for whole blocks.
inline Bytes aes_cbc(bool encrypt, const Bytes& key, const Bytes& iv, const Bytes& in,
                     bool padded = false) {
  const EVP_CIPHER* ciphers[] = {EVP_aes_128_cbc(), EVP_aes_192_cbc(), EVP_aes_256_cbc()};
  const Owned<EVP_CIPHER_CTX> context(EVP_CIPHER_CTX_new());
  Bytes out(in.size() + 16);
  int length = 0, rest = 0;
  EVP_CipherInit_ex(context.get(), ciphers[key.size() / 8 - 2], nullptr, key.data(), iv.data(),
                    encrypt ? 1 : 0);
  EVP_CIPHER_CTX_set_padding(context.get(), padded ? 1 : 0);
  EVP_CipherUpdate(context.get(), out.data(), &length, in.data(), static_cast<int>(in.size()));
  require(EVP_CipherFinal_ex(context.get(), out.data() + length, &rest) == 1, "OpenSSL's AES");
  out.resize(static_cast<std::size_t>(length + rest));
  return out;
}

inline Owned<RSA> make_rsa(const Big& n, const Big& e) {
  Owned<RSA> key(RSA_new());
  RSA_set0_key(key.get(), BN_dup(n.get()), BN_dup(e.get()), nullptr);
  return key;
}

/// The SubjectPublicKeyInfo of a key.
inline Bytes der_of(const RSA* key) {
  Bytes der(512);
  unsigned char* end = der.data();
  der.resize(static_cast<std::size_t>(i2d_RSA_PUBKEY(key, &end)));
  return der;
}

/// The PSS encoding of a SHA-1 digest for a modulus.
inline Bytes pss_encode(const Big& n, const Bytes& digest, std::size_t salt_length) {
  const Owned<RSA> key = make_rsa(n, 3);
  Bytes encoded(static_cast<std::size_t>(RSA_size(key.get())));
  require(RSA_padding_add_PKCS1_PSS_mgf1(key.get(), encoded.data(), digest.data(), EVP_sha1(),
                                         nullptr, static_cast<int>(salt_length)) == 1,
          "OpenSSL's PSS");
  return encoded;
}

/// Whether an encoding is one of this digest, with a salt of any length unless one is given.
inline bool pss_matches(const Big& n, const Bytes& digest, const Bytes& encoded,
                        int salt_length = RSA_PSS_SALTLEN_AUTO) {
  const Owned<RSA> key = make_rsa(n, 3);
  return RSA_verify_PKCS1_PSS_mgf1(key.get(), digest.data(), EVP_sha1(), nullptr, encoded.data(),
                                   salt_length) == 1;
}

inline bool pss_verify(const Big& n, const Big& e, const Bytes& digest, const Bytes& signature,
                       int salt_length = RSA_PSS_SALTLEN_AUTO) {
  const auto length = static_cast<std::size_t>(BN_num_bytes(n.get()));
  const Bytes encoded = reversed(power(signature, e, n).bytes(length));
  return pss_matches(n, digest, encoded, salt_length);
}
