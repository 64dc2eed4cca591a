#include <algorithm>
#include <array>
#include <cstring>

#include "inspect/key_files.h"
#include "sb10/public_key_info.h"
#include "sb20/public_key_info.h"

namespace {

template <typename Record>
Record copy_record(ByteView file) {
  Record record;
  std::ranges::copy(file, writable_view_of(record).begin());
  return record;
}

KeyFile read_sb20(ByteView file) {
  auto record = copy_record<Sb20PublicKeyFile>(file);
  const PublicKey key = to_public_key(record.publicKeyInfo.key);
  return {"2.1", key, verify_sb20_proof(writable_view_of(record)) == ZEB_SUCCESS};
}

KeyFile read_sb10_root(ByteView file) {
  auto record = copy_record<Sb10PublicKeyInfoFile>(file);
  const auto& info = record.publicKeyInfo;
  const Status status =
      Verify_PSS_RSASignature2(view_of(info.key).data(), sizeof info.key, view_of(info).data(),
                               sizeof info, record.popSignature, sizeof record.popSignature);
  return {"1.1", to_public_key(info.key), status == ZEB_SUCCESS};
}

std::optional<KeyFile> read_sb10_stage2(ByteView file) {
  auto record = copy_record<Sb10PublicKeyFile>(file);
  if (std::strncmp(record.text, sb10_public_key_text, sizeof record.text) != 0) return std::nullopt;
  // The key as sealing takes it, whatever lengths the file states.
  std::array<std::uint8_t, 2 * sizeof record> joined;
  join_sb10_key(joined, record);
  RsaPublicKey1024 key;
  std::copy_n(joined.begin(), sizeof key, writable_view_of(key).begin());
  return KeyFile{"1.1", to_public_key(key), verify_sb10_proof(record, joined) == ZEB_SUCCESS};
}

}  // namespace

std::optional<KeyFile> read_public_key_file(ByteView file) {
  if (file.size() == sizeof(Sb20PublicKeyFile)) return read_sb20(file);
  if (file.size() == sizeof(Sb10PublicKeyInfoFile)) return read_sb10_root(file);
  if (file.size() == sizeof(Sb10PublicKeyFile)) return read_sb10_stage2(file);
  return std::nullopt;
}
