#include "scheme/private_key_file.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include "artefact/key_files.h"
#include "base/wipe.h"
#include "crypto/rsa_key_check.h"
#include "sb10/records.h"
#include "sb20/records.h"

namespace {

constexpr Digit sb10_exponent = 65537;  // not stored; every key of scheme 1.1 has it

/// Takes a number out of its slot. False when another length is stated than the slot's.
template <std::size_t Capacity>
bool take(Digit* digits, std::uint32_t& digit_count, const KeyItem<Capacity>& item) {
  std::memcpy(digits, item.number, Capacity);
  digit_count = Capacity / digit_bytes;
  return item.length == Capacity;
}

bool take_exponent(ZEB_RSA_PRIVATE_KEY& key, const Sb20PrivateKeyFile& items) {
  return take(key.e, key.eWords, items.e);
}
bool take_exponent(ZEB_RSA_PRIVATE_KEY& key, const Sb10PrivateKeyItems& /*items*/) {
  key.e[0] = sb10_exponent;
  key.eWords = 1;
  return true;
}

PublicKey take_public_part(const Sb20PrivateKeyFile& items) {
  RsaPublicKey2048 stored;  // as the items start
  std::memcpy(&stored, &items, sizeof stored);
  return to_public_key(stored);
}
PublicKey take_public_part(const Sb10PrivateKeyItems& items) {
  RsaPublicKey1024 stored;
  std::memcpy(stored.n, items.n.number, sizeof stored.n);
  store_le32(stored.e, sb10_exponent);
  return to_public_key(stored);
}

/// The key in a decrypted file, unless its modulus already does not have its length. `layout` is
/// what its scheme signs with.
template <typename Items>
std::optional<KeyFile> read_items(const Items& items, KeyItemLayout layout, const char* scheme) {
  ZEB_RSA_PRIVATE_KEY key = {};
  const WipeOnExit key_guard(key);
  if (!take(key.n, key.nWords, items.n)) return std::nullopt;
  const bool complete = take_exponent(key, items) && take(key.d, key.dWords, items.d) &&
                        take(key.p, key.pWords, items.p) && take(key.q, key.qWords, items.q) &&
                        take(key.dP, key.dPWords, items.dP) &&
                        take(key.dQ, key.dQWords, items.dQ) &&
                        take(key.qInv, key.qInvWords, items.qInv);
  const PublicKey shown = take_public_part(items);
  return KeyFile{scheme, shown, complete && sealwright::rsa_key_agrees(key, layout)};
}

template <typename Record>
bool decrypt(Record& record, ByteView file, std::int32_t mode) {
  const WritableBytes bytes = writable_view_of(record);
  std::ranges::copy(file, bytes.begin());
  return do_PrivateKey_Decrypt(mode, bytes.data(), length_of(bytes)) == ZEB_SUCCESS;
}

std::optional<KeyFile> read_sb20(ByteView file) {
  Sb20PrivateKeyFile record;
  const WipeOnExit record_guard(record);
  if (!decrypt(record, file, key_file_mode_v21)) return std::nullopt;
  return read_items(record, KeyItemLayout::crt, "2.1");
}

std::optional<KeyFile> read_sb10_root(ByteView file) {
  Sb10RootPrivateKeyFile record;
  const WipeOnExit record_guard(record);
  if (!decrypt(record, file, key_file_mode_v11)) return std::nullopt;
  return read_items(record.items, KeyItemLayout::plain, "1.1");
}

std::optional<KeyFile> read_sb10_stage2(ByteView file) {
  Sb10PrivateKeyFile record;
  const WipeOnExit record_guard(record);
  if (!decrypt(record, file, key_file_mode_v11)) return std::nullopt;
  if (std::memcmp(record.text, sb10_private_key_text, sizeof record.text) != 0) return std::nullopt;
  return read_items(record.items, KeyItemLayout::plain, "1.1");
}

}  // namespace

std::optional<KeyFile> read_private_key_file(ByteView file) {
  if (file.size() == sizeof(Sb20PrivateKeyFile)) return read_sb20(file);
  if (file.size() == sizeof(Sb10RootPrivateKeyFile)) return read_sb10_root(file);
  if (file.size() == sizeof(Sb10PrivateKeyFile)) return read_sb10_stage2(file);
  return std::nullopt;
}
