#include <gtest/gtest.h>
#include <openssl/pem.h>

#include "artefact/hex.h"
#include "artefact/key_encoding.h"
#include "artefact/public_key_import.h"
#include "tests/support/keys.h"

// Public keys that come in from other tools. How the command refuses each kind of other file is in
// refusals.txt; here OpenSSL reads what is taken, whole and damaged.

namespace {

using sealwright::to_hex;

/// The four forms in which OpenSSL writes a key.
std::vector<Bytes> forms_of(RSA* key) {
  using Writer = int (*)(BIO*, const RSA*);
  std::vector<Bytes> forms;
  for (const Writer write : {&PEM_write_bio_RSA_PUBKEY, &PEM_write_bio_RSAPublicKey,
                             &i2d_RSA_PUBKEY_bio, &i2d_RSAPublicKey_bio}) {
    const Owned<BIO> out(BIO_new(BIO_s_mem()));
    require(write(out.get(), key) == 1, "OpenSSL's writer");
    char* text = nullptr;
    const auto length = BIO_get_mem_data(out.get(), &text);
    forms.emplace_back(text, text + length);
  }
  return forms;
}

/// SHA-1 of the SubjectPublicKeyInfo of what OpenSSL reads from DER of either form.
std::string openssl_sha1(const Bytes& der) {
  for (const auto read : {&d2i_RSA_PUBKEY, &d2i_RSAPublicKey}) {
    const std::uint8_t* at = der.data();
    const Owned<RSA> key(read(nullptr, &at, std::ssize(der)));
    if (!key) continue;
    return to_hex(sha1(der_of(key.get())));
  }
  return "";
}

TEST(PublicKeyImport, TakesWhatOpensslWritesAndNothingThatItReadsInAnotherWay) {
  std::mt19937_64 engine(
      static_cast<std::uint64_t>(testing::UnitTest::GetInstance()->random_seed()));
  int taken = 0;
  constexpr auto sb10 = sealwright::Scheme::sb10, sb20 = sealwright::Scheme::sb20;
  for (const auto scheme : {sb10, sb20}) {
    const Key key = test_key(8 * facts_of(scheme).modulus_length);
    const Owned<RSA> rsa = make_rsa(key[0], key[1]);
    const std::vector<Bytes> forms = forms_of(rsa.get());
    for (const Bytes& form : forms) {
      const auto imported = import_public_key(form, scheme);
      ASSERT_TRUE(imported.key) << imported.refusal;
      EXPECT_EQ(key_sha1(*imported.key), openssl_sha1(forms[2]));
      EXPECT_FALSE(import_public_key(form, scheme == sb10 ? sb20 : sb10).key);
      for (int round = 0; round < 2000; ++round) {
        Bytes damaged = form;
        damage(damaged, [&](std::size_t below) { return engine() % below; });
        const auto result = import_public_key(damaged, scheme);
        ASSERT_NE(result.key.has_value(), !result.refusal.empty());
        if (!result.key || &form < &forms[2]) continue;
        ++taken;
        EXPECT_EQ(key_sha1(*result.key), openssl_sha1(damaged));
      }
    }
  }
  EXPECT_GT(taken, 100);  // damage to the modulus alone
}

}  // namespace
