#include "sb10/key_pair.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "crypto/key_items.h"
#include "crypto/prime.h"
#include "crypto/rsa.h"
#include "sb10/key_buffers.h"
#include "sb10/key_files.h"
#include "sb20/checked_signature.h"
#include "sb20/key_buffers.h"
#include "sb20/key_pair.h"
#include "sb20/private_key_file.h"
#include "util/file.h"

namespace {

constexpr Digit public_exponent = 65537;
constexpr std::uint32_t modulus_bits = 1024;

/// "publicKeyInfo.dat": the root public-key info and its proof of possession.
struct Sb10PublicKeyInfoFile {
  Sb10PublicKeyInfo publicKeyInfo;
  std::uint8_t popSignature[128];
};
static_assert(sizeof(Sb10PublicKeyInfoFile) == 280);

/// Serialises the key at full width. The exponent e is not stored.
void store_key_items(const ZEB_RSA_PRIVATE_KEY& key) {
  std::fill(std::begin(privateKey), std::end(privateKey), std::uint8_t{0});
  privateKeyLen = 0;
  append_key_item(privateKey, privateKeyLen, key.n, key.nWords);
  append_key_item(privateKey, privateKeyLen, key.d, key.dWords);
  append_key_item(privateKey, privateKeyLen, key.p, key.pWords);
  append_key_item(privateKey, privateKeyLen, key.q, key.qWords);
  append_key_item(privateKey, privateKeyLen, key.dP, key.dPWords);
  append_key_item(privateKey, privateKeyLen, key.dQ, key.dQWords);
  append_key_item(privateKey, privateKeyLen, key.qInv, key.qInvWords);
}

/// Signs with the new key in `privateKey` and checks the result under its public part.
Status prove_possession(const std::uint8_t* message, std::uint32_t message_length,
                        std::uint8_t* signature) {
  const auto* public_key = reinterpret_cast<const std::uint8_t*>(&sb10_Context.publicKeyInfo.key);
  return sign_message_checked(rsa_mode_plain, privateKey, privateKeyLen, public_key, message,
                              message_length, signature, signature_bytes_1024);
}

Status write_root_set() {
  Sb10PublicKeyInfoFile file = {sb10_Context.publicKeyInfo, {}};
  const Status status = prove_possession(reinterpret_cast<const std::uint8_t*>(&file.publicKeyInfo),
                                         sizeof file.publicKeyInfo, file.popSignature);
  if (status != ZEB_SUCCESS) return status;
  std::memcpy(publicKey, &file, sizeof file);
  publicKeyLen = sizeof file;
  privateKeyLen += sb10_key_file_tail;
  // The status is not looked at, on purpose: the length is always whole blocks.
  do_PrivateKey_Encrypt(key_file_mode_v11, privateKey, privateKeyLen);
  write_file(sb10_public_key_info_file, publicKey, sizeof file);
  write_file(sb10_efuse_file, sb10_eFuseData, sizeof sb10_eFuseData);
  write_private_file(sb10_private_key_file, privateKey, static_cast<std::int32_t>(privateKeyLen));
  return ZEB_SUCCESS;
}

Status write_stage2_pair(const KeyFileName& public_name, const KeyFileName& private_name) {
  constexpr char text[] = "1.0, Pub, RSA-1024";
  const Sb10PublicKey& key = sb10_Context.publicKeyInfo.key;
  Sb10PublicKeyFile& file = sb10_pubkey_file;
  file = {};
  file.header_length = 28;
  std::memcpy(file.text, text, sizeof text);
  file.signed_length = sb10_signed_length;
  file.n_length = sizeof file.n;
  std::memcpy(file.n, key.n, sizeof file.n);
  file.e_length = sizeof file.e;
  std::memcpy(file.e, key.e, sizeof file.e);
  file.signature_length = sizeof file.signature;
  auto* record = reinterpret_cast<std::uint8_t*>(&file);
  const Status status =
      prove_possession(record + sb10_signed_offset, sb10_signed_length, file.signature);
  if (status != ZEB_SUCCESS) return status;
  write_file(public_name.data(), record, sizeof file);

  start_sb10_private_key_file(&sb10_privkey_file);
  std::copy_n(privateKey, sizeof sb10_privkey_file.items, sb10_privkey_file.items);
  auto* private_record = reinterpret_cast<std::uint8_t*>(&sb10_privkey_file);
  do_PrivateKey_Encrypt(key_file_mode_v11, private_record, sizeof sb10_privkey_file);
  write_private_file(private_name.data(), private_record, sizeof sb10_privkey_file);
  return ZEB_SUCCESS;
}

}  // namespace

Status sb10_Generate_KeyPair(std::int32_t mode, const char* baseName) {
  const bool is_root = mode == root_key_mode;
  // Names first: one that is too long aborts before anything is made.
  const char* base = is_root ? "" : baseName;
  const KeyFileName public_name = make_key_file_name(base, sb10_public_key_suffix);
  const KeyFileName private_name = make_key_file_name(base, sb10_private_key_suffix);

  ZEB_RSA_PRIVATE_KEY key = {};
  key.e[0] = public_exponent;
  key.eWords = 1;
  ZEB_RSA_KeyGen(&key, modulus_bits);

  sb10_eFuseDataLen = sizeof sb10_eFuseData;
  std::fill(std::begin(sb10_eFuseData), std::end(sb10_eFuseData), std::uint8_t{0});
  const Status status =
      Generate_SB10_PublicKeyInfo(nullptr, 0, key.n, key.nWords, key.e, key.eWords, sb10_eFuseData,
                                  &sb10_eFuseDataLen, &sb10_Context.publicKeyInfo);
  if (status != ZEB_SUCCESS) return status;
  store_key_items(key);
  return is_root ? write_root_set() : write_stage2_pair(public_name, private_name);
}
