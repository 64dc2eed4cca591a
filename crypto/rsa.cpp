#include "crypto/rsa.h"

#include <algorithm>
#include <cstring>

#include "base/bytes.h"
#include "base/wipe.h"
#include "crypto/bn_mod.h"
#include "crypto/key_items.h"
#include "crypto/sha1.h"

using sealwright::length_of;
using sealwright::load_le32;
using sealwright::wipe_dead_stack;

namespace {

constexpr std::uint32_t digits_1024 = 32;
constexpr std::uint32_t digits_2048 = 64;
// Where the numbers stand in the two forms of a public key.
constexpr std::size_t exponent_at_1024 = offsetof(RsaPublicKey1024, e);
constexpr std::size_t modulus_at_2048 = offsetof(RsaPublicKey2048, n);
constexpr std::size_t exponent_length_at_2048 = offsetof(RsaPublicKey2048, eLen);
constexpr std::size_t exponent_at_2048 = offsetof(RsaPublicKey2048, e);

constexpr sealwright::Sha1StepCodes verifying_codes = {VERIFY_ERR_SHA1_INIT, VERIFY_ERR_SHA1_UPDATE,
                                                       VERIFY_ERR_SHA1_FINAL};

/// A null digest counts as none.
ByteView view_of_given(const std::uint8_t* bytes, std::uint32_t length) {
  return {bytes, bytes == nullptr ? 0 : length};
}

/// A fresh encoding as a number of `words` digits. False when it has no room.
bool encode(Digit* encoded, std::uint32_t words, ByteView digest, std::uint32_t salt_length) {
  if (words > rsa_max_modulus_digits) return false;
  std::uint8_t block[pss_max_block_bytes];
  const WipeOnExit block_guard(block);
  const WritableBytes view = WritableBytes(block).first(std::size_t{digit_bytes} * words);
  if (!sealwright::emsa_pss_encode_afresh(view, digest, salt_length)) return false;
  OS2BN(encoded, block, length_of(view));
  return true;
}

bool count_is_usable(std::uint32_t digit_count) {
  return digit_count >= 1 && digit_count <= rsa_max_modulus_digits;
}

/// A public key whose numbers lie as bytes, with digit counts that may be anything.
struct StoredPublicKey {
  const std::uint8_t* n;
  std::uint32_t n_digits;
  const std::uint8_t* e;
  std::uint32_t e_digits;
};

/// Verifies the first digits of `signature`, as many as the modulus has; they are there.
bool is_signed(const std::uint8_t* signature, const StoredPublicKey& key, ByteView digest) {
  if (!count_is_usable(key.n_digits) || !count_is_usable(key.e_digits)) return false;
  const std::size_t length = std::size_t{digit_bytes} * key.n_digits;
  std::uint8_t block[pss_max_block_bytes];
  const WritableBytes view = WritableBytes(block).first(length);
  return sealwright::rsa_public_operation(
             view, {signature, length},
             {{key.n, length}, {key.e, std::size_t{digit_bytes} * key.e_digits}}) &&
         sealwright::emsa_pss_matches(view, digest);
}

/// Digits of a number whose byte length a key states: signed, divided with truncation.
std::uint32_t stated_digit_count(const std::uint8_t* length_field) {
  const auto bytes = static_cast<std::int32_t>(load_le32(length_field));
  return static_cast<std::uint32_t>(bytes / static_cast<std::int32_t>(digit_bytes));
}

/// Neither signature nor digest is to be used after a failure.
Status verify_or_wipe(WritableBytes signature, const StoredPublicKey& key, WritableBytes digest) {
  if (is_signed(signature.data(), key, digest)) return ZEB_SUCCESS;
  std::ranges::fill(signature, std::uint8_t{0});
  std::ranges::fill(digest, std::uint8_t{0});
  return VERIFY_ERR_RSA;
}

/// What the private operation by the Chinese remainder theorem computes with.
struct CrtNumbers {
  Digit reduced[rsa_number_capacity];
  Digit m1[rsa_crt_capacity];
  Digit m2[rsa_crt_capacity];
  Digit product[rsa_number_capacity];
};

/// One prime of a key with its private exponent.
struct CrtPrime {
  const Digit* prime;
  const Digit* exponent;
  std::uint32_t exponent_digits;
};

/// t = value mod prime, raised to the prime's private exponent; the prime has half the digits.
void crt_half(Digit* t, Digit* scratch, const Digit* value, std::uint32_t digits,
              const CrtPrime& by) {
  zeb_bn_copy(scratch, value, digits);
  sealwright::bn_reduce_exactly(scratch, digits, by.prime, digits / 2);
  zeb_bn_Binary(t, scratch, by.prime, digits / 2, by.exponent, by.exponent_digits);
}

}  // namespace

Status ZEB_RSA_PSS_Sign(std::uint32_t* sigWords, Digit* signature, std::uint32_t nWords,
                        const Digit* n, const Digit* d, std::uint32_t mHashLen,
                        const std::uint8_t* mHash, std::uint32_t sLen) {
  Digit encoded[rsa_max_modulus_digits];
  const WipeOnExit encoded_guard(encoded);
  if (!encode(encoded, nWords, view_of_given(mHash, mHashLen), sLen)) return ZEB_ERR_FAIL;
  zeb_bn_Binary(signature, encoded, n, nWords, d, nWords);
  *sigWords = nWords;
  return ZEB_SUCCESS;
}

Status ZEB_RSA_PSS_SignCRT(std::uint32_t* sigWords, Digit* signature,
                           const ZEB_RSA_PRIVATE_KEY* key, std::uint32_t mHashLen,
                           const std::uint8_t* mHash, std::uint32_t sLen) {
  Digit encoded[rsa_max_modulus_digits];
  const WipeOnExit encoded_guard(encoded);
  if (!encode(encoded, key->nWords, view_of_given(mHash, mHashLen), sLen)) return ZEB_ERR_FAIL;
  zeb_RSA_CrtDec(signature, encoded, key);
  *sigWords = key->nWords;
  return ZEB_SUCCESS;
}

void zeb_RSA_CrtDec(Digit* result, const Digit* input, const ZEB_RSA_PRIVATE_KEY* key) {
  const std::uint32_t digits = key->nWords;
  const std::uint32_t half = digits / 2;
  CrtNumbers numbers = {};
  const WipeOnExit numbers_guard(numbers);
  Digit* m1 = numbers.m1;
  Digit* m2 = numbers.m2;
  crt_half(m1, numbers.reduced, input, digits, {key->p, key->dP, key->dPWords});
  crt_half(m2, numbers.reduced, input, digits, {key->q, key->dQ, key->dQWords});
  // m = m2 + q ((m1 - m2) qInv mod p)
  if (zeb_bn_Sub(m1, m1, half, m2, half) != 0) zeb_bn_Add(m1, m1, half, key->p, half);
  zeb_bn_ModMul(m1, m1, key->qInv, key->p, half);
  zeb_bn_Mul(numbers.product, m1, half, key->q, half);
  zeb_bn_Add(numbers.product, numbers.product, digits, m2, half);
  zeb_bn_copy(result, numbers.product, digits);
}

Status ZEB_RSA_PSS_Verify(std::uint32_t nWords, const Digit* n, const Digit* signature,
                          std::uint32_t eWords, const Digit* e, std::uint32_t mHashLen,
                          const std::uint8_t* mHash) {
  const StoredPublicKey key = {reinterpret_cast<const std::uint8_t*>(n), nWords,
                               reinterpret_cast<const std::uint8_t*>(e), eWords};
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(signature);
  return is_signed(bytes, key, view_of_given(mHash, mHashLen)) ? ZEB_SUCCESS : ZEB_ERR_FAIL;
}

Status Generate_PSS_RSASignature(std::int32_t mode, const std::uint8_t* keyItems,
                                 std::uint32_t keyItemsLen, const std::uint8_t* mHash,
                                 std::uint32_t mHashLen, std::uint8_t* signature,
                                 std::uint32_t* signatureLen) {
  ZEB_RSA_PRIVATE_KEY key = {};
  const WipeOnExit key_guard(key);
  const bool by_crt = mode == rsa_mode_crt;
  const KeyItemLayout layout = by_crt ? KeyItemLayout::crt : KeyItemLayout::plain;
  if (!sealwright::read_private_key(keyItems, keyItemsLen, layout, key)) return SIGN_ERR_RSA;

  Digit digits[rsa_max_modulus_digits];
  std::uint32_t words = 0;
  const Status status =
      by_crt ? ZEB_RSA_PSS_SignCRT(&words, digits, &key, mHashLen, mHash, pss_salt_length)
             : ZEB_RSA_PSS_Sign(&words, digits, key.nWords, key.n, key.d, mHashLen, mHash,
                                pss_salt_length);
  wipe_dead_stack();
  if (status != ZEB_SUCCESS) return SIGN_ERR_RSA;
  std::memcpy(signature, digits, std::size_t{digit_bytes} * words);
  *signatureLen = digit_bytes * words;
  return ZEB_SUCCESS;
}

Status Generate_PSS_RSASignature2(std::int32_t mode, const std::uint8_t* keyItems,
                                  std::uint32_t keyItemsLen, const std::uint8_t* message,
                                  std::uint32_t messageLen, std::uint8_t* signature,
                                  std::uint32_t* signatureLen) {
  std::uint8_t digest[sha1_digest_length];
  const WipeOnExit digest_guard(digest);
  const Status status = sealwright::sha1_message(message, messageLen, digest, signing_sha1_codes);
  if (status != ZEB_SUCCESS) return status;
  return Generate_PSS_RSASignature(mode, keyItems, keyItemsLen, digest, sha1_digest_length,
                                   signature, signatureLen);
}

Status Verify_PSS_RSASignature(const std::uint8_t* publicKey, std::uint32_t /*publicKeyLen*/,
                               std::uint8_t* mHash, std::uint32_t mHashLen, std::uint8_t* signature,
                               std::uint32_t signatureLen) {
  StoredPublicKey key = {};
  if (signatureLen == signature_bytes_1024) {
    key = {publicKey, digits_1024, publicKey + exponent_at_1024, 1};
  } else if (signatureLen == signature_bytes_2048) {
    // Quirk: the key's own length fields are ignored here but not in Verify_PSS_RSASignature2;
    // boot contexts in the field whose keys were stored without them depend on it.
    key = {publicKey + modulus_at_2048, digits_2048, publicKey + exponent_at_2048, 1};
  } else {
    return VERIFY_ERR_SIGNATURE_LENGTH;
  }
  return verify_or_wipe({signature, signatureLen}, key, {mHash, mHashLen});
}

Status Verify_PSS_RSASignature2(const std::uint8_t* publicKey, std::uint32_t /*publicKeyLen*/,
                                const std::uint8_t* message, std::uint32_t messageLen,
                                std::uint8_t* signature, std::uint32_t signatureLen) {
  std::uint8_t digest[sha1_digest_length];
  const WipeOnExit digest_guard(digest);
  const Status status = sealwright::sha1_message(message, messageLen, digest, verifying_codes);
  if (status != ZEB_SUCCESS) return status;
  return sealwright::verify_by_stated_counts({signature, signatureLen}, publicKey, digest);
}

Status sealwright::verify_by_stated_counts(WritableBytes signature, const std::uint8_t* public_key,
                                           Sha1Digest digest) {
  if (signature.size() != signature_bytes_2048) {
    return Verify_PSS_RSASignature(public_key, 0, digest.data(), sha1_digest_length,
                                   signature.data(), length_of(signature));
  }
  const StoredPublicKey key = {public_key + modulus_at_2048, stated_digit_count(public_key),
                               public_key + exponent_at_2048,
                               stated_digit_count(public_key + exponent_length_at_2048)};
  return verify_or_wipe(signature, key, digest);
}
