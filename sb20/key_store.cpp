#include "sb20/key_store.h"

#include "base/wipe.h"
#include "scheme/private_key_file.h"
#include "util/file.h"

SB20_CONTEXT sb20_Context = {};
std::uint8_t sb20_eFuseData[sb20_efuse_length] = {};
std::uint32_t sb20_eFuseDataLen = 0;

EfuseData load_sb20_efuse_data(const char* path, EfuseLength rule) {
  const EfuseData efuse = load_efuse_data(sb20_eFuseData, path, rule);
  sb20_eFuseDataLen = efuse.length;
  return efuse;
}

const SB20_CONTEXT& load_sb20_root_info(std::uint32_t length) {
  sb20_Context = {};
  const WritableBytes context = writable_view_of(sb20_Context);
  sealwright::read_record(context.subspan(offsetof(SB20_CONTEXT, publicKeyInfo), length),
                          sb20_public_key_info_file);
  return sb20_Context;
}

Status load_sb20_private_key(ByteView& items, const char* path) {
  return load_private_key_file(items, path, key_file_mode_v21, sizeof Sb20PrivateKeyFile::tail);
}

void wipe_sb20_key_store() {
  wipe(&sb20_Context, sizeof sb20_Context);
  wipe(sb20_eFuseData, sizeof sb20_eFuseData);
}
