#include "seal/key_record.h"

#include <algorithm>
#include <cstring>

#include "artefact/private_key_file.h"
#include "artefact/public_key_file.h"
#include "sb10/key_files.h"
#include "sb20/key_files.h"
#include "scheme/private_key_file.h"

namespace sealwright {

namespace {

// Digits of a number that is stored as bytes.
template <std::size_t Length>
std::array<Digit, Length / digit_bytes> digits_of(const std::uint8_t (&number)[Length]) {
  std::array<Digit, Length / digit_bytes> digits;
  std::memcpy(digits.data(), number, Length);
  return digits;
}

/// Binds n and e by the scheme's own function, which takes them as numbers.
template <typename Stored, typename Assemble>
bool bind(const Stored& key, Assemble assemble) {
  const auto n = digits_of(key.n);
  const auto e = digits_of(key.e);
  return assemble(KeyNumber{n.data(), n.size()}, KeyNumber{e.data(), e.size()}) == ZEB_SUCCESS;
}

/// The part of the room that was used for the file of one kind.
template <typename File>
void encrypt_into(PrivateRecord& record, File& file, std::int32_t mode) {
  const WritableBytes plain = writable_view_of(file);
  if (do_PrivateKey_Encrypt(mode, plain.data(), length_of(plain)) != ZEB_SUCCESS) return;
  std::ranges::copy(plain, record.room.begin());
  record.length = plain.size();
}

void make_sb20(PrivateRecord& record, const ZEB_RSA_PRIVATE_KEY& numbers) {
  Sb20PrivateKeyFile file;
  const WipeOnExit guard(file);
  assemble_sb20_private_key(file, numbers);
  encrypt_into(record, file, key_file_mode_sb20);
}

void make_sb10(PrivateRecord& record, const ZEB_RSA_PRIVATE_KEY& numbers, KeyRole role) {
  Sb10RootPrivateKeyFile root = {};
  const WipeOnExit root_guard(root);
  assemble_sb10_private_items(root.items, numbers);
  if (role == KeyRole::root) return encrypt_into(record, root, key_file_mode_sb10);
  Sb10PrivateKeyFile file;
  const WipeOnExit file_guard(file);
  assemble_sb10_private_key(file, root.items);
  encrypt_into(record, file, key_file_mode_sb10);
}

}  // namespace

bool assemble_public_record(PublicRecord& record, const PublicKey& key, KeyRole role) {
  const bool is_root = role == KeyRole::root;
  const WritableBytes efuse = WritableBytes(record.efuse_room);
  bool bound = true;
  if (const auto* stored = std::get_if<RsaPublicKey2048>(&key.stored)) {
    auto& file = record.file.emplace<Sb20PublicKeyFile>();
    bound = bind(*stored, [&](const KeyNumber& n, const KeyNumber& e) {
      return assemble_sb20_public_key(file, efuse.first(sb20_efuse_length), n, e);
    });
    // The data that a stage-2 key is bound to is known to nobody.
    if (!is_root) wipe(efuse.data(), efuse.size());
  } else if (is_root) {
    auto& file = record.file.emplace<Sb10RootPublicKeyFile>();
    bound = bind(std::get<RsaPublicKey1024>(key.stored), [&](const auto& n, const auto& e) {
      return assemble_sb10_root_public_key(file, efuse.first(sb10_efuse_length), n, e);
    });
  } else {
    assemble_sb10_public_key(record.file.emplace<Sb10PublicKeyFile>(),
                             std::get<RsaPublicKey1024>(key.stored));
  }
  record.efuse_length = is_root ? facts_of(key.scheme).efuse_length : 0;
  return bound;
}

void adopt_binding(PublicRecord& record, ByteView assembled, ByteView efuse) {
  if (assembled.size() != record.bytes().size()) return;
  std::visit(
      [&](auto& file) {
        if constexpr (requires { file.publicKeyInfo; }) {
          auto& info = file.publicKeyInfo;
          const ByteView hmac = assembled.first(sizeof info).last(sizeof info.hmac);
          std::ranges::copy(hmac, info.hmac);
        }
      },
      record.file);
  if (efuse.size() == record.efuse_length) std::ranges::copy(efuse, record.efuse_room.begin());
}

Digest digest_of(const PublicRecord& record) {
  Digest digest = {};
  if (const auto* sb20 = std::get_if<Sb20PublicKeyFile>(&record.file)) {
    digest_sb20_proof(digest.data(), *sb20);
  } else if (const auto* root = std::get_if<Sb10RootPublicKeyFile>(&record.file)) {
    digest_sb10_root_proof(digest.data(), *root);
  } else {
    digest_sb10_proof(digest.data(), std::get<Sb10PublicKeyFile>(record.file));
  }
  return digest;
}

void attach_proof(PublicRecord& record, ByteView signature) {
  if (auto* sb20 = std::get_if<Sb20PublicKeyFile>(&record.file)) {
    attach_sb20_proof(*sb20, signature);
  } else if (auto* root = std::get_if<Sb10RootPublicKeyFile>(&record.file)) {
    attach_sb10_root_proof(*root, signature);
  } else {
    attach_sb10_proof(std::get<Sb10PublicKeyFile>(record.file), signature);
  }
}

bool record_holds(const PublicRecord& record, const PublicKey& key) {
  const auto found = read_public_key_file(record.bytes());
  if (!found || !found->proven || !is_same_key(found->key, key)) return false;
  if (record.efuse_length == 0) return true;
  return found->root_info && fuses_hold(record.efuse(), *found->root_info);
}

bool make_private_record(PrivateRecord& record, PrivateKey& key, const ZEB_RSA_PRIVATE_KEY& numbers,
                         Scheme scheme, KeyRole role) {
  if (scheme == Scheme::sb20) {
    make_sb20(record, numbers);
  } else {
    make_sb10(record, numbers, role);
  }
  wipe_dead_stack();
  return record.length != 0 && open_private_key_file(key, record.bytes()) && numbers_agree(key);
}

}  // namespace sealwright
