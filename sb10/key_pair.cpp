#include "sb10/key_pair.h"

#include <algorithm>
#include <cstring>

#include "base/wipe.h"
#include "crypto/key_items.h"
#include "sb10/key_files.h"
#include "sb10/key_store.h"
#include "scheme/key_pair.h"
#include "scheme/private_key_file.h"
#include "scheme/status.h"
#include "util/file.h"
#include "util/file_set.h"

using sealwright::writable_view_of;

namespace sealwright {

namespace {

Status make_key(ZEB_RSA_PRIVATE_KEY& key) {
  return make_rsa_key(key, sb10_public_exponent, sb10_modulus_bits);
}

/// Where it fails, for want of memory, the record must not be written.
Status encrypt(WritableBytes record) {
  return do_PrivateKey_Encrypt(key_file_mode_sb10, record.data(), length_of(record));
}

Status generate_root_key() {
  ZEB_RSA_PRIVATE_KEY key;
  const WipeOnExit key_guard(key);
  Sb10RootKeyFiles files = {};
  const WipeOnExit files_guard(files);
  Status status = make_key(key);
  if (status == ZEB_SUCCESS) status = make_sb10_root_key_files(files, key);
  if (status == ZEB_SUCCESS) status = encrypt(writable_view_of(files.private_key));
  if (status != ZEB_SUCCESS) return status;
  store_sb10_root_key(files);
  const OutputFile set[] = {
      {sb10_root_public_key_file, view_of(files.public_key), FileAccess::by_umask},
      {sb10_efuse_file, files.efuse_data, FileAccess::by_umask},
      {sb10_root_private_key_file, view_of(files.private_key), FileAccess::owner_only},
  };
  write_file_set(set);
  return ZEB_SUCCESS;
}

Status generate_stage2_pair(const char* base_name) {
  // Names first: one that is too long aborts before anything is made.
  const FileName public_name = join_file_name(base_name, ".spk");
  const FileName private_name = join_file_name(base_name, ".prv");
  ZEB_RSA_PRIVATE_KEY key;
  const WipeOnExit key_guard(key);
  Sb10Stage2KeyFiles files = {};
  const WipeOnExit files_guard(files);
  Status status = make_key(key);
  if (status == ZEB_SUCCESS) status = make_sb10_stage2_key_files(files, key);
  if (status != ZEB_SUCCESS) return status;
  Sb10PrivateKeyItems items = files.private_key.items;
  const WipeOnExit items_guard(items);
  status = encrypt(writable_view_of(files.private_key));
  if (status != ZEB_SUCCESS) return status;
  store_sb10_stage2_pair(files, items);
  const OutputFile set[] = {
      {public_name.data(), view_of(files.public_key), FileAccess::by_umask},
      {private_name.data(), view_of(files.private_key), FileAccess::owner_only},
  };
  write_file_set(set);
  return ZEB_SUCCESS;
}

/// Copies the next item of a list to its slot. False when it does not fit.
bool copy_item(WritableBytes slot, KeyItemCursor& cursor) {
  ByteView number;
  if (!read_item_bytes(cursor, number)) return false;
  if (number.size() > slot.size() - sizeof(std::uint32_t)) return false;
  store_le32(slot.data(), length_of(number));
  std::copy(number.begin(), number.end(), slot.begin() + sizeof(std::uint32_t));
  return true;
}

}  // namespace

}  // namespace sealwright

Status sb10_Generate_KeyPair(std::int32_t mode, const char* baseName) {
  return mode == root_key_mode ? sealwright::generate_root_key()
                               : sealwright::generate_stage2_pair(baseName);
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
    if (!sealwright::copy_item(slot, cursor)) return CIPHER_ERR_SETUP;
  }
  const Status status = sealwright::encrypt(writable_view_of(file));
  if (status == ZEB_SUCCESS) std::memcpy(out, &file, sizeof file);
  return status;
}
