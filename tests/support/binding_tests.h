#pragma once

#include <gtest/gtest.h>

#include "crypto/mem.h"
#include "crypto/rsa.h"
#include "tests/support/key_list.h"
#include "tests/support/openssl_schemes.h"
#include "tests/support/rsa_keys.h"
#include "tests/support/test_bytes.h"

// Tests of public-key info and boot context that both schemes pass. A scheme tells its types,
// functions and sizes; in its context stand, one behind the other, the stage-2 key, in one scheme
// the signature's length, the signature, the root public-key info and what nothing covers.

template <typename Record>
Bytes bytes_of(const Record& record) {
  const auto* first = reinterpret_cast<const std::uint8_t*>(&record);
  return Bytes(first, first + sizeof record);
}

template <typename Record>
Record flipped(Record record, std::size_t position) {
  reinterpret_cast<std::uint8_t*>(&record)[position] ^= 0x10;
  return record;
}

template <typename... Functions>
Bytes table_of(Functions*... functions) {
  Bytes table;
  for (const auto address : {reinterpret_cast<std::uintptr_t>(functions)...}) {
    table = joined(table, bytes_of(static_cast<std::uint32_t>(address)));
  }
  return table;
}

/// The entry-table slots that both schemes start with.
inline Bytes common_table() {
  return table_of(tmkx_memcmp, tmkx_memcpy, tmkx_memset, tmkx_memxor, ZEB_SHA1_Init,
                  ZEB_SHA1_Update, ZEB_SHA1_Final, ZEB_SHA1_HMAC_SetInfo, ZEB_SHA1_HMAC_Init,
                  ZEB_SHA1_HMAC_Update, ZEB_SHA1_HMAC_Final, Verify_PSS_RSASignature);
}

/// What stands behind the entry table.
inline Bytes context_tail(std::size_t zeros, const std::string& magic, std::size_t fill) {
  const Bytes text(magic.begin(), magic.end());
  return joined(joined(Bytes(zeros), joined(text, Bytes(4))), Bytes(fill, 0xAA));
}

template <typename Scheme>
class Binding : public testing::Test {
 protected:
  using Info = typename Scheme::Info;
  using Context = typename Scheme::Context;
  static constexpr std::uint32_t fuse_length = Scheme::efuse_length;
  static constexpr std::uint32_t words = Scheme::signature_length / 4;
  static constexpr std::size_t key_length = sizeof(Info) - 20;
  static constexpr std::size_t info_at = Scheme::signature_at + Scheme::signature_length;
  static constexpr std::size_t table_at = info_at + sizeof(Info);

  void SetUp() override { ASSERT_EQ(make_info({}), 0U); }

  /// Replaces the info and the eFuse data; an empty HMAC key has one drawn.
  Status make_info(const Bytes& hmac_key) {
    std::uint32_t length = fuse_length;
    return Scheme::generate_info(hmac_key.empty() ? nullptr : hmac_key.data(), length_of(hmac_key),
                                 key.n, words, key.e, 1, efuse.data(), &length, &info);
  }
  Context make_context(const Bytes& code, const Bytes& stage2_key) {
    const Bytes items = make_key_list(key, words == 64);
    Context context = {};
    context.publicKeyInfo = info;
    EXPECT_EQ(Scheme::generate_context(items.data(), length_of(items),
                                       stage2_key.empty() ? nullptr : stage2_key.data(),
                                       code.data(), length_of(code), &context),
              0U);
    return context;
  }
  Status check(Context& context, const Bytes& code, const Bytes& fuses) {
    return Scheme::check_context(fuses.data(), length_of(fuses), &context, code.data(),
                                 length_of(code));
  }

  ZEB_RSA_PRIVATE_KEY key = read_key_record(32 * words);
  Info info = {};
  Bytes efuse = Bytes(fuse_length);
};
TYPED_TEST_SUITE_P(Binding);

TYPED_TEST_P(Binding, EfuseDataIsHmacXorItsKey) {
  const Bytes first_efuse = this->efuse;
  const Bytes given = counted_bytes(this->fuse_length);
  for (const Bytes& hmac_key : {Bytes(), given}) {
    ASSERT_EQ(this->make_info(hmac_key), 0U);
    EXPECT_NE(this->efuse, first_efuse);  // the key is drawn anew
    const Bytes record = bytes_of(this->info);
    const Bytes hmac = slice(record, this->key_length, 20);
    Bytes used = this->efuse;
    for (std::size_t i = 0; i < used.size(); ++i) used[i] ^= hmac[i];
    EXPECT_EQ(hmac_sha1(used, slice(record, 0, this->key_length)), hmac);
    EXPECT_EQ(used == given, !hmac_key.empty());
  }
}

TYPED_TEST_P(Binding, BadArgumentsAreRefused) {
  const Bytes given(32);
  const Number n(256, 1);
  const struct {
    const std::uint8_t* given;
    std::uint32_t given_length, n_words, room;
  } cases[] = {{nullptr, 0, this->words, this->fuse_length - 1},
               {nullptr, 0, 4 * this->words, this->fuse_length},  // on purpose: a byte count
               {given.data(), this->fuse_length - 1, this->words, this->fuse_length},
               {given.data(), this->fuse_length + 1, this->words, this->fuse_length},
               {given.data(), 0, this->words, this->fuse_length}};
  for (auto [given_key, given_length, n_words, room] : cases) {
    EXPECT_EQ(TypeParam::generate_info(given_key, given_length, n.data(), n_words, this->key.e, 1,
                                       this->efuse.data(), &room, &this->info),
              0xFFF50000);
  }
  const Bytes before = bytes_of(this->info);
  for (const std::uint32_t length : {0U, 36U - this->fuse_length, this->fuse_length + 1}) {
    EXPECT_EQ(TypeParam::validate_info(given.data(), length, &this->info), 0xFFF50000);
    EXPECT_EQ(bytes_of(this->info), before);
  }
}

TYPED_TEST_P(Binding, ContextCarriesWhatTheDeviceNeeds) {
  const Bytes code = counted_bytes(48);
  const Bytes root_key = slice(bytes_of(this->info), 0, this->key_length);
  for (const Bytes& stage2_key : {Bytes(), counted_bytes(this->key_length)}) {
    typename TypeParam::Context context = this->make_context(code, stage2_key);
    const Bytes record = bytes_of(context);
    const Bytes held = stage2_key.empty() ? root_key : stage2_key;
    EXPECT_EQ(slice(record, 0, this->key_length), held);
    EXPECT_EQ(slice(record, this->info_at, sizeof this->info), bytes_of(this->info));
    EXPECT_EQ(slice(record, this->table_at, record.size() - this->table_at),
              joined(Bytes(TypeParam::table().size()), TypeParam::tail()));
    const Bytes signature = slice(record, TypeParam::signature_at, TypeParam::signature_length);
    EXPECT_TRUE(openssl_accepts({this->key.n, this->words}, {this->key.e, 1}, joined(code, held),
                                signature));
    EXPECT_EQ(this->check(context, code, this->efuse), 0U);
    EXPECT_EQ(bytes_of(context.funcPtrTable), TypeParam::table());
  }
}

TYPED_TEST_P(Binding, CheckFindsEveryChangeOfWhatIsCovered) {
  const Bytes code = counted_bytes(32);
  const auto made = this->make_context(code, counted_bytes(this->key_length));
  for (std::size_t i = 0; i < sizeof made; ++i) {
    const bool in_length = i >= this->key_length && i < TypeParam::signature_at;
    const Status expected = i >= this->table_at  ? 0
                            : i >= this->info_at ? 0xFFF10050
                            : in_length          ? 0xFFF30000
                                                 : 0xFFF30090;
    typename TypeParam::Context context = flipped(made, i);
    ASSERT_EQ(this->check(context, code, this->efuse), expected) << i;
    const Bytes record = bytes_of(context);
    const auto is_wiped = [&](std::size_t at, std::size_t count) {
      return slice(record, at, count) == Bytes(count);
    };
    EXPECT_EQ(is_wiped(TypeParam::signature_at, TypeParam::signature_length),
              expected == 0xFFF30090);
    EXPECT_EQ(is_wiped(this->info_at, sizeof this->info), expected == 0xFFF10050);
  }
  for (std::size_t i = 0; i < code.size() + this->fuse_length; ++i) {
    Bytes other_code = code, other_efuse = this->efuse;
    (i < code.size() ? other_code[i] : other_efuse[i - code.size()]) ^= 0x10;
    typename TypeParam::Context context = made;
    EXPECT_EQ(this->check(context, other_code, other_efuse),
              i < code.size() ? 0xFFF30090 : 0xFFF10050);
  }
}

TYPED_TEST_P(Binding, OtherFailuresHaveTheirCodes) {
  const Bytes no_key(2048);
  const std::uint8_t* zeros = no_key.data();
  typename TypeParam::Context context = {};
  EXPECT_EQ(TypeParam::generate_context(zeros, 2048, zeros, nullptr, 0, &context), 0xFFF60031);
  EXPECT_EQ(TypeParam::generate_context(zeros, 2048, zeros, zeros, 16, &context), 0xFFF40000);
  context = this->make_context(no_key, {});
  EXPECT_EQ(TypeParam::check_context(this->efuse.data(), this->fuse_length, &context, nullptr, 0),
            0xFFF30071);
  EXPECT_EQ(this->check(context, no_key, Bytes(36 - this->fuse_length)), 0xFFF30000);
}

REGISTER_TYPED_TEST_SUITE_P(Binding, EfuseDataIsHmacXorItsKey, BadArgumentsAreRefused,
                            ContextCarriesWhatTheDeviceNeeds, CheckFindsEveryChangeOfWhatIsCovered,
                            OtherFailuresHaveTheirCodes);
