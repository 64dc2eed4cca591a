#include "sb10/public_key_file.h"

#include <algorithm>
#include <iterator>

#include "sb10/key_buffers.h"
#include "sb20/key_buffers.h"
#include "util/abort.h"
#include "util/file.h"

void read_sb10_public_key_file(const char* path) {
  auto* record = reinterpret_cast<std::uint8_t*>(&sb10_pubkey_file);
  read_record(path, record, sizeof sb10_pubkey_file);
  std::fill(std::begin(publicKey), std::end(publicKey), std::uint8_t{0});
  const std::uint32_t n_length = sb10_pubkey_file.n_length;
  const std::uint32_t e_length = sb10_pubkey_file.e_length;
  if (n_length > sizeof publicKey) abort_on_overflow();
  publicKeyLen = n_length + e_length;

  constexpr std::uint32_t n_offset = offsetof(Sb10PublicKeyFile, n);
  constexpr std::uint32_t e_offset = offsetof(Sb10PublicKeyFile, e);
  const bool inside = n_length <= sizeof sb10_pubkey_file - n_offset &&
                      e_length <= sizeof sb10_pubkey_file - e_offset;
  if (!inside) return;
  // Both fit the 1024 bytes of the key buffer: the whole record is shorter than half of it.
  static_assert(2 * sizeof(Sb10PublicKeyFile) <= sizeof publicKey);
  std::copy_n(record + n_offset, n_length, publicKey);
  std::copy_n(record + e_offset, e_length, publicKey + n_length);
}
