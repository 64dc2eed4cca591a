#include "sb20/key_files.h"

#include <algorithm>

#include "crypto/checked_signature.h"
#include "sb20/public_key_info.h"

namespace sealwright {

Status assemble_sb20_public_key(Sb20PublicKeyFile& file, WritableBytes efuse_data,
                                const KeyNumber& n, const KeyNumber& e) {
  file = {};
  std::uint32_t efuse_length = length_of(efuse_data);
  const Status status =
      Generate_SB20_PublicKeyInfo(nullptr, 0, n.digits, n.digit_count, e.digits, e.digit_count,
                                  efuse_data.data(), &efuse_length, &file.publicKeyInfo);
  file.popSignatureLen = sizeof file.popSignature;
  return status;
}

void digest_sb20_proof(std::uint8_t* digest, const Sb20PublicKeyFile& file) {
  sha1(digest, {view_of(file.publicKeyInfo)});
}

void attach_sb20_proof(Sb20PublicKeyFile& file, ByteView signature) {
  std::copy_n(signature.begin(), sizeof file.popSignature, file.popSignature);
}

void assemble_sb20_private_key(Sb20PrivateKeyFile& file, const ZEB_RSA_PRIVATE_KEY& key) {
  const KeyNumber numbers[] = {
      {key.n, key.nWords}, {key.e, key.eWords},   {key.d, key.dWords},   {key.p, key.pWords},
      {key.q, key.qWords}, {key.dP, key.dPWords}, {key.dQ, key.dQWords}, {key.qInv, key.qInvWords}};
  file = {};
  write_item_list(writable_view_of(file), numbers);
}

ByteView items_of(const Sb20PrivateKeyFile& file) {
  return view_of(file).first(offsetof(Sb20PrivateKeyFile, tail));
}

Status make_sb20_key_files(Sb20KeyFiles& files, const ZEB_RSA_PRIVATE_KEY& key) {
  Sb20PublicKeyFile& file = files.public_key;
  const Status status =
      assemble_sb20_public_key(file, files.efuse_data, {key.n, key.nWords}, {key.e, key.eWords});
  if (status != ZEB_SUCCESS) return status;
  assemble_sb20_private_key(files.private_key, key);
  std::uint8_t digest[sha1_digest_length];
  digest_sb20_proof(digest, file);
  std::uint8_t proof[sizeof file.popSignature];
  const Status signing = sign_digest_checked(proof, {rsa_mode_crt, items_of(files.private_key)},
                                             view_of(file.publicKeyInfo.key).data(), digest);
  if (signing == ZEB_SUCCESS) attach_sb20_proof(file, proof);
  return signing;
}

}  // namespace sealwright
