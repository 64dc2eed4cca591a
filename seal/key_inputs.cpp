#include "seal/key_inputs.h"

#include <utility>

#include "artefact/escape.h"
#include "sb10/key_store.h"
#include "sb20/key_store.h"

namespace sealwright {

namespace {

std::string in_bytes(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " byte" : " bytes");
}

/// What a file that is no public-key file may be instead.
Complaint refuse_as_public(const InputFile& file) {
  PrivateKey key;
  if (open_private_key_file(key, file.bytes())) {
    return refuse(file.name, "a private-key file; name the public one, which ends in .spk");
  }
  return refuse(file.name, "no public-key file (" + in_bytes(file.bytes().size()) +
                               "); a .spk file of scheme 2.1 has 548 bytes, of scheme 1.1 308");
}

/// The length of a private-key file.
std::size_t private_length(Scheme scheme, KeyRole role) {
  if (scheme == Scheme::sb20) return sizeof(Sb20PrivateKeyFile);
  return role == KeyRole::root ? sizeof(Sb10RootPrivateKeyFile) : sizeof(Sb10PrivateKeyFile);
}

}  // namespace

Objection read_stage2_file(Stage2File& stage2, const char* name) {
  if (Objection objection = read_input(stage2.file, name)) return objection;
  const auto found = read_public_key_file(stage2.file.bytes());
  if (!found) return refuse_as_public(stage2.file);
  if (found->key.scheme == Scheme::sb10 && found->root_info) {
    return refuse(name, "a root public-key file; name that of a stage-2 key, which ends in .spk");
  }
  if (!is_of_the_format(found->key)) {
    return refuse(name, std::string("damaged, or made by something else: its key is not one of ") +
                            "scheme " + facts_of(found->key.scheme).name);
  }
  if (!found->proven) {
    return refuse(name,
                  "the proof that its maker holds the private key does not verify: the file is "
                  "damaged or forged; get it again from its maker");
  }
  stage2.key = found->key;
  return std::nullopt;
}

Objection read_private_file(PrivateFile& file, std::string name) {
  if (Objection objection = read_input(file.file, std::move(name))) return objection;
  const ByteView bytes = file.file.bytes();
  if (!open_private_key_file(file.key, bytes)) {
    return refuse(file.file.name, "no private-key file, or a damaged one (" +
                                      in_bytes(bytes.size()) +
                                      "); they have 1200 bytes in scheme 2.1, 608 or 640 in 1.1");
  }
  if (numbers_agree(file.key)) return std::nullopt;
  return refuse(file.file.name, "damaged: the numbers of the key do not agree; use a back-up");
}

Objection read_private_half(PrivateFile& file, std::string name, KeyRole role,
                            const PublicKey& public_half, const std::string& public_name) {
  if (Objection objection = read_private_file(file, std::move(name))) return objection;
  const std::size_t length = private_length(public_half.scheme, role);
  const std::size_t found = file.file.bytes().size();
  if (found != length) {
    return refuse(file.file.name, in_bytes(found) + ": the private half of " +
                                      show_name(public_name) + " has " + std::to_string(length));
  }
  if (is_same_key(public_half_of(file.key), public_half)) return std::nullopt;
  return refuse(file.file.name, "the private half of another key than " + show_name(public_name));
}

const KeyNames& key_names(Scheme scheme) {
  static constexpr KeyNames sb20 = {sb20_root_public_key_file, sb20_root_private_key_file,
                                    sb20_efuse_file, "_V21.spk", "_V21.prv"};
  static constexpr KeyNames sb10 = {sb10_root_public_key_file, sb10_root_private_key_file,
                                    sb10_efuse_file, ".spk", ".prv"};
  return scheme == Scheme::sb20 ? sb20 : sb10;
}

}  // namespace sealwright
