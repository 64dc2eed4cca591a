#include "sb10/stage2.h"

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "crypto/bytes.h"
#include "crypto/rsa.h"
#include "sb10/key_buffers.h"
#include "sb20/checked_signature.h"
#include "sb20/key_buffers.h"
#include "sb20/messages.h"
#include "util/abort.h"
#include "util/file.h"

namespace {

// Items n and d stand at fixed places, whatever lengths they state.
constexpr std::uint32_t n_item_offset = 36;
constexpr std::uint32_t d_item_offset = 168;
constexpr std::uint32_t v11_public_exponent = 65537;  // of every version 1.1 key

/// Appends the item at `offset` of the private-key record to `privateKey`. False when its length
/// runs past the record; two items that do not, fit the buffer.
bool append_item_of_record(std::uint32_t offset) {
  static_assert(2 * sizeof sb10_privkey_file <= sizeof privateKey);
  const auto* record = reinterpret_cast<const std::uint8_t*>(&sb10_privkey_file);
  const std::uint32_t length = load_le32(record + offset);
  if (length > sizeof sb10_privkey_file - offset - sizeof length) return false;
  const std::uint32_t item_length = sizeof length + length;
  std::copy_n(record + offset, item_length, privateKey + privateKeyLen);
  privateKeyLen += item_length;
  return true;
}

bool build_key_items() {
  std::fill(std::begin(privateKey), std::end(privateKey), std::uint8_t{0});
  privateKeyLen = 0;
  return append_item_of_record(n_item_offset) && append_item_of_record(d_item_offset);
}

Status sign_image(const std::uint8_t* image, std::uint32_t imageLen, std::uint8_t* signature) {
  if (!build_key_items()) return SIGN_ERR_RSA;
  Sb10PublicKey public_key;
  std::copy_n(privateKey + sizeof(std::uint32_t), sizeof public_key.n, public_key.n);
  store_le32(public_key.e, v11_public_exponent);
  return sign_message_checked(rsa_mode_plain, privateKey, privateKeyLen,
                              reinterpret_cast<const std::uint8_t*>(&public_key), image, imageLen,
                              signature, signature_bytes_1024);
}

}  // namespace

Status sb10_Generate_Stage2(const char* privateKeyFile, const std::uint8_t* image,
                            std::uint32_t imageLen, std::uint8_t* signatureOut,
                            std::uint32_t* signatureLen) {
  auto* record = reinterpret_cast<std::uint8_t*>(&sb10_privkey_file);
  const std::int32_t file_length = read_record(privateKeyFile, record, sizeof sb10_privkey_file);
  // What stands behind the record is ignored, but no private-key file is longer than the key
  // buffer.
  if (file_length > static_cast<std::int32_t>(sizeof privateKey)) abort_on_overflow();
  do_PrivateKey_Decrypt(key_file_mode_v11, record, sizeof sb10_privkey_file);
  const Status status = sign_image(image, imageLen, signatureOut);
  if (status == ZEB_SUCCESS) *signatureLen = signature_bytes_1024;
  std::fputs(status == ZEB_SUCCESS ? stage2_signed_line : stage2_not_signed_line, stdout);
  return status;
}
