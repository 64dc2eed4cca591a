#include "artefact/public_key_file.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "sb10/public_key_info.h"
#include "sb20/public_key_info.h"

namespace sealwright {

namespace {

/// A record from the start of at least as many bytes.
template <typename Record>
Record copy_record(ByteView file) {
  Record record;
  std::ranges::copy(file.first(sizeof record), writable_view_of(record).begin());
  return record;
}

// The verifier takes the lengths that a file states, and with other ones another key than the one
// that is shown: a maker without the private key can find numbers that pass. So a proof counts only
// where all stated lengths are the format's own.

bool states_lengths(const Sb20PublicKeyFile& record) {
  const RsaPublicKey2048& key = record.publicKeyInfo.key;
  return key.nLen == sizeof key.n && key.eLen == sizeof key.e &&
         record.popSignatureLen == sizeof record.popSignature;
}
bool states_key_lengths(const Sb10PublicKeyFile& record) {
  return record.n.length == sizeof record.n.number && record.e.length == sizeof record.e.number;
}
bool states_lengths(const Sb10PublicKeyFile& record) {
  return states_key_lengths(record) && record.signed_length == sizeof record.n + sizeof record.e &&
         record.signature_length == sizeof record.signature;
}

bool has_header(const Sb10PublicKeyFile& record) {
  std::array<char, sizeof record.text> text = {};
  std::ranges::copy(std::string_view(sb10_public_key_text), text.begin());
  return record.header_length == sizeof record.header_length + sizeof record.text &&
         std::ranges::equal(record.text, text) && record.zero == 0;
}

PublicKeyFile read_sb20(ByteView file) {
  auto record = copy_record<Sb20PublicKeyFile>(file);
  const Sb20PublicKeyInfo info = record.publicKeyInfo;
  const bool proven =
      states_lengths(record) && verify_sb20_proof(writable_view_of(record)) == ZEB_SUCCESS;
  return {to_public_key(info.key), info, proven};
}

PublicKeyFile read_sb10_root(ByteView file) {
  auto record = copy_record<Sb10RootPublicKeyFile>(file);
  const bool proven = verify_sb10_root_proof(record) == ZEB_SUCCESS;
  return {to_public_key(record.publicKeyInfo.key), record.publicKeyInfo, proven};
}

std::optional<PublicKeyFile> read_sb10_stage2(ByteView file) {
  auto record = copy_record<Sb10PublicKeyFile>(file);
  if (!has_header(record)) return std::nullopt;
  // The key as sealing takes it, whatever lengths the file states.
  std::array<std::uint8_t, 2 * sizeof record> joined;
  join_sb10_key(joined, record);
  PublicKey key = to_public_key(copy_record<RsaPublicKey1024>(joined));
  key.regular = key.regular && states_key_lengths(record);
  const bool proven = states_lengths(record) && verify_sb10_proof(record, joined) == ZEB_SUCCESS;
  return PublicKeyFile{key, std::nullopt, proven};
}

// The schemes' checks wipe an info that fails, so they are given a copy.
Status validate(ByteView efuse, Sb20PublicKeyInfo info) {
  return Validate_SB20_PublicKeyInfo(efuse.data(), length_of(efuse), &info);
}
Status validate(ByteView efuse, Sb10PublicKeyInfo info) {
  return Validate_SB10_PublicKeyInfo(efuse.data(), length_of(efuse), &info);
}

}  // namespace

std::optional<PublicKeyFile> read_public_key_file(ByteView file) {
  if (file.size() == sizeof(Sb20PublicKeyFile)) return read_sb20(file);
  if (file.size() == sizeof(Sb10RootPublicKeyFile)) return read_sb10_root(file);
  if (file.size() == sizeof(Sb10PublicKeyFile)) return read_sb10_stage2(file);
  return std::nullopt;
}

std::optional<RootInfo> read_root_info(ByteView file) {
  const std::size_t size = file.size();
  if (size == sizeof(Sb20PublicKeyFile) || size == sizeof(Sb20PublicKeyInfo)) {
    return copy_record<Sb20PublicKeyInfo>(file);
  }
  if (size == sizeof(Sb10RootPublicKeyFile) || size == sizeof(Sb10PublicKeyInfo)) {
    return copy_record<Sb10PublicKeyInfo>(file);
  }
  return std::nullopt;
}

PublicKey root_key_of(const RootInfo& info) {
  return std::visit([](const auto& bound) { return to_public_key(bound.key); }, info);
}

bool fuses_hold(ByteView efuse, const RootInfo& info) {
  return std::visit([&](const auto& bound) { return validate(efuse, bound); }, info) == ZEB_SUCCESS;
}

}  // namespace sealwright
