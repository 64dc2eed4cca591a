#include "artefact/recognised_file.h"

#include <utility>

namespace sealwright {

namespace {

FileContent recognise_content(const FileScan& scan) {
  if (auto bl1 = recognise_secured_bl1(scan)) {
    const bool signed_by_root = verify_bl1_signature(*bl1, scan);
    return Bl1File{*bl1, root_key_of(*bl1), stage2_key_of(*bl1), signed_by_root};
  }
  for (const Scheme scheme : {Scheme::sb10, Scheme::sb20}) {
    if (scan.size == facts_of(scheme).efuse_length) return EfuseFile{scheme};
  }
  if (scan.size != scan.end.size()) return UnknownFile{};  // longer than any key file
  if (auto key = read_public_key_file(scan.end)) return *key;
  if (auto key = read_private_key_file(scan.end)) return *key;
  return UnknownFile{};
}

}  // namespace

RecognisedFile recognise_file(FileScan scan) {
  FileContent content = recognise_content(scan);
  return {std::move(scan), std::move(content)};
}

bool may_be_bl2(const FileContent& content) {
  if (const auto* file = std::get_if<PublicKeyFile>(&content)) {
    return !file->proven;
  }
  return std::holds_alternative<UnknownFile>(content) || std::holds_alternative<EfuseFile>(content);
}

bool has_signed_bl2(const PublicKey& key, const FileScan& file) {
  const std::size_t length = facts_of(key.scheme).modulus_length;
  if (file.size < length) return false;
  return has_signed(key, digest_before(file, length, {}), ByteView(file.end).last(length));
}

}  // namespace sealwright
