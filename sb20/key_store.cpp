#include "sb20/key_store.h"

#include <algorithm>

#include "base/wipe.h"
#include "scheme/private_key_file.h"
#include "util/file.h"

SB20_CONTEXT sb20_Context = {};
std::uint8_t sb20_eFuseData[sb20_efuse_length] = {};
std::uint32_t sb20_eFuseDataLen = 0;

namespace sealwright {

EfuseData load_sb20_efuse_data(const char* path, EfuseLength rule) {
  const EfuseData efuse = load_efuse_data(sb20_eFuseData, path, rule);
  sb20_eFuseDataLen = efuse.length;
  return efuse;
}

SB20_CONTEXT& store_sb20_context(ByteView stored) {
  sb20_Context = {};
  std::copy(stored.begin(), stored.end(), writable_view_of(sb20_Context).begin());
  return sb20_Context;
}

void load_sb20_root_info(SB20_CONTEXT& context, std::uint32_t length) {
  context = {};
  const WritableBytes bytes = writable_view_of(context);
  read_record(bytes.subspan(offsetof(SB20_CONTEXT, publicKeyInfo), length),
              sb20_root_public_key_file);
}

Status load_sb20_private_key(ByteView& items, const char* path) {
  return load_private_key_file(items, path, key_file_mode_sb20, sizeof Sb20PrivateKeyFile::tail);
}

void store_sb20_key_pair(const Sb20KeyFiles& files) {
  sb20_Context.publicKeyInfo = files.public_key.publicKeyInfo;
  sb20_eFuseDataLen = sb20_efuse_length;
  std::copy_n(files.efuse_data, sb20_efuse_length, sb20_eFuseData);
  std::fill_n(publicKey, sizeof publicKey, std::uint8_t{0});
  std::copy_n(view_of(files.public_key).begin(), sizeof files.public_key, publicKey);
  std::fill_n(privateKey, sizeof privateKey, std::uint8_t{0});
  std::copy_n(view_of(files.private_key).begin(), sizeof files.private_key, privateKey);
  privateKeyLen = length_of(items_of(files.private_key));
}

void wipe_sb20_key_store() {
  wipe(&sb20_Context, sizeof sb20_Context);
  wipe(sb20_eFuseData, sizeof sb20_eFuseData);
}

}  // namespace sealwright
