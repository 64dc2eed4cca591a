#include "sb10/key_pair.h"

#include <algorithm>
#include <cstring>

#include "base/wipe.h"
#include "crypto/checked_signature.h"
#include "crypto/key_items.h"
#include "sb10/key_files.h"
#include "sb10/key_store.h"
#include "scheme/key_pair.h"
#include "scheme/private_key_file.h"
#include "scheme/status.h"
#include "util/file.h"
#include "util/file_set.h"

namespace {

/// A new key: its numbers, and its public part bound to eFuse data, which a stage-2 pair leaves
/// unused.
Status make_key(Sb10PrivateKeyItems& items, Sb10PublicKeyInfoFile& info_file,
                WritableBytes efuse_data) {
  ZEB_RSA_PRIVATE_KEY key;
  const WipeOnExit key_guard(key);
  const Status status =
      make_rsa_key(key, sealwright::sb10_public_exponent, sealwright::sb10_modulus_bits);
  if (status != ZEB_SUCCESS) return status;
  sealwright::assemble_sb10_private_items(items, key);
  return sealwright::assemble_sb10_root_public_key(info_file, efuse_data, {key.n, key.nWords},
                                                   {key.e, key.eWords});
}

/// Signs with the new key and checks the result under its public part.
Status prove_possession(WritableBytes proof, const Sb10PrivateKeyItems& items,
                        const RsaPublicKey1024& key, const std::uint8_t* digest) {
  return sign_digest_checked(proof, {rsa_mode_plain, view_of(items)}, view_of(key).data(), digest);
}

/// Where it fails, for want of memory, the record must not be written.
Status encrypt(WritableBytes record) {
  return do_PrivateKey_Encrypt(key_file_mode_v11, record.data(), length_of(record));
}

Status write_root_set(Sb10PublicKeyInfoFile& public_file, ByteView efuse_data,
                      const Sb10PrivateKeyItems& items) {
  std::uint8_t digest[sha1_digest_length];
  sealwright::digest_sb10_root_proof(digest, public_file);
  std::uint8_t proof[signature_bytes_1024];
  Status status = prove_possession(proof, items, public_file.publicKeyInfo.key, digest);
  if (status != ZEB_SUCCESS) return status;
  sealwright::attach_sb10_root_proof(public_file, proof);
  Sb10RootPrivateKeyFile private_file = {items, {}};
  const WipeOnExit private_guard(private_file);
  status = encrypt(writable_view_of(private_file));
  if (status != ZEB_SUCCESS) return status;
  const sealwright::OutputFile set[] = {
      {sb10_public_key_info_file, view_of(public_file), sealwright::FileAccess::by_umask},
      {sb10_efuse_file, efuse_data, sealwright::FileAccess::by_umask},
      {sb10_private_key_file, view_of(private_file), sealwright::FileAccess::owner_only},
  };
  sealwright::write_file_set(set);
  return ZEB_SUCCESS;
}

Status write_stage2_pair(const RsaPublicKey1024& key, const Sb10PrivateKeyItems& items,
                         const sealwright::FileName& public_name,
                         const sealwright::FileName& private_name) {
  Sb10PublicKeyFile public_file;
  sealwright::assemble_sb10_public_key(public_file, key);
  std::uint8_t digest[sha1_digest_length];
  sealwright::digest_sb10_proof(digest, public_file);
  std::uint8_t proof[signature_bytes_1024];
  Status status = prove_possession(proof, items, key, digest);
  if (status != ZEB_SUCCESS) return status;
  sealwright::attach_sb10_proof(public_file, proof);
  Sb10PrivateKeyFile private_file;
  const WipeOnExit private_guard(private_file);
  sealwright::assemble_sb10_private_key(private_file, items);
  status = encrypt(writable_view_of(private_file));
  if (status != ZEB_SUCCESS) return status;
  const sealwright::OutputFile set[] = {
      {public_name.data(), view_of(public_file), sealwright::FileAccess::by_umask},
      {private_name.data(), view_of(private_file), sealwright::FileAccess::owner_only},
  };
  sealwright::write_file_set(set);
  return ZEB_SUCCESS;
}

/// Moves the next item of a list to its slot. False when it does not fit.
bool take_item(WritableBytes slot, KeyItemCursor& cursor) {
  ByteView number;
  if (!read_item_bytes(cursor, number)) return false;
  if (number.size() > slot.size() - sizeof(std::uint32_t)) return false;
  store_le32(slot.data(), length_of(number));
  std::copy(number.begin(), number.end(), slot.begin() + sizeof(std::uint32_t));
  return true;
}

}  // namespace

Status sb10_Generate_KeyPair(std::int32_t mode, const char* baseName) {
  const bool is_root = mode == root_key_mode;
  // Names first: one that is too long aborts before anything is made.
  const char* base = is_root ? "" : baseName;
  const sealwright::FileName public_name = sealwright::join_file_name(base, ".spk");
  const sealwright::FileName private_name = sealwright::join_file_name(base, ".prv");

  Sb10PrivateKeyItems items = {};
  const WipeOnExit items_guard(items);
  Sb10PublicKeyInfoFile info_file;
  std::uint8_t efuse_data[sb10_efuse_length] = {};
  const WipeOnExit efuse_guard(efuse_data);
  const Status status = make_key(items, info_file, efuse_data);
  if (status != ZEB_SUCCESS) return status;
  return is_root ? write_root_set(info_file, efuse_data, items)
                 : write_stage2_pair(info_file.publicKeyInfo.key, items, public_name, private_name);
}

Status convert_To_OldPrivateKey(const std::uint8_t* keyRecord, std::uint32_t /*keyRecordLen*/,
                                std::uint8_t* out) {
  Sb10PrivateKeyFile file;
  const WipeOnExit file_guard(file);
  sealwright::assemble_sb10_private_key(file, {});
  Sb10PrivateKeyItems& items = file.items;
  const WritableBytes slots[] = {writable_view_of(items.n),   writable_view_of(items.d),
                                 writable_view_of(items.p),   writable_view_of(items.q),
                                 writable_view_of(items.dP),  writable_view_of(items.dQ),
                                 writable_view_of(items.qInv)};
  // The record's length is not known; the slots bound how far it is read.
  KeyItemCursor cursor = {keyRecord, sizeof items};
  for (const WritableBytes slot : slots) {
    if (!take_item(slot, cursor)) return CIPHER_ERR_SETUP;
  }
  const Status status = encrypt(writable_view_of(file));
  if (status == ZEB_SUCCESS) std::memcpy(out, &file, sizeof file);
  return status;
}
