#include "seal/boot_image.h"

#include <tuple>

#include "sb10/boot_context.h"
#include "sb20/boot_context.h"
#include "sb20/code_encryption.h"

namespace sealwright {

namespace {

// One pair of functions for each step, chosen by the type of the context.

void fill(SB20_CONTEXT& context, const PublicKey& stage2_key) {
  fill_sb20_context(context, std::get<RsaPublicKey2048>(stage2_key.stored));
}
void fill(SB10_CONTEXT& context, const PublicKey& stage2_key) {
  fill_sb10_context(context, std::get<RsaPublicKey1024>(stage2_key.stored));
}

Status digest(std::uint8_t* out, const SB20_CONTEXT& context, ByteView sealed) {
  return digest_sb20_context(out, context, sealed);
}
Status digest(std::uint8_t* out, const SB10_CONTEXT& context, ByteView sealed) {
  return digest_sb10_context(out, context, sealed);
}

void attach(SB20_CONTEXT& context, ByteView signature) {
  attach_sb20_signature(context, signature);
}
void attach(SB10_CONTEXT& context, ByteView signature) {
  attach_sb10_signature(context, signature);
}

Status check(SB20_CONTEXT& context, ByteView efuse, ByteView sealed) {
  return Check_SB20_Context(efuse.data(), length_of(efuse), &context, sealed.data(),
                            length_of(sealed));
}
Status check(SB10_CONTEXT& context, ByteView efuse, ByteView sealed) {
  return Check_SB10_Context(efuse.data(), length_of(efuse), &context, sealed.data(),
                            length_of(sealed));
}

}  // namespace

BootContext assemble_context(const RootInfo& root, const PublicKey& stage2_key) {
  BootContext made;
  if (const auto* info = std::get_if<Sb20PublicKeyInfo>(&root)) {
    made.emplace<SB20_CONTEXT>().publicKeyInfo = *info;
  } else {
    made.emplace<SB10_CONTEXT>().publicKeyInfo = std::get<Sb10PublicKeyInfo>(root);
  }
  std::visit([&](auto& context) { fill(context, stage2_key); }, made);
  return made;
}

bool seal_code(WritableBytes code, const BootContext& context, ByteView efuse) {
  const auto* sb20 = std::get_if<SB20_CONTEXT>(&context);
  return sb20 == nullptr || Encrypt_Code(efuse.data(), length_of(efuse), sb20, code.data(),
                                         length_of(code)) == ZEB_SUCCESS;
}

Digest digest_of(const BootContext& context, ByteView sealed) {
  Digest made = {};
  std::visit(
      [&](const auto& stored) {
        // The status can be dropped: no pointer is null.
        std::ignore = digest(made.data(), stored, sealed);
      },
      context);
  return made;
}

void attach_signature(BootContext& context, ByteView signature) {
  std::visit([&](auto& stored) { attach(stored, signature); }, context);
}

bool check_as_device(BootContext& context, ByteView efuse, ByteView sealed) {
  return std::visit([&](auto& stored) { return check(stored, efuse, sealed); }, context) ==
         ZEB_SUCCESS;
}

ByteView view_of_context(const BootContext& context) {
  return std::visit([](const auto& stored) { return view_of(stored); }, context);
}

}  // namespace sealwright
