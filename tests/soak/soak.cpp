// soak [--count N] [--portable]: signs N messages (100,000 unless told otherwise) with a 2048-bit
// key by CRT and as many with a 1024-bit key in plain form, all in one process through the wrappers
// of the library, and has OpenSSL verify each signature. Before that it forces reductions whose
// trial digit is cut, which chance brings only once in some tens of thousands of signatures.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>

#include "crypto/bn_mod.h"
#include "crypto/cpu.h"
#include "crypto/rsa.h"
#include "tests/support/key_list.h"
#include "tests/support/rsa_keys.h"
#include "tests/support/test_bytes.h"

namespace {

Number random_number(std::mt19937_64& engine, std::size_t width) {
  Number number(width);
  for (Digit& digit : number) digit = static_cast<Digit>(engine());
  number.back() |= digit_top_bit;
  return number;
}

/// Products of (m - 1) and a power of the radix: every step below has the top digit of m.
/// @return how many came out irregular; all products were right.
int force_irregular_reductions(int count) {
  std::mt19937_64 engine(1);
  int irregular = 0;
  for (int i = 0; i < count; ++i) {
    const std::size_t width = i % 2 == 0 ? 32 : 64;
    const Number m = random_number(engine, width);
    const Number a = (Big(m) - 1).digits(width);
    Number b(width);
    b[1 + engine() % (width - 1)] = 1 + static_cast<Digit>(engine() % 2);
    const Big product = Big(a) * b;
    Number reduced = product.digits(2 * width);
    const auto digits = static_cast<std::uint32_t>(width);
    zeb_bn_ClassicalRed(reduced.data(), 2 * digits, m.data(), digits);
    if (bn_significant_digits(reduced.data(), 2 * digits) > digits) ++irregular;
    Number r(width);
    zeb_bn_ModMul(r.data(), a.data(), b.data(), m.data(), digits);
    require(Big(r) == product % m, "a product by way of an irregular reduction is wrong");
  }
  return irregular;
}

/// @return how many of `count` signatures OpenSSL refuses.
int sign(std::uint32_t bits, std::int32_t mode, int count) {
  const ZEB_RSA_PRIVATE_KEY key = read_key_record(bits);
  const EvpKey openssl_key = make_evp_key(key);
  const Bytes list = make_key_list(key, mode == rsa_mode_crt);
  std::mt19937_64 engine(bits);
  int refused = 0;
  for (int i = 0; i < count; ++i) {
    const Bytes message = random_bytes(engine, engine() % 300);
    Bytes signature(bits / 8);
    std::uint32_t length = 0;
    const Status status =
        Generate_PSS_RSASignature2(mode, list.data(), length_of(list), message.data(),
                                   length_of(message), signature.data(), &length);
    std::reverse(signature.begin(), signature.end());  // OpenSSL's are big-endian
    const bool good =
        status == ZEB_SUCCESS && length == signature.size() &&
        openssl_pss_verify(openssl_key.get(), sha1(message), signature, pss_salt_length);
    if (!good) ++refused;
  }
  return refused;
}

bool report(const char* what, std::uint32_t bits, std::int32_t mode, int count) {
  const auto start = std::chrono::steady_clock::now();
  const int refused = sign(bits, mode, count);
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  std::printf("%s: %d signatures, %d refused, %.1f s\n", what, count, refused, taken.count());
  return refused == 0;
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): what goes wrong ends the program
int main(int argc, char** argv) {
  int count = 100000;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--portable") == 0) {
      force_crypto_paths({});
    } else if (std::strcmp(argv[i], "--count") == 0 && i + 1 < argc) {
      count = std::atoi(argv[++i]);
    } else {
      std::fprintf(stderr, "usage: soak [--count N] [--portable]\n");
      return EXIT_FAILURE;
    }
  }
  const int irregular = force_irregular_reductions(1000);
  std::printf("forced reductions: %d of 1000 irregular, all products right\n", irregular);
  const bool wide_is_good = report("2048 bits, CRT", 2048, rsa_mode_crt, count);
  const bool narrow_is_good = report("1024 bits, plain", 1024, rsa_mode_plain, count);
  return irregular > 0 && wide_is_good && narrow_is_good ? EXIT_SUCCESS : EXIT_FAILURE;
}
