#include "scheme/key_store.h"

#include <algorithm>

#include "base/wipe.h"
#include "scheme/private_key_file.h"
#include "util/file.h"

std::uint8_t privateKey[private_key_capacity] = {};
std::uint32_t privateKeyLen = 0;
std::uint8_t publicKey[public_key_capacity] = {};
std::uint32_t publicKeyLen = 0;

namespace sealwright {

EfuseData load_efuse_data(WritableBytes fuses, const char* path, EfuseLength rule) {
  const auto file_length = static_cast<std::uint32_t>(read_record(fuses, path));
  // Quirk: -VERIFY counts the file as long as the fuses, whatever it is; scripts that verify
  // against a longer dump of the fuses depend on it.
  return {fuses.data(), rule == EfuseLength::of_file ? file_length : length_of(fuses)};
}

Status load_private_key_file(ByteView& items, const char* path, std::int32_t mode,
                             std::uint32_t tail) {
  privateKeyLen = static_cast<std::uint32_t>(read_whole_or_abort(privateKey, path));
  const Status status = do_PrivateKey_Decrypt(mode, privateKey, privateKeyLen);
  // Quirk: a fixed count comes off, whatever the bytes are; stored key files whose last bytes are
  // not zero depend on it.
  items = {privateKey, privateKeyLen - std::min(tail, privateKeyLen)};
  if (status == ZEB_SUCCESS) privateKeyLen = length_of(items);
  return status;
}

WritableBytes load_public_key_file(const char* path) {
  publicKeyLen = static_cast<std::uint32_t>(read_whole_or_abort(publicKey, path));
  return publicKey;
}

void wipe_key_store() {
  wipe(privateKey, sizeof privateKey);
  wipe(publicKey, sizeof publicKey);
}

}  // namespace sealwright
