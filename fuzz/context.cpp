// Check_SB20_Context and Check_SB10_Context with hostile contexts, eFuse data and images.

#include <openssl/hmac.h>

#include "fuzz/judge.h"
#include "sb10/boot_context.h"
#include "sb20/boot_context.h"
#include "scheme/status.h"
#include "tests/support/files.h"

namespace {

/// Where the parts of a boot context stand. The signature covers the image and the first
/// `key_length` bytes; the public-key info is a root key of that length and its HMAC.
struct Layout {
  std::size_t size, key_length, efuse_length, signature, signature_length, info, hmac, table,
      entries;
};
constexpr Layout sb20_layout = {1024, 268, 20, 272, 256, 528, 796, 816, 24};
constexpr Layout sb10_layout = {512, 132, 16, 132, 128, 260, 392, 412, 12};

Bytes hmac_of_info(const Layout& layout, const Bytes& context, const Bytes& key) {
  Bytes mac(20);
  HMAC(EVP_sha1(), key.data(), static_cast<int>(key.size()), &context[layout.info],
       layout.key_length, mac.data(), nullptr);
  return mac;
}

/// The HMAC key from the eFuse data, or the other way round.
Bytes xor_hmac(const Layout& layout, Bytes efuse, const Bytes& context) {
  for (std::size_t i = 0; i < efuse.size(); ++i) efuse[i] ^= context[layout.hmac + i];
  return efuse;
}

Bytes covered_digest(const Layout& layout, const Bytes& context, Bytes covered) {
  covered.insert(covered.end(), context.data(), context.data() + layout.key_length);
  return sha1(covered);
}

/// What the check returns and does to the context.
Status judge_check(const Layout& layout, const Bytes& efuse, Bytes& context, const Bytes& image) {
  const bool is_sb20 = layout.size == sb20_layout.size;
  if (efuse.size() != layout.efuse_length) return CHECK_ERR_LENGTH;
  if (is_sb20 && load_le32(&context[268]) != 256) return CHECK_ERR_LENGTH;
  std::uint32_t entries[24];
  is_sb20 ? save_SB20_FuncPtr(entries) : static_cast<void>(save_SB10_FuncPtr(entries));
  std::memcpy(&context[layout.table], entries, 4 * layout.entries);
  const Bytes hmac_key = xor_hmac(layout, efuse, context);
  if (hmac_of_info(layout, context, hmac_key) != slice(context, layout.hmac, 20)) {
    std::fill_n(&context[layout.info], layout.key_length + 20, std::uint8_t{0});
    return INFO_ERR_MISMATCH;
  }
  if (image.empty()) return CHECK_ERR_SHA1_IMAGE;  // the null pointer is refused
  const bool valid = judge_verify(slice(context, layout.info, layout.key_length),
                                  slice(context, layout.signature, layout.signature_length),
                                  covered_digest(layout, context, image));
  if (valid) return ZEB_SUCCESS;
  std::fill_n(&context[layout.signature], layout.signature_length, std::uint8_t{0});
  return CHECK_ERR_SIGNATURE;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const std::uint8_t form = input.byte();
  const Layout& layout = (form & 1) != 0 ? sb20_layout : sb10_layout;
  Bytes efuse = input.bytes((form & 2) != 0 ? input.byte() : layout.efuse_length);
  Bytes context = input.bytes(layout.size);
  const std::size_t damaged = input.word() % layout.size;
  const Bytes image = input.rest(300);
  if ((form & 4) != 0) {  // e = 1 signs any encoding; its data block is the signature's first bytes
    store_le32(&context[layout.hmac - 4], 1);
    const Bytes opened = slice(context, layout.signature, layout.signature_length);
    const Big sealed = pss_seal(opened, covered_digest(layout, context, image));
    std::ranges::copy(bytes_of(sealed, opened.size()), &context[layout.signature]);
  }
  if ((form & 8) != 0 && efuse.size() == layout.efuse_length) {  // eFuse data for this root key
    std::ranges::copy(hmac_of_info(layout, context, efuse), &context[layout.hmac]);
    efuse = xor_hmac(layout, efuse, context);
  }
  if ((form & 16) != 0) context[damaged] ^= 1;

  Bytes judged = context;
  const Status expected = judge_check(layout, efuse, judged, image);
  const auto check = [&](auto* typed_context, auto function) {
    return function(efuse.data(), length_of(efuse), typed_context, image.data(), length_of(image));
  };
  const Status status =
      (form & 1) != 0 ? check(reinterpret_cast<SB20_CONTEXT*>(context.data()), Check_SB20_Context)
                      : check(reinterpret_cast<SB10_CONTEXT*>(context.data()), Check_SB10_Context);
  require(status == expected, "status of the check");
  require(context == judged, "context after the check");
  return 0;
}
