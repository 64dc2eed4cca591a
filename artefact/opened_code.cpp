#include "artefact/opened_code.h"

#include <algorithm>
#include <system_error>

#include "base/wipe.h"
#include "crypto/aes_cbc.h"
#include "sb20/code_encryption.h"

namespace sealwright {

namespace {

constexpr std::size_t piece_length = 16UL * 1024;  // whole blocks; stays in the nearest cache

/// Decrypts a piece of the code in place, under the IV that the cipher has been given.
bool open_piece(AesCbcContext& cipher, WritableBytes piece) {
  return ZEB_AES_CBC_DecInit(&cipher) == ZEB_SUCCESS &&
         sealwright::aes_cbc_decrypt_message(&cipher, piece.data(), length_of(piece)) ==
             ZEB_SUCCESS;
}

/// Gives the cipher the last block of a piece as it is stored, the IV of the next one.
bool pass_on_iv(AesCbcContext& cipher, ByteView stored) {
  return ZEB_AES_SetInfo(&cipher, AES_USE_KEEP, nullptr, 0, stored.last(aes_block_length).data(),
                         aes_block_length, 0, 0) == ZEB_SUCCESS;
}

/// Piece by piece, so that no copy of the whole code is made. `expected` is as long as the code.
OpenedCode decrypt(const SB20_CONTEXT& context, ByteView code, ByteView efuse, ByteView expected) {
  AesCbcContext cipher;
  const WipeOnExit cipher_guard(cipher);
  const Status set_up = set_up_code_cipher(cipher, efuse.data(), length_of(efuse), &context);
  if (set_up != ZEB_SUCCESS) return {CodeState::wrong_fuses};
  ZEB_SHA1 hash = {};
  const WipeOnExit hash_guard(hash);
  sha1_init(hash);
  std::uint8_t opened[piece_length];
  const WipeOnExit opened_guard(opened);
  bool is_expected = code.size() == expected.size();
  for (std::size_t at = 0; at < code.size(); at += piece_length) {
    const ByteView stored = code.subspan(at, std::min(piece_length, code.size() - at));
    const WritableBytes piece = {opened, stored.size()};
    std::ranges::copy(stored, opened);
    if (!open_piece(cipher, piece) || !pass_on_iv(cipher, stored)) return {CodeState::wrong_fuses};
    is_expected = is_expected && std::ranges::equal(piece, expected.subspan(at, piece.size()));
    sha1_update(hash, piece);
  }
  Digest digest;
  sha1_final(hash, digest.data());
  return {CodeState::opened, to_hex(digest), is_expected};
}

}  // namespace

OpenedCode open_code(const SecuredBl1& bl1, ByteView image, ByteView efuse,
                     const std::optional<ByteView>& expected) {
  const ByteView code = image.first(bl1.code_size);
  const bool fuses_match = fuses_hold(efuse, root_info_of(bl1));
  const auto* context = std::get_if<SB20_CONTEXT>(&bl1.context);
  if (context == nullptr) {
    const bool is_expected = expected && std::ranges::equal(code, *expected);
    if (!fuses_match) return {CodeState::wrong_fuses, {}, is_expected};
    return {CodeState::opened, sha1_hex(code), is_expected};
  }
  if (!fuses_match) return {CodeState::wrong_fuses};
  if (code.size() % aes_block_length != 0) return {CodeState::not_whole_blocks};
  OpenedCode opened = decrypt(*context, code, efuse, expected.value_or(ByteView()));
  opened.is_expected = opened.is_expected && expected.has_value();
  return opened;
}

std::future<OpenedCode> start_open_code(const std::optional<SecuredBl1>& bl1, ByteView image,
                                        ByteView efuse, const std::optional<ByteView>& expected) {
  const auto task = [&bl1, image, efuse, &expected] {
    return bl1 ? open_code(*bl1, image, efuse, expected) : OpenedCode{};
  };
  try {
    return std::async(std::launch::async, task);
  } catch (const std::system_error&) {
    return std::async(std::launch::deferred, task);
  }
}

}  // namespace sealwright
