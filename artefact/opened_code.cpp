#include "artefact/opened_code.h"

#include <algorithm>
#include <system_error>

#include "artefact/public_key.h"
#include "base/wipe.h"
#include "crypto/aes_cbc.h"
#include "crypto/sha1.h"
#include "sb20/code_encryption.h"

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

/// Piece by piece, so that no copy of the whole code is made.
std::string decrypted_sha1(const SB20_CONTEXT& context, ByteView efuse, ByteView code) {
  AesCbcContext cipher;
  const WipeOnExit cipher_guard(cipher);
  const Status set_up = set_up_code_cipher(cipher, efuse.data(), length_of(efuse), &context);
  if (set_up != ZEB_SUCCESS) return {};
  ZEB_SHA1 hash = {};
  const WipeOnExit hash_guard(hash);
  ZEB_SHA1_Init(&hash);
  std::uint8_t opened[piece_length];
  const WipeOnExit opened_guard(opened);
  while (!code.empty()) {
    const ByteView piece = code.first(std::min(piece_length, code.size()));
    std::ranges::copy(piece, opened);
    if (!open_piece(cipher, {opened, piece.size()}) || !pass_on_iv(cipher, piece)) return {};
    ZEB_SHA1_Update(&hash, opened, length_of(piece));
    code = code.subspan(piece.size());
  }
  std::uint8_t digest[sha1_digest_length];
  ZEB_SHA1_Final(&hash, digest);
  return to_hex(digest);
}

}  // namespace

std::string opened_code_sha1(const SecuredBl1& bl1, ByteView efuse) {
  const auto* context = std::get_if<SB20_CONTEXT>(&bl1.context);
  if (context == nullptr) return sha1_hex(bl1.code);
  if (bl1.code.size() % aes_block_length != 0) return {};
  return decrypted_sha1(*context, efuse, bl1.code);
}

std::future<std::string> start_opened_code_sha1(const SecuredBl1& bl1, ByteView efuse) {
  const auto task = [&bl1, efuse] { return opened_code_sha1(bl1, efuse); };
  try {
    return std::async(std::launch::async, task);
  } catch (const std::system_error&) {
    return std::async(std::launch::deferred, task);
  }
}
