#include <algorithm>
#include <array>
#include <string_view>

#include "artefact/key_files.h"
#include "sb10/public_key_info.h"
#include "sb20/public_key_info.h"

namespace {

template <typename Record>
Record copy_record(ByteView file) {
  Record record;
  std::ranges::copy(file, writable_view_of(record).begin());
  return record;
}

// The verifier takes the lengths that a file states, and with other ones another key than the one
// that is shown: a maker without the private key can find numbers that pass. So a proof counts only
// where all stated lengths are the record's own.

bool states_lengths(const Sb20PublicKeyFile& record) {
  return record.popSignatureLen == sizeof record.popSignature;
}
bool states_lengths(const Sb10PublicKeyFile& record) {
  return record.n.length == sizeof record.n.number && record.e.length == sizeof record.e.number &&
         record.signed_length == sizeof record.n + sizeof record.e &&
         record.signature_length == sizeof record.signature;
}

bool has_header(const Sb10PublicKeyFile& record) {
  std::array<char, sizeof record.text> text = {};
  std::ranges::copy(std::string_view(sb10_public_key_text), text.begin());
  return record.header_length == sizeof record.header_length + sizeof record.text &&
         std::ranges::equal(record.text, text) && record.zero == 0;
}

KeyFile read_sb20(ByteView file) {
  auto record = copy_record<Sb20PublicKeyFile>(file);
  const PublicKey key = to_public_key(record.publicKeyInfo.key);
  const bool proven =
      states_lengths(record) && verify_sb20_proof(writable_view_of(record)) == ZEB_SUCCESS;
  return {"2.1", key, proven};
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
  if (!has_header(record)) return std::nullopt;
  // The key as sealing takes it, whatever lengths the file states.
  std::array<std::uint8_t, 2 * sizeof record> joined;
  join_sb10_key(joined, record);
  RsaPublicKey1024 key;
  std::copy_n(joined.begin(), sizeof key, writable_view_of(key).begin());
  const bool proven = states_lengths(record) && verify_sb10_proof(record, joined) == ZEB_SUCCESS;
  return KeyFile{"1.1", to_public_key(key), proven};
}

}  // namespace

std::optional<KeyFile> read_public_key_file(ByteView file) {
  if (file.size() == sizeof(Sb20PublicKeyFile)) return read_sb20(file);
  if (file.size() == sizeof(Sb10PublicKeyInfoFile)) return read_sb10_root(file);
  if (file.size() == sizeof(Sb10PublicKeyFile)) return read_sb10_stage2(file);
  return std::nullopt;
}
