#include "artefact/opened_code.h"

#include <algorithm>
#include <utility>

#include "base/wipe.h"
#include "sb20/code_encryption.h"

namespace sealwright {

namespace {

constexpr std::size_t piece_length = 16UL * 1024;  // whole blocks; stays in the nearest cache

/// Decrypts a piece of the code in place, under the IV that the cipher has been given.
bool open_piece(AesCbcContext& cipher, WritableBytes piece) {
  return ZEB_AES_CBC_DecInit(&cipher) == ZEB_SUCCESS &&
         aes_cbc_decrypt_message(&cipher, piece.data(), length_of(piece)) == ZEB_SUCCESS;
}

/// Gives the cipher the last block of a piece as it is stored, the IV of the next one.
bool pass_on_iv(AesCbcContext& cipher, ByteView stored) {
  return ZEB_AES_SetInfo(&cipher, AES_USE_KEEP, nullptr, 0, stored.last(aes_block_length).data(),
                         aes_block_length, 0, 0) == ZEB_SUCCESS;
}

/// Whether the file goes on with these bytes.
bool goes_on_with(FileSource& file, ByteView bytes) {
  while (!bytes.empty()) {
    const ByteView piece = file.next(bytes.size());
    if (piece.empty() || !std::ranges::equal(piece, bytes.first(piece.size()))) return false;
    bytes = bytes.subspan(piece.size());
  }
  return true;
}

}  // namespace

CodeOpener::CodeOpener(const std::optional<SecuredBl1>& bl1, ByteView efuse, FileSource* expected)
    : expected_(expected) {
  if (!bl1) return;
  sha1_init(hash_);
  left_ = bl1->code_size;
  const auto* context = std::get_if<SB20_CONTEXT>(&bl1->context);
  is_encrypted_ = context != nullptr;
  result_.state = CodeState::wrong_fuses;
  if (fuses_hold(efuse, root_info_of(*bl1))) {
    const bool whole_blocks = !is_encrypted_ || left_ % aes_block_length == 0;
    result_.state = whole_blocks ? CodeState::opened : CodeState::not_whole_blocks;
  }
  if (is_encrypted_ && result_.state == CodeState::opened &&
      set_up_code_cipher(cipher_, efuse.data(), length_of(efuse), context) != ZEB_SUCCESS) {
    result_.state = CodeState::wrong_fuses;
  }
  result_.is_expected = expected_ != nullptr && expected_->size() == left_;
}

CodeOpener::~CodeOpener() {
  wipe(&cipher_, sizeof cipher_);
  wipe(&hash_, sizeof hash_);
}

void CodeOpener::add(ByteView image) {
  const ByteView code = image.first(std::min(left_, image.size()));
  left_ -= code.size();
  if (!is_encrypted_) {
    take(code);
  } else {
    decrypt(code);
  }
}

void CodeOpener::decrypt(ByteView stored) {
  std::uint8_t opened[piece_length];
  const WipeOnExit opened_guard(opened);
  while (result_.state == CodeState::opened && !stored.empty()) {
    const ByteView next = stored.first(std::min(piece_length, stored.size()));
    const WritableBytes piece = {opened, next.size()};
    std::ranges::copy(next, opened);
    if (open_piece(cipher_, piece) && pass_on_iv(cipher_, next)) {
      take(piece);
    } else {
      result_.state = CodeState::wrong_fuses;
    }
    stored = stored.subspan(next.size());
  }
}

void CodeOpener::take(ByteView opened) {
  if (result_.state == CodeState::opened) sha1_update(hash_, opened);
  result_.is_expected = result_.is_expected && goes_on_with(*expected_, opened);
}

OpenedCode CodeOpener::finish() {
  const bool opened = result_.state == CodeState::opened;
  // What could not be decrypted was not compared.
  result_.is_expected = result_.is_expected && (opened || !is_encrypted_);
  if (opened) {
    Digest digest;
    sha1_final(hash_, digest.data());
    result_.sha1 = to_hex(digest);
  }
  return std::move(result_);
}

}  // namespace sealwright
