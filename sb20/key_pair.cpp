#include "sb20/key_pair.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "crypto/key_items.h"
#include "crypto/prime.h"
#include "crypto/rsa.h"
#include "sb20/checked_signature.h"
#include "sb20/key_buffers.h"
#include "sb20/key_files.h"
#include "sb20/private_key_file.h"
#include "util/abort.h"
#include "util/file.h"

namespace {

constexpr Digit public_exponent = 3;
constexpr std::uint32_t modulus_bits = 2048;

/// Serialises the key at full width, whatever leading zeros an item has: a shorter list would be no
/// whole number of blocks and so be written unencrypted.
void store_key_items(const ZEB_RSA_PRIVATE_KEY& key) {
  std::fill(std::begin(privateKey), std::end(privateKey), std::uint8_t{0});
  privateKeyLen = 0;
  append_key_item(privateKey, privateKeyLen, key.n, key.nWords);
  append_key_item(privateKey, privateKeyLen, key.e, key.eWords);
  append_key_item(privateKey, privateKeyLen, key.d, key.dWords);
  append_key_item(privateKey, privateKeyLen, key.p, key.pWords);
  append_key_item(privateKey, privateKeyLen, key.q, key.qWords);
  append_key_item(privateKey, privateKeyLen, key.dP, key.dPWords);
  append_key_item(privateKey, privateKeyLen, key.dQ, key.dQWords);
  append_key_item(privateKey, privateKeyLen, key.qInv, key.qInvWords);
}

/// Builds the public key file in `publicKey`, proof of possession included.
Status store_public_key_file() {
  Sb20PublicKeyFile file = {};
  file.publicKeyInfo = sb20_Context.publicKeyInfo;
  file.popSignatureLen = signature_bytes_2048;
  const auto* info = reinterpret_cast<const std::uint8_t*>(&file.publicKeyInfo);
  const Status status =
      sign_message_checked(rsa_mode_crt, privateKey, privateKeyLen, info, info,
                           sizeof file.publicKeyInfo, file.popSignature, file.popSignatureLen);
  std::fill(std::begin(publicKey), std::end(publicKey), std::uint8_t{0});
  std::memcpy(publicKey, &file, sizeof file);
  publicKeyLen = sizeof file;
  return status;
}

}  // namespace

KeyFileName make_key_file_name(const char* base_name, const char* suffix) {
  KeyFileName name = {};
  const std::size_t base_length = std::strlen(base_name);
  const std::size_t suffix_length = std::strlen(suffix);
  if (base_length + suffix_length >= name.size()) abort_on_overflow();
  std::copy_n(base_name, base_length, name.data());
  std::copy_n(suffix, suffix_length, name.data() + base_length);
  return name;
}

Status sb20_Generate_KeyPair(std::int32_t mode, const char* baseName) {
  const bool is_root = mode == root_key_mode;
  // Names first: one that is too long aborts before anything is made.
  const char* base = is_root ? "" : baseName;
  const KeyFileName public_name = make_key_file_name(base, sb20_public_key_suffix);
  const KeyFileName private_name = make_key_file_name(base, sb20_private_key_suffix);

  ZEB_RSA_PRIVATE_KEY key = {};
  key.e[0] = public_exponent;
  key.eWords = 1;
  ZEB_RSA_KeyGen(&key, modulus_bits);

  sb20_eFuseDataLen = sizeof sb20_eFuseData;
  std::fill(std::begin(sb20_eFuseData), std::end(sb20_eFuseData), std::uint8_t{0});
  Status status =
      Generate_SB20_PublicKeyInfo(nullptr, 0, key.n, key.nWords, key.e, key.eWords, sb20_eFuseData,
                                  &sb20_eFuseDataLen, &sb20_Context.publicKeyInfo);
  if (status != ZEB_SUCCESS) return status;
  store_key_items(key);
  status = store_public_key_file();
  if (status != ZEB_SUCCESS) return status;

  const std::uint32_t private_length = privateKeyLen + sb20_key_file_tail;
  // The status is not looked at, on purpose: the length is always whole blocks.
  do_PrivateKey_Encrypt(key_file_mode_v21, privateKey, private_length);
  if (is_root) {
    write_file(sb20_efuse_file, sb20_eFuseData, sizeof sb20_eFuseData);
    write_file(sb20_public_key_info_file, publicKey, static_cast<std::int32_t>(publicKeyLen));
    write_private_file(sb20_private_key_file, privateKey,
                       static_cast<std::int32_t>(private_length));
  } else {
    write_file(public_name.data(), publicKey, static_cast<std::int32_t>(publicKeyLen));
    write_private_file(private_name.data(), privateKey, static_cast<std::int32_t>(private_length));
  }
  return ZEB_SUCCESS;
}
