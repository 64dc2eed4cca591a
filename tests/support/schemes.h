#pragma once

#include "sb10/boot_context.h"
#include "sb10/public_key_info.h"
#include "sb20/boot_context.h"
#include "sb20/public_key_info.h"
#include "tests/support/keys.h"

// The functions of both schemes under the same names, and an image sealed by them.

struct V11 {
  using Context = SB10_CONTEXT;
  static constexpr std::uint32_t length = 128, efuse_length = 16;
  static constexpr auto generate_info = Generate_SB10_PublicKeyInfo;
  static constexpr auto validate_info = Validate_SB10_PublicKeyInfo;
  static constexpr auto generate = Generate_SB10_Context;
  static constexpr auto check = Check_SB10_Context;
};
struct V21 {
  using Context = SB20_CONTEXT;
  static constexpr std::uint32_t length = 256, efuse_length = 20;
  static constexpr auto generate_info = Generate_SB20_PublicKeyInfo;
  static constexpr auto validate_info = Validate_SB20_PublicKeyInfo;
  static constexpr auto generate = Generate_SB20_Context;
  static constexpr auto check = Check_SB20_Context;
};

/// A test key with its eFuse data, and code sealed with it.
template <typename S>
struct Sealed {
  Key key = test_key(8 * S::length);
  Bytes list = key_list(key, full_widths(S::length), S::length == 256);
  Bytes hmac_key = some_bytes(S::efuse_length), efuse = Bytes(S::efuse_length),
        code = some_bytes(48);
  typename S::Context context = {};

  Sealed() {
    require(make_info(hmac_key, S::length / 4, S::efuse_length) == ZEB_SUCCESS, "info");
    require(S::generate(list.data(), length_of(list), nullptr, code.data(), length_of(code),
                        &context) == ZEB_SUCCESS,
            "context");
  }
  /// Of the context. An empty HMAC key has one drawn.
  Status make_info(const Bytes& given, std::uint32_t words, std::uint32_t room) {
    const Number n = key[0].digits(256), e = key[1].digits(1);
    return S::generate_info(given.empty() ? nullptr : given.data(), length_of(given), n.data(),
                            words, e.data(), 1, efuse.data(), &room, &context.publicKeyInfo);
  }
  Status check() {
    return S::check(efuse.data(), length_of(efuse), &context, code.data(), length_of(code));
  }
};
