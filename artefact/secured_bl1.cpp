#include "artefact/secured_bl1.h"

#include <algorithm>
#include <array>

namespace sealwright {

namespace {

bool has_mark(const SB10_CONTEXT& context) {
  return std::ranges::equal(context.magic, sb10_context_magic);
}
bool has_mark(const SB20_CONTEXT& context) {
  return std::ranges::equal(context.magic, sb20_context_magic);
}

bool states_length(const SB20_CONTEXT& context) {
  return context.signatureLen == sizeof context.signature;
}
bool states_length(const SB10_CONTEXT& /*context*/) {
  return true;
}

/// The context at the end of the image, when it has the mark.
template <typename Context>
std::optional<Context> find_context(ByteView end) {
  Context context;
  if (end.size() < sizeof context) return std::nullopt;
  std::ranges::copy(end.last(sizeof context), writable_view_of(context).begin());
  return has_mark(context) ? std::optional(context) : std::nullopt;
}

/// The record that "-P" seals in, when the bytes before the context end with one.
std::optional<BuildInfo> find_build_info(ByteView before_context) {
  if (before_context.size() < sizeof(BuildInfo)) return std::nullopt;
  BuildInfo found;
  std::ranges::copy(before_context.last(sizeof found), writable_view_of(found).begin());
  // A record of this moment has the same bytes but for the time.
  BuildInfo expected;
  mk_BL_Info(writable_view_of(expected).data());
  expected.build_time = found.build_time;
  const bool same = std::ranges::equal(view_of(found), view_of(expected));
  return same ? std::optional(found) : std::nullopt;
}

}  // namespace

std::optional<SecuredBl1> find_secured_bl1(ByteView end, std::size_t image_size, Scheme scheme) {
  if (scheme == Scheme::sb10) {
    const auto context = find_context<SB10_CONTEXT>(end);
    if (!context) return std::nullopt;
    return SecuredBl1{scheme, *context, image_size - sizeof *context, std::nullopt};
  }
  const auto context = find_context<SB20_CONTEXT>(end);
  if (!context) return std::nullopt;
  const auto build_info = find_build_info(end.first(end.size() - sizeof *context));
  const std::size_t info_size = build_info ? sizeof *build_info : 0;
  return SecuredBl1{scheme, *context, image_size - sizeof *context - info_size, build_info};
}

std::optional<SecuredBl1> recognise_secured_bl1(const FileScan& image) {
  auto sb20 = find_secured_bl1(image.end, image.size, Scheme::sb20);
  auto sb10 = find_secured_bl1(image.end, image.size, Scheme::sb10);
  if (!sb20 || !sb10) return sb20 ? sb20 : sb10;
  const bool sb10_alone = verify_bl1_signature(*sb10, image) && !verify_bl1_signature(*sb20, image);
  return sb10_alone ? sb10 : sb20;
}

RootInfo root_info_of(const SecuredBl1& bl1) {
  return std::visit([](const auto& context) { return RootInfo(context.publicKeyInfo); },
                    bl1.context);
}

PublicKey root_key_of(const SecuredBl1& bl1) {
  return root_key_of(root_info_of(bl1));
}

PublicKey stage2_key_of(const SecuredBl1& bl1) {
  return std::visit([](const auto& context) { return to_public_key(context.stage2PublicKey); },
                    bl1.context);
}

bool verify_bl1_signature(const SecuredBl1& bl1, const FileScan& image) {
  return std::visit(
      [&](auto context) {  // a copy, because a signature that fails is wiped
        if (!states_length(context)) return false;
        Digest digest = digest_before(image, sizeof context, view_of(context.stage2PublicKey));
        const ByteView key = view_of(context.publicKeyInfo.key);
        return Verify_PSS_RSASignature(key.data(), length_of(key), digest.data(), digest.size(),
                                       context.signature, sizeof context.signature) == ZEB_SUCCESS;
      },
      bl1.context);
}

bool verify_bl2_signature(const SecuredBl1& bl1, const FileScan& secured_bl2) {
  return std::visit(
      [&](const auto& context) {
        // Room of its own: the check wipes a signature that fails, and where the key states a long
        // exponent it reads on through the whole context.
        std::array<std::uint8_t, sizeof context.signature> signature;
        if (secured_bl2.size < signature.size()) return false;
        std::ranges::copy(ByteView(secured_bl2.end).last(signature.size()), signature.begin());
        Digest digest = digest_before(secured_bl2, signature.size(), {});
        return verify_by_stated_counts(signature, view_of(context).data(), digest) == ZEB_SUCCESS;
      },
      bl1.context);
}

}  // namespace sealwright
