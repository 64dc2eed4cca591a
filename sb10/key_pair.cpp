#include "sb10/key_pair.h"

#include <algorithm>
#include <cstring>

#include "base/wipe.h"
#include "crypto/checked_signature.h"
#include "crypto/key_items.h"
#include "sb10/key_store.h"
#include "sb10/public_key_info.h"
#include "scheme/key_pair.h"
#include "scheme/private_key_file.h"
#include "scheme/status.h"
#include "util/file.h"

namespace {

constexpr Digit public_exponent = 65537;
constexpr std::uint32_t modulus_bits = 1024;
constexpr std::uint32_t header_length = 28;

/// A new key as its files hold it.
struct NewKey {
  std::uint8_t efuse_data[sb10_efuse_length];
  Sb10PublicKeyInfo info;
  Sb10PrivateKeyItems items;
};

Status make_key(NewKey& made) {
  ZEB_RSA_PRIVATE_KEY key;
  const WipeOnExit key_guard(key);
  make_rsa_key(key, public_exponent, modulus_bits);
  const KeyNumber numbers[] = {
      {key.n, key.nWords},   {key.d, key.dWords},   {key.p, key.pWords},      {key.q, key.qWords},
      {key.dP, key.dPWords}, {key.dQ, key.dQWords}, {key.qInv, key.qInvWords}};
  write_item_list(writable_view_of(made.items), numbers);
  std::uint32_t efuse_length = sizeof made.efuse_data;
  return Generate_SB10_PublicKeyInfo(nullptr, 0, key.n, key.nWords, key.e, key.eWords,
                                     made.efuse_data, &efuse_length, &made.info);
}

/// Signs with the new key and checks the result under its public part.
Status prove_possession(WritableBytes signature, const NewKey& key, ByteView message) {
  return sign_message_checked(signature, {rsa_mode_plain, view_of(key.items)},
                              view_of(key.info.key).data(), message);
}

/// Where it fails, for want of memory, the record must not be written.
Status encrypt(WritableBytes record) {
  return do_PrivateKey_Encrypt(key_file_mode_v11, record.data(), length_of(record));
}

Status write_root_set(const NewKey& key) {
  Sb10PublicKeyInfoFile public_file = {key.info, {}};
  Status status = prove_possession(public_file.popSignature, key, view_of(key.info));
  if (status != ZEB_SUCCESS) return status;
  Sb10RootPrivateKeyFile private_file = {key.items, {}};
  const WipeOnExit private_guard(private_file);
  status = encrypt(writable_view_of(private_file));
  if (status != ZEB_SUCCESS) return status;
  const OutputFile set[] = {
      {sb10_public_key_info_file, view_of(public_file), FileAccess::by_umask},
      {sb10_efuse_file, key.efuse_data, FileAccess::by_umask},
      {sb10_private_key_file, view_of(private_file), FileAccess::owner_only},
  };
  write_file_set(set);
  return ZEB_SUCCESS;
}

void start_private_file(Sb10PrivateKeyFile& file) {
  static_assert(sizeof sb10_private_key_text - 1 == sizeof file.text);
  file = {};
  file.header_length = header_length;
  std::memcpy(file.text, sb10_private_key_text, sizeof file.text);
  file.items_length = sizeof file.items;
}

void fill_public_file(Sb10PublicKeyFile& file, const RsaPublicKey1024& key) {
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

Status write_stage2_pair(const NewKey& key, const FileName& public_name,
                         const FileName& private_name) {
  Sb10PublicKeyFile public_file;
  fill_public_file(public_file, key.info.key);
  const ByteView message =
      view_of(public_file).subspan(offsetof(Sb10PublicKeyFile, n), public_file.signed_length);
  Status status = prove_possession(public_file.signature, key, message);
  if (status != ZEB_SUCCESS) return status;
  Sb10PrivateKeyFile private_file;
  const WipeOnExit private_guard(private_file);
  start_private_file(private_file);
  private_file.items = key.items;
  status = encrypt(writable_view_of(private_file));
  if (status != ZEB_SUCCESS) return status;
  const OutputFile set[] = {
      {public_name.data(), view_of(public_file), FileAccess::by_umask},
      {private_name.data(), view_of(private_file), FileAccess::owner_only},
  };
  write_file_set(set);
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
  const FileName public_name = join_file_name(base, ".spk");
  const FileName private_name = join_file_name(base, ".prv");

  NewKey key = {};
  const WipeOnExit key_guard(key);
  const Status status = make_key(key);
  if (status != ZEB_SUCCESS) return status;
  return is_root ? write_root_set(key) : write_stage2_pair(key, public_name, private_name);
}

Status convert_To_OldPrivateKey(const std::uint8_t* keyRecord, std::uint32_t /*keyRecordLen*/,
                                std::uint8_t* out) {
  Sb10PrivateKeyFile file;
  const WipeOnExit file_guard(file);
  start_private_file(file);
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
