#pragma once

#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/param_build.h>
#include <openssl/rsa.h>
#include <openssl/sha.h>

#include <cstdint>
#include <memory>
#include <ostream>
#include <stdexcept>

#include "crypto/bn.h"
#include "tests/support/vectors.h"

// OpenSSL as the independent judge.

using Number = std::vector<Digit>;  // least significant digit first

struct OpensslDeleter {
  void operator()(BIGNUM* p) const { BN_free(p); }
  void operator()(EVP_PKEY* p) const { EVP_PKEY_free(p); }
  void operator()(EVP_PKEY_CTX* p) const { EVP_PKEY_CTX_free(p); }
  void operator()(EVP_CIPHER_CTX* p) const { EVP_CIPHER_CTX_free(p); }
  void operator()(OSSL_PARAM_BLD* p) const { OSSL_PARAM_BLD_free(p); }
  void operator()(OSSL_PARAM* p) const { OSSL_PARAM_free(p); }
};
template <typename T>
using Owned = std::unique_ptr<T, OpensslDeleter>;
using EvpKey = Owned<EVP_PKEY>;

inline void require(bool condition, const char* what) {
  if (!condition) throw std::runtime_error(what);
}

/// A BIGNUM with value semantics.
class Big {
 public:
  Big(std::uint64_t word) { BN_set_word(get(), word); }
  Big(const Number& number) : Big(number.data(), number.size()) {}
  Big(const Digit* digits, std::size_t count) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(digits);
    BN_lebin2bn(bytes, static_cast<int>(digit_bytes * count), get());
  }
  Big(const Big& other) { BN_copy(get(), other.get()); }
  Big& operator=(const Big& other) {
    BN_copy(get(), other.get());
    return *this;
  }
  static Big from_big_endian(const Bytes& bytes) {
    return made_by([&](BIGNUM* r) {
      return BN_bin2bn(bytes.data(), static_cast<int>(bytes.size()), r) != nullptr;
    });
  }
  BIGNUM* get() const { return number_.get(); }

  friend Big operator+(const Big& a, const Big& b) { return made_by(BN_add, a, b); }
  friend Big operator-(const Big& a, const Big& b) { return made_by(BN_sub, a, b); }
  friend Big operator*(const Big& a, const Big& b) { return made_by(BN_mul, a, b, context()); }
  friend Big operator%(const Big& a, const Big& b) { return made_by(BN_nnmod, a, b, context()); }
  friend Big gcd(const Big& a, const Big& b) { return made_by(BN_gcd, a, b, context()); }
  friend Big operator/(const Big& a, const Big& b) {
    return made_by([&](BIGNUM* r) { return BN_div(r, nullptr, a.get(), b.get(), context()); });
  }
  friend Big power(const Big& base, const Big& e, const Big& m) {
    return made_by(BN_mod_exp, base, e, m, context());
  }
  /// Throws when there is none.
  friend Big inverse(const Big& a, const Big& m) {
    return made_by(BN_mod_inverse, a, m, context());
  }
  friend bool operator==(const Big& a, const Big& b) { return BN_cmp(a.get(), b.get()) == 0; }
  friend bool operator<(const Big& a, const Big& b) { return BN_cmp(a.get(), b.get()) < 0; }
  friend std::ostream& operator<<(std::ostream& out, const Big& a) {
    const std::unique_ptr<char, void (*)(char*)> text(BN_bn2hex(a.get()),
                                                      [](char* p) { OPENSSL_free(p); });
    return out << "0x" << text.get();
  }

  /// 2^(32 digits).
  static Big unit(std::size_t digits) {
    return made_by(BN_lshift, Big(1), static_cast<int>(digit_bits * digits));
  }
  Big low(std::size_t digits) const { return *this % unit(digits); }
  Number digits(std::size_t count) const {
    Number number(count);
    const int bytes = static_cast<int>(digit_bytes * count);
    auto* out = reinterpret_cast<unsigned char*>(number.data());
    require(BN_bn2lebinpad(get(), out, bytes) == bytes, "number too wide");
    return number;
  }
  bool is_prime() const { return BN_check_prime(get(), context(), nullptr) == 1; }

 private:
  static BN_CTX* context() {
    static const std::unique_ptr<BN_CTX, void (*)(BN_CTX*)> instance(BN_CTX_new(), BN_CTX_free);
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

inline EvpKey make_evp_key(const Big& n, const Big& e, const Big& d) {
  const Owned<OSSL_PARAM_BLD> builder(OSSL_PARAM_BLD_new());
  OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_RSA_N, n.get());
  OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_RSA_E, e.get());
  OSSL_PARAM_BLD_push_BN(builder.get(), OSSL_PKEY_PARAM_RSA_D, d.get());
  const Owned<OSSL_PARAM> params(OSSL_PARAM_BLD_to_param(builder.get()));
  const Owned<EVP_PKEY_CTX> context(EVP_PKEY_CTX_new_from_name(nullptr, "RSA", nullptr));
  EVP_PKEY* key = nullptr;
  EVP_PKEY_fromdata_init(context.get());
  EVP_PKEY_fromdata(context.get(), &key, EVP_PKEY_KEYPAIR, params.get());
  require(key != nullptr, "no RSA key");
  return EvpKey(key);
}

inline Owned<EVP_PKEY_CTX> start_pss(EVP_PKEY* key, int (*init)(EVP_PKEY_CTX*), int salt_length) {
  Owned<EVP_PKEY_CTX> context(EVP_PKEY_CTX_new(key, nullptr));
  init(context.get());
  EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_PSS_PADDING);
  EVP_PKEY_CTX_set_signature_md(context.get(), EVP_sha1());
  require(EVP_PKEY_CTX_set_rsa_pss_saltlen(context.get(), salt_length) == 1, "no PSS");
  return context;
}

/// RSASSA-PSS signature with SHA-1 over a digest, big-endian.
inline Bytes openssl_pss_sign(EVP_PKEY* key, const Bytes& digest, int salt_length) {
  const auto context = start_pss(key, EVP_PKEY_sign_init, salt_length);
  std::size_t length = static_cast<std::size_t>(EVP_PKEY_get_size(key));
  Bytes signature(length);
  EVP_PKEY_sign(context.get(), signature.data(), &length, digest.data(), digest.size());
  return signature;
}

inline bool openssl_pss_verify(EVP_PKEY* key, const Bytes& digest, const Bytes& signature,
                               int salt_length) {
  const auto context = start_pss(key, EVP_PKEY_verify_init, salt_length);
  return EVP_PKEY_verify(context.get(), signature.data(), signature.size(), digest.data(),
                         digest.size()) == 1;
}
