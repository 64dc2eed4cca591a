#include "crypto/rsa.h"

#include <algorithm>
#include <cstring>

#include "base/bytes.h"
#include "base/wipe.h"
#include "crypto/bn_mod.h"
#include "crypto/key_items.h"
#include "crypto/mem.h"
#include "crypto/prng.h"
#include "crypto/sha1.h"

namespace {

constexpr std::uint32_t max_encoded_bytes = digit_bytes * rsa_max_modulus_digits;
constexpr std::uint32_t hash_length = sha1_digest_length;
constexpr std::uint32_t trailer_and_hash = hash_length + 1;
constexpr std::uint32_t encoding_overhead = hash_length + 2;  // separator, hash, trailer
constexpr std::uint32_t prefix_length = 8;                    // zero bytes in front of mHash
constexpr std::uint8_t separator = 0x01;
constexpr std::uint8_t trailer = 0xBC;
constexpr std::uint8_t below_top_bit = 0x7F;

constexpr std::uint32_t digits_1024 = 32;
constexpr std::uint32_t digits_2048 = 64;
// Where the numbers stand in the two forms of a public key.
constexpr std::size_t exponent_at_1024 = offsetof(RsaPublicKey1024, e);
constexpr std::size_t modulus_at_2048 = offsetof(RsaPublicKey2048, n);
constexpr std::size_t exponent_length_at_2048 = offsetof(RsaPublicKey2048, eLen);
constexpr std::size_t exponent_at_2048 = offsetof(RsaPublicKey2048, e);

constexpr Sha1StepCodes verifying_codes = {VERIFY_ERR_SHA1_INIT, VERIFY_ERR_SHA1_UPDATE,
                                           VERIFY_ERR_SHA1_FINAL};

/// H = SHA-1(prefix || mHash || salt), the prefix being the first eight bytes of the encoding.
void hash_encoding(std::uint8_t* h, const std::uint8_t* encoding, const std::uint8_t* mHash,
                   std::uint32_t mHashLen, const std::uint8_t* salt, std::uint32_t salt_length) {
  ZEB_SHA1 hash;
  const WipeOnExit wiped(hash);
  ZEB_SHA1_Init(&hash);
  // Quirk: not eight zeros but the encoding as it stands, which differs when its padding is
  // shorter; rsa_test depends on it.
  ZEB_SHA1_Update(&hash, encoding, prefix_length);
  ZEB_SHA1_Update(&hash, mHash, mHashLen);
  ZEB_SHA1_Update(&hash, salt, salt_length);
  ZEB_SHA1_Final(&hash, h);
}

/// EMSA-PSS encoding (RFC 8017, 9.1.1) as a number of `words` digits. False when it has no room.
bool encode(Digit* encoded, std::uint32_t words, const std::uint8_t* mHash, std::uint32_t mHashLen,
            std::uint32_t salt_length) {
  const std::uint32_t length = digit_bytes * words;
  if (words > rsa_max_modulus_digits || length < encoding_overhead ||
      salt_length > length - encoding_overhead) {
    return false;
  }
  std::uint8_t em[max_encoded_bytes] = {};
  const WipeOnExit wiped(em);
  const std::uint32_t separator_at = length - salt_length - encoding_overhead;
  std::uint8_t* salt = em + separator_at + 1;
  std::uint8_t* h = em + length - trailer_and_hash;
  em[separator_at] = separator;
  em[length - 1] = trailer;
  ZEB_SHA1_PRNG_Rand(salt_length, salt);
  hash_encoding(h, em, mHash, mHashLen, salt, salt_length);
  zeb_PKCS1_MGF1_Sha1(em, length - trailer_and_hash, h, hash_length);
  em[0] &= below_top_bit;
  OS2BN(encoded, em, length);
  return true;
}

bool count_is_usable(std::uint32_t digit_count) {
  return digit_count >= 1 && digit_count <= rsa_max_modulus_digits;
}

/// ZEB_RSA_PSS_Verify over numbers that lie as unaligned bytes in a key or an image.
bool verify_bytes(std::uint32_t nWords, const std::uint8_t* n_bytes, std::uint32_t eWords,
                  const std::uint8_t* e_bytes, const std::uint8_t* signature,
                  std::uint32_t signatureLen, std::uint32_t mHashLen, const std::uint8_t* mHash) {
  if (!count_is_usable(nWords) || !count_is_usable(eWords)) return false;
  Digit n[rsa_max_modulus_digits];
  Digit e[rsa_max_modulus_digits];
  Digit signature_digits[rsa_max_modulus_digits] = {};
  std::memcpy(n, n_bytes, std::size_t{digit_bytes} * nWords);
  std::memcpy(e, e_bytes, std::size_t{digit_bytes} * eWords);
  std::memcpy(signature_digits, signature, signatureLen);
  return ZEB_RSA_PSS_Verify(nWords, n, signature_digits, eWords, e, mHashLen, mHash) == ZEB_SUCCESS;
}

/// Digits of a number whose byte length a key states: signed, divided with truncation.
std::uint32_t stated_digit_count(const std::uint8_t* length_field) {
  const auto bytes = static_cast<std::int32_t>(load_le32(length_field));
  return static_cast<std::uint32_t>(bytes / static_cast<std::int32_t>(digit_bytes));
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
  bn_reduce_exactly(scratch, digits, by.prime, digits / 2);
  zeb_bn_Binary(t, scratch, by.prime, digits / 2, by.exponent, by.exponent_digits);
}

}  // namespace

void zeb_PKCS1_MGF1_Sha1(std::uint8_t* target, std::uint32_t target_length,
                         const std::uint8_t* seed, std::uint32_t seed_length) {
  std::uint32_t counter = 0;
  for (std::uint32_t done = 0; done < target_length; done += hash_length, ++counter) {
    std::uint8_t counter_octets[4];
    std::uint8_t mask[hash_length];
    store_be32(counter_octets, counter);
    ZEB_SHA1 hash;
    ZEB_SHA1_Init(&hash);
    ZEB_SHA1_Update(&hash, seed, seed_length);
    ZEB_SHA1_Update(&hash, counter_octets, sizeof counter_octets);
    ZEB_SHA1_Final(&hash, mask);
    tmkx_memxor(target + done, target + done, mask, std::min(hash_length, target_length - done));
  }
}

Status ZEB_RSA_PSS_Sign(std::uint32_t* sigWords, Digit* signature, std::uint32_t nWords,
                        const Digit* n, const Digit* d, std::uint32_t mHashLen,
                        const std::uint8_t* mHash, std::uint32_t sLen) {
  Digit encoded[rsa_max_modulus_digits];
  const WipeOnExit wiped(encoded);
  if (!encode(encoded, nWords, mHash, mHashLen, sLen)) return ZEB_ERR_FAIL;
  zeb_bn_Binary(signature, encoded, n, nWords, d, nWords);
  *sigWords = nWords;
  return ZEB_SUCCESS;
}

Status ZEB_RSA_PSS_SignCRT(std::uint32_t* sigWords, Digit* signature,
                           const ZEB_RSA_PRIVATE_KEY* key, std::uint32_t mHashLen,
                           const std::uint8_t* mHash, std::uint32_t sLen) {
  Digit encoded[rsa_max_modulus_digits];
  const WipeOnExit wiped(encoded);
  if (!encode(encoded, key->nWords, mHash, mHashLen, sLen)) return ZEB_ERR_FAIL;
  zeb_RSA_CrtDec(signature, encoded, key);
  *sigWords = key->nWords;
  return ZEB_SUCCESS;
}

void zeb_RSA_CrtDec(Digit* result, const Digit* input, const ZEB_RSA_PRIVATE_KEY* key) {
  const std::uint32_t digits = key->nWords;
  const std::uint32_t half = digits / 2;
  CrtNumbers numbers = {};
  const WipeOnExit wiped(numbers);
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
  if (!count_is_usable(nWords) || !count_is_usable(eWords)) return ZEB_ERR_FAIL;
  const std::uint32_t length = digit_bytes * nWords;
  if (length < encoding_overhead || (n[nWords - 1] & digit_top_bit) == 0) return ZEB_ERR_FAIL;

  Digit opened[rsa_max_modulus_digits];
  std::uint8_t em[max_encoded_bytes];
  zeb_bn_Binary(opened, signature, n, nWords, e, eWords);
  BN2OS(em, opened, nWords);
  if (em[length - 1] != trailer) return ZEB_ERR_FAIL;

  const std::uint32_t db_length = length - trailer_and_hash;
  const std::uint8_t* h = em + db_length;
  zeb_PKCS1_MGF1_Sha1(em, db_length, h, hash_length);
  // Quirk: whether the bit was set is ignored, and so is the length of the salt; rsa_test depends
  // on signatures of other makers being taken.
  em[0] &= below_top_bit;
  std::uint32_t separator_at = 0;
  while (separator_at < db_length && em[separator_at] == 0) ++separator_at;
  if (separator_at == db_length || em[separator_at] != separator) return ZEB_ERR_FAIL;

  const std::uint8_t* salt = em + separator_at + 1;
  std::uint8_t expected[hash_length];
  hash_encoding(expected, em, mHash, mHashLen, salt, db_length - separator_at - 1);
  return tmkx_memcmp(expected, h, hash_length) == 0 ? ZEB_SUCCESS : ZEB_ERR_FAIL;
}

Status Generate_PSS_RSASignature(std::int32_t mode, const std::uint8_t* keyItems,
                                 std::uint32_t keyItemsLen, const std::uint8_t* mHash,
                                 std::uint32_t mHashLen, std::uint8_t* signature,
                                 std::uint32_t* signatureLen) {
  ZEB_RSA_PRIVATE_KEY key = {};
  const WipeOnExit wiped(key);
  const bool by_crt = mode == rsa_mode_crt;
  const KeyItemLayout layout = by_crt ? KeyItemLayout::crt : KeyItemLayout::plain;
  if (!read_private_key(keyItems, keyItemsLen, layout, key)) return SIGN_ERR_RSA;

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
  std::uint8_t digest[hash_length];
  const WipeOnExit wiped(digest);
  const Status status = sha1_message(message, messageLen, digest, signing_sha1_codes);
  if (status != ZEB_SUCCESS) return status;
  return Generate_PSS_RSASignature(mode, keyItems, keyItemsLen, digest, hash_length, signature,
                                   signatureLen);
}

Status Verify_PSS_RSASignature(const std::uint8_t* publicKey, std::uint32_t /*publicKeyLen*/,
                               std::uint8_t* mHash, std::uint32_t mHashLen, std::uint8_t* signature,
                               std::uint32_t signatureLen) {
  bool valid = false;
  if (signatureLen == signature_bytes_1024) {
    valid = verify_bytes(digits_1024, publicKey, 1, publicKey + exponent_at_1024, signature,
                         signatureLen, mHashLen, mHash);
  } else if (signatureLen == signature_bytes_2048) {
    // Quirk: the key's own length fields are ignored here but not in Verify_PSS_RSASignature2;
    // rsa_test depends on it.
    valid = verify_bytes(digits_2048, publicKey + modulus_at_2048, 1, publicKey + exponent_at_2048,
                         signature, signatureLen, mHashLen, mHash);
  } else {
    return VERIFY_ERR_SIGNATURE_LENGTH;
  }
  if (valid) return ZEB_SUCCESS;
  // Neither is to be used after a failure.
  std::fill_n(signature, signatureLen, std::uint8_t{0});
  std::fill_n(mHash, mHashLen, std::uint8_t{0});
  return VERIFY_ERR_RSA;
}

Status Verify_PSS_RSASignature2(const std::uint8_t* publicKey, std::uint32_t publicKeyLen,
                                const std::uint8_t* message, std::uint32_t messageLen,
                                std::uint8_t* signature, std::uint32_t signatureLen) {
  std::uint8_t digest[hash_length];
  const WipeOnExit wiped(digest);
  const Status status = sha1_message(message, messageLen, digest, verifying_codes);
  if (status != ZEB_SUCCESS) return status;
  if (signatureLen != signature_bytes_2048) {
    return Verify_PSS_RSASignature(publicKey, publicKeyLen, digest, hash_length, signature,
                                   signatureLen);
  }
  const bool valid =
      verify_bytes(stated_digit_count(publicKey), publicKey + modulus_at_2048,
                   stated_digit_count(publicKey + exponent_length_at_2048),
                   publicKey + exponent_at_2048, signature, signatureLen, hash_length, digest);
  if (valid) return ZEB_SUCCESS;
  std::fill_n(signature, signatureLen, std::uint8_t{0});
  return VERIFY_ERR_RSA;
}
