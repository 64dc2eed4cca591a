#include "artefact/secured_bl1.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "sb10/public_key_info.h"
#include "sb20/public_key_info.h"
#include "scheme/context_signature.h"

namespace {

// The schemes' functions wipe what fails, so the checks below take each context as a copy.

Status validate(ByteView efuse, Sb20PublicKeyInfo& info) {
  return Validate_SB20_PublicKeyInfo(efuse.data(), length_of(efuse), &info);
}
Status validate(ByteView efuse, Sb10PublicKeyInfo& info) {
  return Validate_SB10_PublicKeyInfo(efuse.data(), length_of(efuse), &info);
}

bool states_length(const SB20_CONTEXT& context) {
  return context.signatureLen == sizeof context.signature;
}
bool states_length(const SB10_CONTEXT& /*context*/) {
  return true;
}

/// The context at the end of the image, when it has the magic.
template <typename Context>
std::optional<Context> find_context(ByteView image, const std::uint8_t (&magic)[16]) {
  Context context;
  if (image.size() < sizeof context) return std::nullopt;
  std::ranges::copy(image.last(sizeof context), writable_view_of(context).begin());
  return std::ranges::equal(context.magic, magic) ? std::optional(context) : std::nullopt;
}

/// The record that "-P" seals in, when the signed part ends with one.
std::optional<BuildInfo> find_build_info(ByteView signed_part) {
  if (signed_part.size() < sizeof(BuildInfo)) return std::nullopt;
  BuildInfo found;
  std::ranges::copy(signed_part.last(sizeof found), writable_view_of(found).begin());
  // A record of this moment has the same bytes but for the time.
  BuildInfo expected;
  mk_BL_Info(writable_view_of(expected).data());
  expected.build_time = found.build_time;
  const bool same = std::ranges::equal(view_of(found), view_of(expected));
  return same ? std::optional(found) : std::nullopt;
}

}  // namespace

std::optional<SecuredBl1> find_secured_bl1(ByteView image, bool for_sb10) {
  const auto sb20 = find_context<SB20_CONTEXT>(image, sb20_context_magic);
  const auto sb10 = find_context<SB10_CONTEXT>(image, sb10_context_magic);
  if (sb10 && (for_sb10 || !sb20)) {
    const ByteView code = image.first(image.size() - sizeof *sb10);
    return SecuredBl1{"1.1", sb10_efuse_length, *sb10, code, code, std::nullopt};
  }
  if (!sb20) return std::nullopt;
  const ByteView signed_part = image.first(image.size() - sizeof *sb20);
  const auto build_info = find_build_info(signed_part);
  const std::size_t info_length = build_info ? sizeof *build_info : 0;
  return SecuredBl1{"2.1",
                    sb20_efuse_length,
                    *sb20,
                    signed_part,
                    signed_part.first(signed_part.size() - info_length),
                    build_info};
}

bool verify_fuses(const SecuredBl1& bl1, ByteView efuse) {
  return std::visit([&](auto context) { return validate(efuse, context.publicKeyInfo); },
                    bl1.context) == ZEB_SUCCESS;
}

bool verify_bl1_signature(const SecuredBl1& bl1) {
  return std::visit(
      [&](auto context) {
        return states_length(context) &&
               verify_image_and_key(context.signature, view_of(context.publicKeyInfo.key),
                                    {bl1.signed_part, view_of(context.stage2PublicKey)}) ==
                   ZEB_SUCCESS;
      },
      bl1.context);
}

bool verify_bl2_signature(const SecuredBl1& bl1, ByteView secured_bl2) {
  return std::visit(
      [&](auto context) {
        auto& signature = context.signature;  // its room serves for that of BL2
        if (secured_bl2.size() < sizeof signature) return false;
        std::ranges::copy(secured_bl2.last(sizeof signature), signature);
        const ByteView image = secured_bl2.first(secured_bl2.size() - sizeof signature);
        return Verify_PSS_RSASignature2(view_of(context).data(), sizeof context.stage2PublicKey,
                                        image.data(), length_of(image), signature,
                                        sizeof signature) == ZEB_SUCCESS;
      },
      bl1.context);
}
