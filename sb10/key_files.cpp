#include "sb10/key_files.h"

#include <algorithm>
#include <cstring>

#include "base/wipe.h"
#include "crypto/checked_signature.h"
#include "sb10/public_key_info.h"

namespace sealwright {

namespace {

constexpr std::uint32_t header_length = 28;

/// Signs with the new key and checks the result under its public part.
Status prove_possession(WritableBytes proof, const Sb10PrivateKeyItems& items,
                        const RsaPublicKey1024& key, const std::uint8_t* digest) {
  return sign_digest_checked(proof, {rsa_mode_plain, view_of(items)}, view_of(key).data(), digest);
}

}  // namespace

Status assemble_sb10_root_public_key(Sb10RootPublicKeyFile& file, WritableBytes efuse_data,
                                     const KeyNumber& n, const KeyNumber& e) {
  file = {};
  std::uint32_t efuse_length = length_of(efuse_data);
  return Generate_SB10_PublicKeyInfo(nullptr, 0, n.digits, n.digit_count, e.digits, e.digit_count,
                                     efuse_data.data(), &efuse_length, &file.publicKeyInfo);
}

void assemble_sb10_public_key(Sb10PublicKeyFile& file, const RsaPublicKey1024& key) {
  file = {};
  file.header_length = header_length;
  std::memcpy(file.text, sb10_public_key_text, sizeof sb10_public_key_text);
  file.signed_length = sizeof file.n + sizeof file.e;
  file.n.length = sizeof file.n.number;
  std::memcpy(file.n.number, key.n, sizeof key.n);
  file.e.length = sizeof file.e.number;
  std::memcpy(file.e.number, key.e, sizeof key.e);
  file.signature_length = sizeof file.signature;
}

void digest_sb10_root_proof(std::uint8_t* digest, const Sb10RootPublicKeyFile& file) {
  sha1(digest, {view_of(file.publicKeyInfo)});
}

void digest_sb10_proof(std::uint8_t* digest, const Sb10PublicKeyFile& file) {
  const ByteView covered =
      view_of(file).subspan(offsetof(Sb10PublicKeyFile, n), sizeof file.n + sizeof file.e);
  sha1(digest, {covered});
}

void attach_sb10_root_proof(Sb10RootPublicKeyFile& file, ByteView signature) {
  std::copy_n(signature.begin(), sizeof file.popSignature, file.popSignature);
}

void attach_sb10_proof(Sb10PublicKeyFile& file, ByteView signature) {
  std::copy_n(signature.begin(), sizeof file.signature, file.signature);
}

void assemble_sb10_private_items(Sb10PrivateKeyItems& items, const ZEB_RSA_PRIVATE_KEY& key) {
  const KeyNumber numbers[] = {
      {key.n, key.nWords},   {key.d, key.dWords},   {key.p, key.pWords},      {key.q, key.qWords},
      {key.dP, key.dPWords}, {key.dQ, key.dQWords}, {key.qInv, key.qInvWords}};
  write_item_list(writable_view_of(items), numbers);
}

void assemble_sb10_private_key(Sb10PrivateKeyFile& file, const Sb10PrivateKeyItems& items) {
  static_assert(sizeof sb10_private_key_text - 1 == sizeof file.text);
  file = {};
  file.header_length = header_length;
  std::memcpy(file.text, sb10_private_key_text, sizeof file.text);
  file.items_length = sizeof file.items;
  file.items = items;
}

Status make_sb10_root_key_files(Sb10RootKeyFiles& files, const ZEB_RSA_PRIVATE_KEY& key) {
  files = {};
  Sb10RootPublicKeyFile& file = files.public_key;
  Status status = assemble_sb10_root_public_key(file, files.efuse_data, {key.n, key.nWords},
                                                {key.e, key.eWords});
  if (status != ZEB_SUCCESS) return status;
  Sb10PrivateKeyItems& items = files.private_key.items;
  assemble_sb10_private_items(items, key);
  std::uint8_t digest[sha1_digest_length];
  digest_sb10_root_proof(digest, file);
  std::uint8_t proof[sizeof file.popSignature];
  status = prove_possession(proof, items, file.publicKeyInfo.key, digest);
  if (status == ZEB_SUCCESS) attach_sb10_root_proof(file, proof);
  return status;
}

Status make_sb10_stage2_key_files(Sb10Stage2KeyFiles& files, const ZEB_RSA_PRIVATE_KEY& key) {
  files = {};
  // A stage-2 pair gets eFuse data as a root key does, and its public key is taken from the info.
  Sb10RootPublicKeyFile bound;
  Status status = assemble_sb10_root_public_key(bound, files.efuse_data, {key.n, key.nWords},
                                                {key.e, key.eWords});
  if (status != ZEB_SUCCESS) return status;
  files.info = bound.publicKeyInfo;
  Sb10PrivateKeyItems items;
  const WipeOnExit items_guard(items);
  assemble_sb10_private_items(items, key);
  assemble_sb10_private_key(files.private_key, items);
  Sb10PublicKeyFile& file = files.public_key;
  assemble_sb10_public_key(file, files.info.key);
  std::uint8_t digest[sha1_digest_length];
  digest_sb10_proof(digest, file);
  std::uint8_t proof[sizeof file.signature];
  status = prove_possession(proof, items, files.info.key, digest);
  if (status == ZEB_SUCCESS) attach_sb10_proof(file, proof);
  return status;
}

}  // namespace sealwright
