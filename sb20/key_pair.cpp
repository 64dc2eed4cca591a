#include "sb20/key_pair.h"

#include <array>
#include <span>

#include "base/wipe.h"
#include "sb20/key_files.h"
#include "sb20/key_store.h"
#include "scheme/key_pair.h"
#include "scheme/private_key_file.h"
#include "util/file.h"
#include "util/file_set.h"

namespace sealwright {

namespace {

/// The files of a new key, as they are stored.
Status make_stored_files(Sb20KeyFiles& files) {
  ZEB_RSA_PRIVATE_KEY key;
  const WipeOnExit key_guard(key);
  Status status = make_rsa_key(key, sb20_public_exponent, sb20_modulus_bits);
  if (status != ZEB_SUCCESS) return status;
  status = make_sb20_key_files(files, key);
  if (status != ZEB_SUCCESS) return status;
  // Where it cannot be encrypted, for want of memory, it must not be written.
  const WritableBytes private_file = writable_view_of(files.private_key);
  return do_PrivateKey_Encrypt(key_file_mode_sb20, private_file.data(), length_of(private_file));
}

Status generate_key_pair(bool is_root, const char* base_name) {
  // Names first: one that is too long aborts before anything is made.
  const FileName public_name = is_root ? join_file_name(sb20_root_public_key_file, "")
                                       : join_file_name(base_name, "_V21.spk");
  const FileName private_name = is_root ? join_file_name(sb20_root_private_key_file, "")
                                        : join_file_name(base_name, "_V21.prv");
  Sb20KeyFiles files = {};
  const WipeOnExit files_guard(files);
  const Status status = make_stored_files(files);
  if (status != ZEB_SUCCESS) return status;
  store_sb20_key_pair(files);
  const std::array<OutputFile, 3> set = {{
      {sb20_efuse_file, files.efuse_data, FileAccess::owner_only},
      {public_name.data(), view_of(files.public_key), FileAccess::by_umask},
      {private_name.data(), view_of(files.private_key), FileAccess::owner_only},
  }};
  write_file_set(std::span(set).subspan(is_root ? 0 : 1));
  return ZEB_SUCCESS;
}

}  // namespace

}  // namespace sealwright

Status sb20_Generate_KeyPair(std::int32_t mode, const char* baseName) {
  return sealwright::generate_key_pair(mode == root_key_mode, baseName);
}
