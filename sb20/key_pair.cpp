#include "sb20/key_pair.h"

#include <array>
#include <span>

#include "base/wipe.h"
#include "crypto/checked_signature.h"
#include "sb20/key_store.h"
#include "sb20/public_key_info.h"
#include "scheme/key_pair.h"
#include "scheme/private_key_file.h"
#include "util/file.h"

namespace {

constexpr Digit public_exponent = 3;
constexpr std::uint32_t modulus_bits = 2048;

/// What the files of a key pair hold.
struct KeyPairFiles {
  std::uint8_t efuse_data[sb20_efuse_length];
  Sb20PublicKeyFile public_key;
  Sb20PrivateKeyFile private_key;
};

Status fill_key_files(KeyPairFiles& files, const ZEB_RSA_PRIVATE_KEY& key) {
  Sb20PublicKeyInfo& info = files.public_key.publicKeyInfo;
  std::uint32_t efuse_length = sizeof files.efuse_data;
  const Status status = Generate_SB20_PublicKeyInfo(
      nullptr, 0, key.n, key.nWords, key.e, key.eWords, files.efuse_data, &efuse_length, &info);
  if (status != ZEB_SUCCESS) return status;

  const KeyNumber numbers[] = {
      {key.n, key.nWords}, {key.e, key.eWords},   {key.d, key.dWords},   {key.p, key.pWords},
      {key.q, key.qWords}, {key.dP, key.dPWords}, {key.dQ, key.dQWords}, {key.qInv, key.qInvWords}};
  const WritableBytes private_file = writable_view_of(files.private_key);
  const ByteView items = write_item_list(private_file, numbers);
  files.public_key.popSignatureLen = sizeof files.public_key.popSignature;
  const Status proof = sign_message_checked(files.public_key.popSignature, {rsa_mode_crt, items},
                                            view_of(info.key).data(), view_of(info));
  if (proof != ZEB_SUCCESS) return proof;
  // Where it cannot be encrypted, for want of memory, it must not be written.
  return do_PrivateKey_Encrypt(key_file_mode_v21, private_file.data(), length_of(private_file));
}

}  // namespace

Status sb20_Generate_KeyPair(std::int32_t mode, const char* baseName) {
  const bool is_root = mode == root_key_mode;
  // Names first: one that is too long aborts before anything is made.
  const FileName public_name = is_root ? join_file_name(sb20_public_key_info_file, "")
                                       : join_file_name(baseName, "_V21.spk");
  const FileName private_name =
      is_root ? join_file_name(sb20_private_key_file, "") : join_file_name(baseName, "_V21.prv");

  ZEB_RSA_PRIVATE_KEY key;
  const WipeOnExit key_guard(key);
  KeyPairFiles files = {};
  const WipeOnExit files_guard(files);
  make_rsa_key(key, public_exponent, modulus_bits);
  const Status status = fill_key_files(files, key);
  if (status != ZEB_SUCCESS) return status;

  const std::array<OutputFile, 3> set = {{
      {sb20_efuse_file, files.efuse_data, FileAccess::owner_only},
      {public_name.data(), view_of(files.public_key), FileAccess::by_umask},
      {private_name.data(), view_of(files.private_key), FileAccess::owner_only},
  }};
  write_file_set(std::span(set).subspan(is_root ? 0 : 1));
  return ZEB_SUCCESS;
}
