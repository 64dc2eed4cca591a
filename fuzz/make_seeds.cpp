// make_seeds <folder>: writes a starting corpus for each harness into a folder of its name there.
// The seeds are keys, contexts and signatures that the tool makes, in the order in which the
// harness takes its input apart.

#include <cstdlib>

#include "crypto/prime.h"
#include "crypto/rsa.h"
#include "fuzz/judge.h"
#include "sb10/key_pair.h"
#include "sb10/key_store.h"
#include "sb10/stage1.h"
#include "sb20/key_pair.h"
#include "sb20/key_store.h"
#include "sb20/stage1.h"
#include "scheme/private_key_file.h"
#include "tests/support/files.h"
#include "tests/support/key_list.h"

namespace {

Path corpus;

template <typename... Parts>
void write_seed(const char* harness, const Parts&... parts) {
  static int count = 0;
  std::filesystem::create_directories(corpus / harness);
  Bytes seed;
  (seed.insert(seed.end(), parts.begin(), parts.end()), ...);
  write_bytes(corpus / harness / ("seed" + std::to_string(count++)), seed);
}

template <typename Record>
Bytes bytes_of_record(const Record& record) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(&record);
  return {bytes, bytes + sizeof record};
}

/// Seeds of a key that signs fast, whole and with one of its items a digit wider.
void write_small_key_seeds(std::uint8_t scheme) {
  ZEB_RSA_PRIVATE_KEY key = {};
  key.e[0] = 3;
  key.eWords = 1;
  ZEB_RSA_KeyGen(&key, 512);
  const auto write = [&] {
    const Bytes list = make_key_list(key, scheme != 0);
    write_seed("pss", Bytes{4, 3, scheme, 1, 'm'}, list);
    write_seed("private_key", Bytes{4, scheme, 0, 'm'}, list);
  };
  const auto widen = [&](Digit* number, std::uint32_t& count) {
    number[count++] = digit_top_bit;
    write();
    number[--count] = 0;
  };
  write();
  widen(key.n, key.nWords);
  widen(key.d, key.dWords);
  widen(key.p, key.pWords);
  widen(key.q, key.qWords);
  widen(key.dP, key.dPWords);
  widen(key.qInv, key.qInvWords);
}

/// `scheme` is 1 for version 2.1, else 0, as the harnesses want it.
void write_key_seeds(std::uint8_t scheme, const Bytes& list, const Bytes& public_key) {
  const Bytes message = {'m', 'e', 's', 's', 'a', 'g', 'e'};
  const Bytes digest = sha1(message);
  Bytes signature(scheme != 0 ? 256 : 128);
  std::uint32_t length = 0;
  Generate_PSS_RSASignature(scheme, list.data(), length_of(list), digest.data(), 20,
                            signature.data(), &length);
  const Bytes key_length = {static_cast<std::uint8_t>(public_key.size() / 4)};
  write_seed("pss", Bytes{0, 0, scheme, 20}, digest, key_length, public_key, signature);
  write_seed("pss", Bytes{0, 1, scheme, 7}, message, key_length, public_key, signature);
  std::fill(signature.begin(), signature.end(), std::uint8_t{0});
  signature[signature.size() - 42] = 1;  // a data block of padding, separator and salt
  const std::uint8_t sealed = scheme | 4;
  write_seed("pss", Bytes{7, 1, sealed, 7}, message, key_length, public_key, signature);
  write_seed("pss", Bytes{0, 2, scheme, 20}, digest, list);
  write_seed("private_key", Bytes{0, scheme, 0, 'm'}, list);
  write_small_key_seeds(scheme);
}

void write_scheme_seeds() {
  const WorkingDirectory directory;
  Bytes image(32 + 1024, 0x5A);
  sb20_Generate_KeyPair(root_key_mode, "");
  std::filesystem::copy_file("publicKeyInfo_V21.dat", "publicKeyInfo_V21_stage2.dat");
  sb20_Generate_Stage1(image.data(), 32);
  image.resize(32);
  write_seed("context", Bytes{0, 1}, bytes_of_record(sb20_eFuseData), bytes_of_record(sb20_Context),
             Bytes(4), image);
  const Bytes list_v21(privateKey, privateKey + privateKeyLen);
  write_seed("private_key", Bytes{0, 3, 0, 'm'}, list_v21, Bytes(12));
  write_key_seeds(1, list_v21, bytes_of_record(sb20_Context.publicKeyInfo.key));

  sb10_Generate_KeyPair(root_key_mode, "");
  sb10_Generate_KeyPair(stage2_key_mode, "stage2_key");
  sb10_Generate_Stage1(image.data(), length_of(image));
  write_seed("context", Bytes{0, 0}, bytes_of_record(sb10_eFuseData), bytes_of_record(sb10_Context),
             Bytes(4), image);
  write_key_seeds(0, Bytes(privateKey, privateKey + privateKeyLen),
                  bytes_of_record(sb10_Context.publicKeyInfo.key));
  write_seed("private_key", Bytes{0, 4, 0, 'm'}, bytes_of_record(sb10_pubkey_file));
  Bytes file = read_bytes("stage2_key.prv");
  do_PrivateKey_Decrypt(key_file_mode_v11, file.data(), length_of(file));
  write_seed("private_key", Bytes{0, 2, 0, 'm'}, file);
}

}  // namespace

// NOLINTNEXTLINE(bugprone-exception-escape): what goes wrong ends the program
int main(int argc, char** argv) {
  if (argc != 2) return EXIT_FAILURE;
  corpus = std::filesystem::absolute(argv[1]);
  write_scheme_seeds();
  // Irregular reductions: numbers with the top digits of the modulus.
  const Bytes number = {2, 8, 9, 8, 7, 6, 5, 4, 3, 2, 0x84, 0x83, 0x82};
  for (std::uint8_t operation = 0; operation < 6; ++operation) {
    write_seed("bn", Bytes{0, operation, 31}, number, number, Bytes{32}, number);
  }
  const Bytes cipher_text(128, 0x16);
  for (const std::uint8_t form : Bytes{0, 1, 64, 65, 128}) {
    write_seed("aes_cbc", Bytes{0, form, 3, 32}, Bytes(32), Bytes{16}, Bytes(16), cipher_text);
  }
  return EXIT_SUCCESS;
}
