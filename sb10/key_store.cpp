#include "sb10/key_store.h"

#include <algorithm>

#include "base/wipe.h"
#include "crypto/key_items.h"
#include "sb10/public_key_info.h"
#include "scheme/private_key_file.h"
#include "util/file.h"
#include "util/process.h"

SB10_CONTEXT sb10_Context = {};
std::uint8_t sb10_eFuseData[sb10_efuse_length] = {};
std::uint32_t sb10_eFuseDataLen = 0;
Sb10PublicKeyFile sb10_pubkey_file = {};
Sb10PrivateKeyFile sb10_privkey_file = {};

namespace {

constexpr std::uint32_t public_exponent = 65537;  // of every key of scheme 1.1

// Quirk: n and d alone are used, at their fixed places, although the file holds the CRT items, too;
// stored files in which only those are damaged depend on it.
constexpr std::size_t n_offset = offsetof(Sb10PrivateKeyFile, items);
constexpr std::size_t d_offset = n_offset + offsetof(Sb10PrivateKeyItems, d);

/// Appends the item at `offset` of the private-key record to `privateKey`. False when its length
/// runs past the record; two items that do not, fit the buffer.
bool append_item_of_record(std::size_t offset) {
  static_assert(2 * sizeof sb10_privkey_file <= sizeof privateKey);
  const ByteView rest = view_of(sb10_privkey_file).subspan(offset);
  KeyItemCursor cursor = {rest.data(), length_of(rest)};
  ByteView number;
  if (!read_item_bytes(cursor, number)) return false;
  const std::size_t item_length = rest.size() - cursor.left;
  std::copy_n(rest.begin(), item_length, privateKey + privateKeyLen);
  privateKeyLen += static_cast<std::uint32_t>(item_length);
  return true;
}

}  // namespace

EfuseData load_sb10_efuse_data(const char* path, EfuseLength rule) {
  const EfuseData efuse = load_efuse_data(sb10_eFuseData, path, rule);
  sb10_eFuseDataLen = efuse.length;
  return efuse;
}

SB10_CONTEXT& load_sb10_root_info() {
  sb10_Context = {};
  sealwright::read_record(writable_view_of(sb10_Context.publicKeyInfo), sb10_public_key_info_file);
  return sb10_Context;
}

ByteView load_sb10_stage2_public_key(const char* path) {
  sealwright::read_record(writable_view_of(sb10_pubkey_file), path);
  if (sb10_pubkey_file.n.length > sizeof publicKey) sealwright::abort_run();
  static_assert(2 * sizeof sb10_pubkey_file <= sizeof publicKey);
  publicKeyLen = join_sb10_key(publicKey, sb10_pubkey_file);
  return publicKey;
}

Sb10SigningKey load_sb10_stage2_private_key(const char* path) {
  const WritableBytes record = writable_view_of(sb10_privkey_file);
  const std::int32_t file_length = sealwright::read_record(record, path);
  // What comes after the record is ignored, but no private-key file is longer than the key buffer.
  if (file_length > static_cast<std::int32_t>(sizeof privateKey)) sealwright::abort_run();
  // The status can be dropped: the record is whole blocks.
  do_PrivateKey_Decrypt(key_file_mode_v11, record.data(), length_of(record));

  std::fill_n(privateKey, sizeof privateKey, std::uint8_t{0});
  privateKeyLen = 0;
  if (!append_item_of_record(n_offset) || !append_item_of_record(d_offset)) privateKeyLen = 0;
  Sb10SigningKey key = {{privateKey, privateKeyLen}, {}};
  std::copy_n(privateKey + sizeof(std::uint32_t), sizeof key.public_part.n, key.public_part.n);
  store_le32(key.public_part.e, public_exponent);
  return key;
}

ByteView load_sb10_root_private_key() {
  ByteView items;
  // Quirk: the status is ignored, so that noise is taken for a key; scripts depend on a damaged
  // file failing in signing, with the stage's line.
  load_private_key_file(items, sb10_private_key_file, key_file_mode_v11,
                        sizeof Sb10RootPrivateKeyFile::tail);
  return items;
}

void wipe_sb10_key_store() {
  wipe(&sb10_Context, sizeof sb10_Context);
  wipe(sb10_eFuseData, sizeof sb10_eFuseData);
  wipe(&sb10_pubkey_file, sizeof sb10_pubkey_file);
  wipe(&sb10_privkey_file, sizeof sb10_privkey_file);
}
