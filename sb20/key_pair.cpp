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

Status sb20_Generate_KeyPair(std::int32_t mode, const char* baseName) {
  const bool is_root = mode == root_key_mode;
  // Names first: one that is too long aborts before anything is made.
  const sealwright::FileName public_name =
      is_root ? sealwright::join_file_name(sb20_public_key_info_file, "")
              : sealwright::join_file_name(baseName, "_V21.spk");
  const sealwright::FileName private_name =
      is_root ? sealwright::join_file_name(sb20_private_key_file, "")
              : sealwright::join_file_name(baseName, "_V21.prv");

  ZEB_RSA_PRIVATE_KEY key;
  const WipeOnExit key_guard(key);
  sealwright::Sb20KeyFiles files = {};
  const WipeOnExit files_guard(files);
  Status status =
      make_rsa_key(key, sealwright::sb20_public_exponent, sealwright::sb20_modulus_bits);
  if (status != ZEB_SUCCESS) return status;
  status = sealwright::make_sb20_key_files(files, key);
  if (status != ZEB_SUCCESS) return status;
  // Where it cannot be encrypted, for want of memory, it must not be written.
  const WritableBytes private_file = writable_view_of(files.private_key);
  status = do_PrivateKey_Encrypt(key_file_mode_v21, private_file.data(), length_of(private_file));
  if (status != ZEB_SUCCESS) return status;

  const std::array<sealwright::OutputFile, 3> set = {{
      {sb20_efuse_file, files.efuse_data, sealwright::FileAccess::owner_only},
      {public_name.data(), view_of(files.public_key), sealwright::FileAccess::by_umask},
      {private_name.data(), view_of(files.private_key), sealwright::FileAccess::owner_only},
  }};
  sealwright::write_file_set(std::span(set).subspan(is_root ? 0 : 1));
  return ZEB_SUCCESS;
}
