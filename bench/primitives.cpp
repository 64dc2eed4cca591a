// Each primitive of the crypto library on its processor path and on its portable paths, beside
// OpenSSL's on the same data in the same process. Compare rows of one run only.

#include <benchmark/benchmark.h>
#include <openssl/bn.h>
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/param_build.h>
#include <openssl/rsa.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "crypto/aes_cbc.h"
#include "crypto/bn_mod.h"
#include "crypto/cpu.h"
#include "crypto/rsa.h"
#include "crypto/rsa_keygen.h"
#include "crypto/sha1.h"

namespace {

constexpr std::uint32_t data_length = 16 * 1024;

// Portable code computes big numbers on 64-bit words, or on digits where the compiler has no words.
enum Path : std::int64_t { processor, portable, digits_only };

/// Puts the path of a benchmark's argument in force while it lives.
class PathScope {
 public:
  explicit PathScope(std::int64_t path) {
    if (path != processor) sealwright::force_crypto_paths({false, false, path == portable, false});
  }
  ~PathScope() { sealwright::force_crypto_paths(sealwright::available_crypto_paths()); }
  PathScope(const PathScope&) = delete;
  PathScope& operator=(const PathScope&) = delete;
};

std::vector<std::uint8_t> sample_data() {
  std::vector<std::uint8_t> data(data_length);
  std::uint32_t word = 1;
  for (std::uint8_t& byte : data) {
    word = word * 1664525 + 1013904223;
    byte = static_cast<std::uint8_t>(word >> 24);
  }
  return data;
}

void count_bytes(benchmark::State& state) {
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * data_length);
}

void Sha1(benchmark::State& state) {
  const PathScope scope(state.range(0));
  const auto data = sample_data();
  std::uint8_t digest[sha1_digest_length];
  for (auto _ : state) {
    sealwright::sha1(digest, {{data.data(), data_length}});
    benchmark::DoNotOptimize(digest);
  }
  count_bytes(state);
}
BENCHMARK(Sha1)->Arg(processor)->Arg(portable);

void Sha1_OpenSSL(benchmark::State& state) {
  const auto data = sample_data();
  std::uint8_t digest[sha1_digest_length];
  EVP_MD* sha1 = EVP_MD_fetch(nullptr, "SHA1", nullptr);
  for (auto _ : state) {
    EVP_Digest(data.data(), data.size(), digest, nullptr, sha1, nullptr);
    benchmark::DoNotOptimize(digest);
  }
  EVP_MD_free(sha1);
  count_bytes(state);
}
BENCHMARK(Sha1_OpenSSL);

constexpr std::uint8_t aes_key[16] = {1, 2, 3};
constexpr std::uint8_t aes_iv[16] = {4, 5, 6};

void AesCbc(benchmark::State& state) {
  const PathScope scope(state.range(0));
  const bool encrypt = state.range(1) != 0;
  auto data = sample_data();
  std::vector<std::uint8_t> out(data_length + aes_block_length);
  AesCbcContext cipher;
  ZEB_AES_SetInfo(&cipher, AES_USE_DEFAULT, aes_key, 16, aes_iv, 16, AES_PADDING_NONE, 0);
  for (auto _ : state) {
    std::uint32_t written = 0;
    std::uint32_t last = 0;
    if (encrypt) {
      ZEB_AES_CBC_EncInit(&cipher);
      ZEB_AES_CBC_EncUpdate(&cipher, data.data(), data_length, out.data(), &written);
      ZEB_AES_CBC_EncFinal(&cipher, out.data() + written, &last);
    } else {
      ZEB_AES_CBC_DecInit(&cipher);
      ZEB_AES_CBC_DecUpdate(&cipher, data.data(), data_length, data.data(), &written);
      ZEB_AES_CBC_DecFinal(&cipher, data.data() + written, &last);
    }
    benchmark::ClobberMemory();
  }
  count_bytes(state);
}
BENCHMARK(AesCbc)->ArgsProduct({{processor, portable}, {0, 1}})->ArgNames({"path", "encrypt"});

void AesCbc_OpenSSL(benchmark::State& state) {
  const int encrypt = static_cast<int>(state.range(0));
  auto data = sample_data();
  std::vector<std::uint8_t> out(data_length + aes_block_length);
  EVP_CIPHER_CTX* cipher = EVP_CIPHER_CTX_new();
  EVP_CipherInit_ex(cipher, EVP_aes_128_cbc(), nullptr, aes_key, aes_iv, encrypt);
  EVP_CIPHER_CTX_set_padding(cipher, 0);
  for (auto _ : state) {
    int written = 0;
    int last = 0;
    std::uint8_t* to = encrypt != 0 ? out.data() : data.data();  // in place to decrypt, as ours
    EVP_CipherInit_ex(cipher, nullptr, nullptr, nullptr, aes_iv, encrypt);
    EVP_CipherUpdate(cipher, to, &written, data.data(), static_cast<int>(data.size()));
    EVP_CipherFinal_ex(cipher, to + written, &last);
    benchmark::ClobberMemory();
  }
  EVP_CIPHER_CTX_free(cipher);
  count_bytes(state);
}
BENCHMARK(AesCbc_OpenSSL)->Arg(0)->Arg(1)->ArgName("encrypt");

/// The 2048-bit key that all RSA rows share, and the same key for OpenSSL.
struct RsaKeys {
  ZEB_RSA_PRIVATE_KEY ours = {};
  std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)> theirs{nullptr, EVP_PKEY_free};
};

const RsaKeys& rsa_keys() {
  static const RsaKeys keys = [] {
    RsaKeys made;
    made.ours.e[0] = 3;
    made.ours.eWords = 1;
    ZEB_RSA_KeyGen(&made.ours, 2048);
    OSSL_PARAM_BLD* builder = OSSL_PARAM_BLD_new();
    std::vector<BIGNUM*> numbers;
    const auto push = [&](const char* name, const Digit* digits, std::uint32_t count) {
      numbers.push_back(BN_lebin2bn(reinterpret_cast<const std::uint8_t*>(digits),
                                    static_cast<int>(4 * count), nullptr));
      OSSL_PARAM_BLD_push_BN(builder, name, numbers.back());
    };
    const ZEB_RSA_PRIVATE_KEY& k = made.ours;
    push(OSSL_PKEY_PARAM_RSA_N, k.n, k.nWords);
    push(OSSL_PKEY_PARAM_RSA_E, k.e, k.eWords);
    push(OSSL_PKEY_PARAM_RSA_D, k.d, k.dWords);
    push(OSSL_PKEY_PARAM_RSA_FACTOR1, k.p, k.pWords);
    push(OSSL_PKEY_PARAM_RSA_FACTOR2, k.q, k.qWords);
    push(OSSL_PKEY_PARAM_RSA_EXPONENT1, k.dP, k.dPWords);
    push(OSSL_PKEY_PARAM_RSA_EXPONENT2, k.dQ, k.dQWords);
    push(OSSL_PKEY_PARAM_RSA_COEFFICIENT1, k.qInv, k.qInvWords);
    OSSL_PARAM* parameters = OSSL_PARAM_BLD_to_param(builder);
    EVP_PKEY_CTX* context = EVP_PKEY_CTX_new_from_name(nullptr, "RSA", nullptr);
    EVP_PKEY* key = nullptr;
    EVP_PKEY_fromdata_init(context);
    EVP_PKEY_fromdata(context, &key, EVP_PKEY_KEYPAIR, parameters);
    made.theirs.reset(key);
    EVP_PKEY_CTX_free(context);
    OSSL_PARAM_free(parameters);
    OSSL_PARAM_BLD_free(builder);
    for (BIGNUM* number : numbers) BN_free(number);
    return made;
  }();
  return keys;
}

constexpr std::uint8_t digest_to_sign[sha1_digest_length] = {7, 8, 9};

/// Signing or verifying context with PSS, SHA-1 and a 20-byte salt.
EVP_PKEY_CTX* pss_context(bool sign) {
  EVP_PKEY_CTX* context = EVP_PKEY_CTX_new(rsa_keys().theirs.get(), nullptr);
  if (sign) {
    EVP_PKEY_sign_init(context);
  } else {
    EVP_PKEY_verify_init(context);
  }
  EVP_PKEY_CTX_set_rsa_padding(context, RSA_PKCS1_PSS_PADDING);
  EVP_PKEY_CTX_set_signature_md(context, EVP_sha1());
  EVP_PKEY_CTX_set_rsa_pss_saltlen(context, static_cast<int>(pss_salt_length));
  return context;
}

void RsaSign(benchmark::State& state) {
  const RsaKeys& keys = rsa_keys();
  const PathScope scope(state.range(0));
  Digit signature[rsa_max_modulus_digits];
  std::uint32_t words = 0;
  for (auto _ : state) {
    ZEB_RSA_PSS_SignCRT(&words, signature, &keys.ours, sha1_digest_length, digest_to_sign,
                        pss_salt_length);
    benchmark::DoNotOptimize(signature);
  }
}
BENCHMARK(RsaSign)->Arg(processor)->Arg(portable)->Arg(digits_only);

/// A whole exponentiation: the test of one candidate in key generation, or half a signature.
void Power(benchmark::State& state) {
  const PathScope scope(state.range(0));
  const auto digits = static_cast<std::uint32_t>(state.range(1));
  const ZEB_RSA_PRIVATE_KEY& key = rsa_keys().ours;
  const Digit* modulus = digits == 32 ? key.p : key.p + 16;  // top bit set either way
  Digit result[rsa_max_modulus_digits];
  for (auto _ : state) {
    zeb_bn_Binary(result, key.q, modulus, digits, key.dP, digits);
    benchmark::DoNotOptimize(result);
  }
}
BENCHMARK(Power)
    ->ArgsProduct({{processor, portable, digits_only}, {16, 32}})
    ->ArgNames({"path", "digits"});

void RsaSign_OpenSSL(benchmark::State& state) {
  EVP_PKEY_CTX* context = pss_context(true);
  std::uint8_t signature[256];
  for (auto _ : state) {
    std::size_t length = sizeof signature;
    if (EVP_PKEY_sign(context, signature, &length, digest_to_sign, sha1_digest_length) != 1) {
      state.SkipWithError("signing failed");
    }
  }
  EVP_PKEY_CTX_free(context);
}
BENCHMARK(RsaSign_OpenSSL);

void RsaVerify(benchmark::State& state) {
  const ZEB_RSA_PRIVATE_KEY& key = rsa_keys().ours;
  const PathScope scope(state.range(0));
  Digit signature[rsa_max_modulus_digits];
  std::uint32_t words = 0;
  ZEB_RSA_PSS_SignCRT(&words, signature, &key, sha1_digest_length, digest_to_sign, pss_salt_length);
  for (auto _ : state) {
    if (ZEB_RSA_PSS_Verify(key.nWords, key.n, signature, key.eWords, key.e, sha1_digest_length,
                           digest_to_sign) != 0) {
      state.SkipWithError("verification failed");
    }
  }
}
BENCHMARK(RsaVerify)->Arg(processor)->Arg(portable)->Arg(digits_only);

void RsaVerify_OpenSSL(benchmark::State& state) {
  const ZEB_RSA_PRIVATE_KEY& key = rsa_keys().ours;
  Digit signature[rsa_max_modulus_digits];
  std::uint32_t words = 0;
  ZEB_RSA_PSS_SignCRT(&words, signature, &key, sha1_digest_length, digest_to_sign, pss_salt_length);
  auto* bytes = reinterpret_cast<std::uint8_t*>(signature);
  std::reverse(bytes, bytes + sizeof signature);
  EVP_PKEY_CTX* context = pss_context(false);
  for (auto _ : state) {
    if (EVP_PKEY_verify(context, bytes, sizeof signature, digest_to_sign, sha1_digest_length) !=
        1) {
      state.SkipWithError("verification failed");
    }
  }
  EVP_PKEY_CTX_free(context);
}
BENCHMARK(RsaVerify_OpenSSL);

/// Squaring modulo a prime-like number of range(1) digits: the step that signing is made of.
void ModularSquare(benchmark::State& state) {
  const PathScope scope(state.range(0));
  const auto digits = static_cast<std::uint32_t>(state.range(1));
  const ZEB_RSA_PRIVATE_KEY& key = rsa_keys().ours;
  const Digit* modulus = digits == rsa_max_modulus_digits ? key.n : key.p;
  std::vector<Digit> value(key.d, key.d + digits);
  value[digits - 1] &= ~digit_top_bit;
  for (auto _ : state) {
    zeb_bn_ModMul(value.data(), value.data(), value.data(), modulus, digits);
    benchmark::DoNotOptimize(value.data());
  }
}
BENCHMARK(ModularSquare)
    ->ArgsProduct({{processor, portable, digits_only}, {16, 32, 64}})
    ->ArgNames({"path", "digits"});

/// The parts of a modular squaring on digits: squaring alone and reduction alone.
void Square(benchmark::State& state) {
  const auto digits = static_cast<std::uint32_t>(state.range(0));
  const ZEB_RSA_PRIVATE_KEY& key = rsa_keys().ours;
  Digit product[bn_scratch_digits];
  for (auto _ : state) {
    zeb_bn_Sqr(product, key.d, digits);
    benchmark::DoNotOptimize(product);
  }
}
BENCHMARK(Square)->Arg(32)->Arg(64)->ArgName("digits");

void ClassicalReduction(benchmark::State& state) {
  const ZEB_RSA_PRIVATE_KEY& key = rsa_keys().ours;
  Digit product[bn_scratch_digits];
  Digit work[bn_scratch_digits];
  zeb_bn_Sqr(product, key.dP, key.pWords);
  for (auto _ : state) {
    zeb_bn_copy(work, product, key.nWords);
    zeb_bn_ClassicalRed(work, key.nWords, key.p, key.pWords);
    benchmark::DoNotOptimize(work);
  }
}
BENCHMARK(ClassicalReduction);

}  // namespace

BENCHMARK_MAIN();
