#include "sb10/key_store.h"

#include <algorithm>
#include <tuple>

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

namespace sealwright {

namespace {

constexpr std::size_t n_offset = offsetof(Sb10PrivateKeyFile, items);
constexpr std::size_t d_offset = n_offset + offsetof(Sb10PrivateKeyItems, d);

/// The item that starts a part of a record, with its length; empty when it runs past the part.
ByteView item_at_start(ByteView part) {
  KeyItemCursor cursor = {part.data(), length_of(part)};
  ByteView number;
  if (!read_item_bytes(cursor, number)) return {};
  return part.first(part.size() - cursor.left);
}

/// Puts the n and d items of a private-key record one after the other into `list`, twice as long as
/// the record. @return what they take up; nothing when one of them runs past the record.
ByteView join_signing_items(WritableBytes list, ByteView record) {
  // Quirk: n and d alone are used, at their fixed places, although the file holds the CRT items,
  // too; whoever holds a file with damage in these alone depends on it.
  const ByteView n = item_at_start(record.subspan(n_offset));
  const ByteView d = item_at_start(record.subspan(d_offset));
  if (n.empty() || d.empty()) return list.first(0);
  std::copy(n.begin(), n.end(), list.begin());
  std::copy(d.begin(), d.end(), list.subspan(n.size()).begin());
  return list.first(n.size() + d.size());
}

/// The public key of a list that starts with n, as it lies in a longer buffer.
RsaPublicKey1024 public_part_of(ByteView list_buffer) {
  RsaPublicKey1024 key;
  std::copy_n(list_buffer.begin() + offsetof(Item128, number), sizeof key.n, key.n);
  store_le32(key.e, sb10_public_exponent);
  return key;
}

void store_info_and_efuse(const Sb10PublicKeyInfo& info, ByteView efuse_data) {
  sb10_Context.publicKeyInfo = info;
  sb10_eFuseDataLen = sb10_efuse_length;
  std::copy(efuse_data.begin(), efuse_data.end(), sb10_eFuseData);
}

void store_private_key(ByteView bytes) {
  std::fill_n(privateKey, sizeof privateKey, std::uint8_t{0});
  std::copy(bytes.begin(), bytes.end(), privateKey);
  privateKeyLen = length_of(bytes);
}

}  // namespace

EfuseData load_sb10_efuse_data(const char* path, EfuseLength rule) {
  const EfuseData efuse = load_efuse_data(sb10_eFuseData, path, rule);
  sb10_eFuseDataLen = efuse.length;
  return efuse;
}

SB10_CONTEXT& store_sb10_context(ByteView stored) {
  sb10_Context = {};
  std::copy(stored.begin(), stored.end(), writable_view_of(sb10_Context).begin());
  return sb10_Context;
}

SB10_CONTEXT& load_sb10_root_info() {
  sb10_Context = {};
  read_record(writable_view_of(sb10_Context.publicKeyInfo), sb10_root_public_key_file);
  return sb10_Context;
}

ByteView load_sb10_stage2_public_key(const char* path) {
  read_record(writable_view_of(sb10_pubkey_file), path);
  if (sb10_pubkey_file.n.length > sizeof publicKey) abort_run();
  static_assert(2 * sizeof sb10_pubkey_file <= sizeof publicKey);
  join_sb10_key(publicKey, sb10_pubkey_file);
  publicKeyLen = sb10_pubkey_file.n.length + sb10_pubkey_file.e.length;
  return publicKey;
}

Sb10SigningKey load_sb10_stage2_private_key(const char* path) {
  const WritableBytes record = writable_view_of(sb10_privkey_file);
  const std::int32_t file_length = read_record(record, path);
  // What comes after the record is ignored, but no private-key file is longer than the key buffer.
  if (file_length > static_cast<std::int32_t>(sizeof privateKey)) abort_run();
  // No status but success: the record is whole blocks.
  std::ignore = do_PrivateKey_Decrypt(key_file_mode_sb10, record.data(), length_of(record));

  static_assert(2 * sizeof sb10_privkey_file <= sizeof privateKey);
  std::fill_n(privateKey, sizeof privateKey, std::uint8_t{0});
  const ByteView items = join_signing_items(privateKey, record);
  privateKeyLen = length_of(items);
  return {items, public_part_of(privateKey)};
}

ByteView load_sb10_root_private_key() {
  ByteView items;
  // Quirk: the status is ignored, so that noise is taken for a key; scripts depend on a damaged
  // file failing in signing, with the stage's line.
  std::ignore = load_private_key_file(items, sb10_root_private_key_file, key_file_mode_sb10,
                                      sizeof Sb10RootPrivateKeyFile::tail);
  privateKeyLen = length_of(items);
  return items;
}

void store_sb10_root_key(const Sb10RootKeyFiles& files) {
  store_info_and_efuse(files.public_key.publicKeyInfo, files.efuse_data);
  const ByteView public_file = view_of(files.public_key);
  std::copy(public_file.begin(), public_file.end(), publicKey);
  publicKeyLen = length_of(public_file);
  store_private_key(view_of(files.private_key));
}

void store_sb10_stage2_pair(const Sb10Stage2KeyFiles& files, const Sb10PrivateKeyItems& items) {
  store_info_and_efuse(files.info, files.efuse_data);
  sb10_pubkey_file = files.public_key;
  sb10_privkey_file = files.private_key;
  store_private_key(view_of(items));
}

void wipe_sb10_key_store() {
  wipe(&sb10_Context, sizeof sb10_Context);
  wipe(sb10_eFuseData, sizeof sb10_eFuseData);
  wipe(&sb10_pubkey_file, sizeof sb10_pubkey_file);
  wipe(&sb10_privkey_file, sizeof sb10_privkey_file);
}

}  // namespace sealwright
