#include "sb20/private_key_file.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <memory>
#include <new>

#include "crypto/aes_cbc.h"
#include "crypto/bytes.h"
#include "sb20/key_buffers.h"
#include "sb20/status.h"
#include "util/file.h"

namespace {

struct CipherParameters {
  std::array<std::uint8_t, 32> key;
  std::uint32_t key_length;
  std::array<std::uint8_t, aes_block_length> iv;
};

// Seeds of the fixed parameters; volatile, so that the bytes are made at run time and never stand
// as one string in the program.
struct ParameterSeed {
  volatile std::uint32_t key;
  volatile std::uint32_t iv;
};
const ParameterSeed seed_v11 = {0x3C5A91E7, 0x8B1D4F62};
const ParameterSeed seed_v21 = {0xD94E0B35, 0x62F7A8C1};

/// Fixed byte sequence grown from a seed; part of the file format, so never to be changed.
void expand_seed(std::uint32_t seed, std::uint8_t* bytes, std::uint32_t length) {
  std::uint32_t word = seed;
  for (std::uint32_t i = 0; i < length; ++i) {
    word = std::rotl(word * 0x9E3779B1U + 0x7F4A7C15U + i, 11);
    bytes[i] = static_cast<std::uint8_t>(word >> 24);
  }
}

CipherParameters build_parameters(std::int32_t mode) {
  const bool v11 = mode == key_file_mode_v11;
  const ParameterSeed& seed = v11 ? seed_v11 : seed_v21;
  CipherParameters parameters = {};
  parameters.key_length = v11 ? 16 : 32;
  expand_seed(seed.key, parameters.key.data(), parameters.key_length);
  expand_seed(seed.iv, parameters.iv.data(), aes_block_length);
  return parameters;
}

Status set_up_cipher(AesCbcContext& cipher, std::int32_t mode) {
  const CipherParameters parameters = build_parameters(mode);
  return ZEB_AES_SetInfo(&cipher, AES_USE_DEFAULT, parameters.key.data(), parameters.key_length,
                         parameters.iv.data(), aes_block_length, AES_PADDING_NONE, 0);
}

// Where the seven items of a 1024-bit key stand behind the file's header, and how wide they are.
struct ItemSlot {
  std::uint32_t offset;
  std::uint32_t capacity;
};
constexpr ItemSlot item_slots[] = {{0, 128},  {132, 128}, {264, 64}, {332, 64},
                                   {400, 64}, {468, 64},  {536, 64}};

}  // namespace

Status do_PrivateKey_Encrypt(std::int32_t mode, std::uint8_t* buffer, std::uint32_t size) {
  const std::unique_ptr<std::uint8_t[]> scratch(new (std::nothrow)
                                                    std::uint8_t[std::size_t{size} + 1]);
  AesCbcContext cipher;
  if (!scratch || set_up_cipher(cipher, mode) != 0 || ZEB_AES_CBC_EncInit(&cipher) != 0) {
    return CIPHER_ERR_SETUP;
  }
  std::uint32_t written = size;
  std::uint32_t last = 0;
  if (ZEB_AES_CBC_EncUpdate(&cipher, buffer, size, scratch.get(), &written) != 0 ||
      ZEB_AES_CBC_EncFinal(&cipher, buffer + written, &last) != 0) {
    return CIPHER_ERR_RUN;
  }
  std::copy_n(scratch.get(), written + last, buffer);
  return ZEB_SUCCESS;
}

Status do_PrivateKey_Decrypt(std::int32_t mode, std::uint8_t* buffer, std::uint32_t size) {
  AesCbcContext cipher;
  if (set_up_cipher(cipher, mode) != 0 || ZEB_AES_CBC_DecInit(&cipher) != 0) {
    return CIPHER_ERR_SETUP;
  }
  std::uint32_t opened = 0;
  std::uint32_t last = 0;
  if (ZEB_AES_CBC_DecUpdate(&cipher, buffer, size, buffer, &opened) != 0 ||
      ZEB_AES_CBC_DecFinal(&cipher, buffer + opened, &last) != 0) {
    return CIPHER_ERR_RUN;
  }
  return ZEB_SUCCESS;
}

void start_sb10_private_key_file(Sb10PrivateKeyFile* file) {
  constexpr char text[] = "1.0, Priv, RSA-1024, CRT";
  static_assert(sizeof text - 1 == sizeof file->text);
  *file = {};
  file->header_length = 28;
  std::memcpy(file->text, text, sizeof file->text);
  file->items_length = sizeof file->items;
}

Status convert_To_OldPrivateKey(const std::uint8_t* keyRecord, std::uint32_t /*keyRecordLen*/,
                                std::uint8_t* out) {
  Sb10PrivateKeyFile file;
  start_sb10_private_key_file(&file);
  for (const ItemSlot& slot : item_slots) {
    // The record's length is not known; the slots bound how far it is read.
    const std::uint32_t length = load_le32(keyRecord);
    if (length > slot.capacity) return CIPHER_ERR_SETUP;
    std::copy_n(keyRecord, sizeof length + length, file.items + slot.offset);
    keyRecord += sizeof length + length;
  }
  std::memcpy(out, &file, sizeof file);
  return do_PrivateKey_Encrypt(key_file_mode_v11, out, sizeof file);
}

Status read_private_key_file(const char* path, std::int32_t mode, std::uint32_t tail) {
  privateKeyLen =
      static_cast<std::uint32_t>(read_whole_or_abort(path, privateKey, sizeof privateKey));
  const Status status = do_PrivateKey_Decrypt(mode, privateKey, privateKeyLen);
  privateKeyLen -= std::min(tail, privateKeyLen);
  return status;
}
