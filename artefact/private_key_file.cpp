#include "artefact/private_key_file.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "crypto/rsa_key_check.h"
#include "sb10/records.h"
#include "scheme/private_key_file.h"

namespace sealwright {

namespace {

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
  key.e[0] = facts_of(Scheme::sb10).exponent;
  key.eWords = 1;
  return true;
}

/// Takes all numbers. False when already the modulus states another length than its slot's.
template <typename Items>
bool take_items(PrivateKey& key, const Items& items) {
  ZEB_RSA_PRIVATE_KEY& numbers = key.numbers;
  if (!take(numbers.n, numbers.nWords, items.n)) return false;
  const bool have[] = {take_exponent(numbers, items),
                       take(numbers.d, numbers.dWords, items.d),
                       take(numbers.p, numbers.pWords, items.p),
                       take(numbers.q, numbers.qWords, items.q),
                       take(numbers.dP, numbers.dPWords, items.dP),
                       take(numbers.dQ, numbers.dQWords, items.dQ),
                       take(numbers.qInv, numbers.qInvWords, items.qInv)};
  key.complete = std::ranges::find(have, false) == std::end(have);
  return true;
}

/// Decrypts the file into `plain`; a record of it is then copied out.
template <typename Record>
bool decrypt(PrivateKey& key, Record& record, ByteView file) {
  const std::int32_t mode = key.scheme == Scheme::sb10 ? key_file_mode_sb10 : key_file_mode_sb20;
  std::ranges::copy(file, key.plain.begin());
  if (do_PrivateKey_Decrypt(mode, key.plain.data(), sizeof record) != ZEB_SUCCESS) return false;
  std::memcpy(&record, key.plain.data(), sizeof record);
  return true;
}

bool open_sb20(PrivateKey& key, ByteView file) {
  key.scheme = Scheme::sb20;
  Sb20PrivateKeyFile record;
  const WipeOnExit record_guard(record);
  key.items = ByteView(key.plain).first(offsetof(Sb20PrivateKeyFile, tail));
  return decrypt(key, record, file) && take_items(key, record);
}

bool open_sb10_root(PrivateKey& key, ByteView file) {
  key.scheme = Scheme::sb10;
  Sb10RootPrivateKeyFile record;
  const WipeOnExit record_guard(record);
  key.items = ByteView(key.plain).first(sizeof record.items);
  return decrypt(key, record, file) && take_items(key, record.items);
}

bool open_sb10_stage2(PrivateKey& key, ByteView file) {
  key.scheme = Scheme::sb10;
  Sb10PrivateKeyFile record;
  const WipeOnExit record_guard(record);
  key.items = ByteView(key.plain).subspan(offsetof(Sb10PrivateKeyFile, items), sizeof record.items);
  return decrypt(key, record, file) &&
         std::memcmp(record.text, sb10_private_key_text, sizeof record.text) == 0 &&
         take_items(key, record.items);
}

}  // namespace

bool open_private_key_file(PrivateKey& key, ByteView file) {
  if (file.size() == sizeof(Sb20PrivateKeyFile)) return open_sb20(key, file);
  if (file.size() == sizeof(Sb10RootPrivateKeyFile)) return open_sb10_root(key, file);
  if (file.size() == sizeof(Sb10PrivateKeyFile)) return open_sb10_stage2(key, file);
  return false;
}

bool numbers_agree(const PrivateKey& key) {
  const bool by_crt = key.scheme == Scheme::sb20;
  const KeyItemLayout layout = by_crt ? KeyItemLayout::crt : KeyItemLayout::plain;
  return key.complete && rsa_key_agrees(key.numbers, layout);
}

SigningKey signing_key_of(const PrivateKey& key) {
  return {key.scheme == Scheme::sb10 ? rsa_mode_plain : rsa_mode_crt, key.items};
}

PublicKey public_half_of(const PrivateKey& key) {
  if (key.scheme == Scheme::sb10) {
    RsaPublicKey1024 stored;
    std::memcpy(stored.n, key.numbers.n, sizeof stored.n);
    store_le32(stored.e, key.numbers.e[0]);
    return to_public_key(stored);
  }
  RsaPublicKey2048 stored;  // as the items start
  std::memcpy(&stored, key.items.data(), sizeof stored);
  return to_public_key(stored);
}

std::optional<PrivateKeyFile> read_private_key_file(ByteView file) {
  PrivateKey key;
  if (!open_private_key_file(key, file)) return std::nullopt;
  return PrivateKeyFile{public_half_of(key), numbers_agree(key)};
}

}  // namespace sealwright
