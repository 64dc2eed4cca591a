#include "scheme/private_key_file.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

#include "artefact/key_files.h"
#include "base/wipe.h"
#include "crypto/bn.h"
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

/// Whether `value` modulo `m` is `expected`; the last two have `length` digits.
bool leaves(const Digit* value, std::uint32_t value_length, const Digit* m, std::uint32_t length,
            const Digit* expected) {
  std::array<Digit, rsa_crt_capacity> rest = {};
  const WipeOnExit rest_guard(rest);
  return zeb_bn_Div(nullptr, rest.data(), value, value_length, m, length) == 0 &&
         zeb_bn_cmp(rest.data(), length, expected, length) == 0;
}

/// Whether a * b modulo m is 1; `b` and `m` have `length` digits.
bool multiplies_to_one(const Digit* a, std::uint32_t a_length, const Digit* b, const Digit* m,
                       std::uint32_t length) {
  constexpr std::array<Digit, rsa_crt_capacity> one = {1};
  std::array<Digit, bn_scratch_digits> product = {};
  const WipeOnExit product_guard(product);
  zeb_bn_Mul(product.data(), a, a_length, b, length);
  return leaves(product.data(), a_length + length, m, length, one.data());
}

/// Whether `exponent` is d modulo prime - 1, and undoes e there.
bool exponent_agrees(const ZEB_RSA_PRIVATE_KEY& key, const Digit* prime, const Digit* exponent) {
  constexpr Digit one = 1;
  std::array<Digit, rsa_crt_capacity> order = {};
  const WipeOnExit order_guard(order);
  zeb_bn_Sub(order.data(), prime, key.pWords, &one, 1);
  return leaves(key.d, key.dWords, order.data(), key.pWords, exponent) &&
         multiplies_to_one(key.e, key.eWords, exponent, order.data(), key.pWords);
}

/// Whether the numbers belong together. A divisor of zero, from damage, fails by itself.
bool is_consistent(const ZEB_RSA_PRIVATE_KEY& key) {
  std::array<Digit, bn_scratch_digits> product = {};
  const WipeOnExit product_guard(product);
  zeb_bn_Mul(product.data(), key.p, key.pWords, key.q, key.qWords);
  return zeb_bn_cmp(product.data(), key.nWords, key.n, key.nWords) == 0 &&
         exponent_agrees(key, key.p, key.dP) && exponent_agrees(key, key.q, key.dQ) &&
         multiplies_to_one(key.q, key.qWords, key.qInv, key.p, key.pWords);
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

/// The key in a decrypted file, unless its modulus already does not have its length.
template <typename Items>
std::optional<KeyFile> read_items(const Items& items, const char* scheme) {
  ZEB_RSA_PRIVATE_KEY key = {};
  const WipeOnExit key_guard(key);
  if (!take(key.n, key.nWords, items.n)) return std::nullopt;
  const bool complete = take_exponent(key, items) && take(key.d, key.dWords, items.d) &&
                        take(key.p, key.pWords, items.p) && take(key.q, key.qWords, items.q) &&
                        take(key.dP, key.dPWords, items.dP) &&
                        take(key.dQ, key.dQWords, items.dQ) &&
                        take(key.qInv, key.qInvWords, items.qInv);
  const PublicKey shown = take_public_part(items);
  return KeyFile{scheme, shown, complete && is_consistent(key)};
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
  return read_items(record, "2.1");
}

std::optional<KeyFile> read_sb10_root(ByteView file) {
  Sb10RootPrivateKeyFile record;
  const WipeOnExit record_guard(record);
  if (!decrypt(record, file, key_file_mode_v11)) return std::nullopt;
  return read_items(record.items, "1.1");
}

std::optional<KeyFile> read_sb10_stage2(ByteView file) {
  Sb10PrivateKeyFile record;
  const WipeOnExit record_guard(record);
  if (!decrypt(record, file, key_file_mode_v11)) return std::nullopt;
  if (std::memcmp(record.text, sb10_private_key_text, sizeof record.text) != 0) return std::nullopt;
  return read_items(record.items, "1.1");
}

}  // namespace

std::optional<KeyFile> read_private_key_file(ByteView file) {
  if (file.size() == sizeof(Sb20PrivateKeyFile)) return read_sb20(file);
  if (file.size() == sizeof(Sb10RootPrivateKeyFile)) return read_sb10_root(file);
  if (file.size() == sizeof(Sb10PrivateKeyFile)) return read_sb10_stage2(file);
  return std::nullopt;
}
