// The CBC layer with any key use, lengths, padding rule, chunks and stated rooms, and calls in any
// order; OpenSSL computes what well-ordered calls have to write.

#include "crypto/aes_cbc.h"

#include "fuzz/input.h"
#include "tests/support/files.h"

namespace {

/// Whole blocks through OpenSSL.
Bytes openssl_cbc(const Bytes& key, const Bytes& iv, const Bytes& in, bool encrypt) {
  const std::string name = "AES-" + std::to_string(8 * key.size()) + "-CBC";
  const Owned<EVP_CIPHER_CTX> context(EVP_CIPHER_CTX_new());
  require(EVP_CipherInit_ex(context.get(), EVP_get_cipherbyname(name.c_str()), nullptr, key.data(),
                            iv.data(), encrypt ? 1 : 0) == 1,
          "OpenSSL refused the key");
  EVP_CIPHER_CTX_set_padding(context.get(), 0);
  Bytes out(in.size() + 16);
  int length = 0;
  EVP_CipherUpdate(context.get(), out.data(), &length, in.data(), static_cast<int>(in.size()));
  out.resize(static_cast<std::size_t>(length));
  return out;
}

void encrypt(FuzzInput& input, AesCbcContext& context, const Bytes& key, const Bytes& iv) {
  Bytes plaintext;
  Bytes ciphertext;
  while (input.left() != 0) {
    const Bytes in = input.bytes(1 + input.byte() % 100);
    const std::size_t whole = (plaintext.size() % 16 + in.size()) / 16 * 16;
    Bytes out(whole + 1);
    // Refused for want of room first, which changes nothing.
    for (std::uint32_t room = whole > 1 ? 1 : 0; room != UINT32_MAX; --room) {
      std::uint32_t written = room;
      const Status status =
          ZEB_AES_CBC_EncUpdate(&context, in.data(), length_of(in), out.data(), &written);
      require(status == (room == 0 ? ZEB_SUCCESS : ZEB_ERR_NO_ROOM), "status of EncUpdate");
      require(room != 0 || written == whole, "count of EncUpdate");
    }
    plaintext = joined(plaintext, in);
    ciphertext = joined(ciphertext, slice(out, 0, whole));
  }
  const std::size_t pad = 16 - plaintext.size() % 16;
  const bool padded = context.padding == AES_PADDING_COUNT;
  Bytes last(16);
  std::uint32_t written = 0;
  const Status status = ZEB_AES_CBC_EncFinal(&context, last.data(), &written);
  require(status == (padded || pad == 16 ? ZEB_SUCCESS : ZEB_ERR_NOT_WHOLE_BLOCKS),
          "status of EncFinal");
  if (status != ZEB_SUCCESS) return;
  require(written == (padded ? 16 : 0), "count of EncFinal");
  if (padded) plaintext.resize(plaintext.size() + pad, static_cast<std::uint8_t>(pad));
  ciphertext = joined(ciphertext, slice(last, 0, written));
  require(ciphertext == openssl_cbc(key, iv, plaintext, true), "ciphertext");
}

void decrypt(FuzzInput& input, AesCbcContext& context, const Bytes& key, const Bytes& iv) {
  Bytes data = input.bytes(1 + input.left() % 400);
  const Bytes opened = openssl_cbc(key, iv, slice(data, 0, data.size() / 16 * 16), false);
  const std::size_t whole = (data.size() - 1) / 16 * 16;
  std::uint32_t written = 0;
  require(ZEB_AES_CBC_DecUpdate(&context, data.data(), length_of(data), data.data(), &written) == 0,
          "status of DecUpdate");
  require(written == whole && slice(data, 0, whole) == slice(opened, 0, whole), "plaintext");
  Bytes last(16);
  std::uint32_t last_written = 0;
  const Status status = ZEB_AES_CBC_DecFinal(&context, last.data(), &last_written);
  if (data.size() % 16 != 0) {
    require(status == ZEB_ERR_HELD_COUNT, "ragged end");
    return;
  }
  const std::size_t pad = context.padding == AES_PADDING_COUNT ? opened.back() : 0;
  const bool good = pad <= 16 && slice(opened, opened.size() - std::min<std::size_t>(pad, 16),
                                       pad) == Bytes(pad, opened.back());
  require(status == (good ? ZEB_SUCCESS : ZEB_ERR_BAD_PADDING), "status of DecFinal");
  if (good) {
    require(slice(last, 0, last_written) == slice(opened, whole, 16 - pad), "last bytes");
  }
}

/// Calls out of order: whatever they say, they stay within their buffers.
void call_in_any_order(FuzzInput& input, AesCbcContext& context) {
  while (input.left() != 0) {
    const std::uint8_t call = input.byte() % 6;
    Bytes in = input.bytes(input.byte());
    Bytes out(in.size() + 16);
    std::uint32_t room = input.byte();
    const std::uint32_t length = length_of(in);
    if (call == 0) ZEB_AES_CBC_EncInit(&context);
    if (call == 1) ZEB_AES_CBC_EncUpdate(&context, in.data(), length, out.data(), &room);
    if (call == 2) ZEB_AES_CBC_EncFinal(&context, out.data(), &room);
    if (call == 3) ZEB_AES_CBC_DecInit(&context);
    if (call == 4) ZEB_AES_CBC_DecUpdate(&context, in.data(), length, in.data(), &room);
    if (call == 5) ZEB_AES_CBC_DecFinal(&context, out.data(), &room);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const std::uint8_t form = input.byte();
  const std::uint8_t use = input.byte();
  const Bytes key = input.bytes(input.byte() % 36);
  const Bytes iv = input.bytes(input.byte() % 20);
  constexpr std::uint32_t rules[] = {AES_PADDING_NONE, AES_PADDING_COUNT, 0};
  const std::uint32_t rule = rules[form % 3];
  AesCbcContext context = {};
  const Status set = ZEB_AES_SetInfo(&context, use, key.data(), length_of(key), iv.data(),
                                     length_of(iv), rule, form);
  const bool encrypting = (form & 64) != 0;
  const Status start = encrypting ? ZEB_AES_CBC_EncInit(&context) : ZEB_AES_CBC_DecInit(&context);
  if ((form & 128) != 0 || rule == 0) {
    call_in_any_order(input, context);
  } else if (set == ZEB_SUCCESS && start == ZEB_SUCCESS) {
    require(iv.size() == 16, "initial vector");
    encrypting ? encrypt(input, context, key, iv) : decrypt(input, context, key, iv);
  }
  return 0;
}
