#include "scheme/entry_table.h"

#include <algorithm>
#include <array>

#include "crypto/mem.h"
#include "crypto/rsa.h"
#include "crypto/sha1.h"

namespace sealwright {

void save_common_entries(std::uint32_t* table) {
  const std::array<std::uint32_t, common_entry_count> entries = {
      // Memory primitives.
      entry_word(tmkx_memcmp), entry_word(tmkx_memcpy), entry_word(tmkx_memset),
      entry_word(tmkx_memxor),
      // SHA-1.
      entry_word(ZEB_SHA1_Init), entry_word(ZEB_SHA1_Update), entry_word(ZEB_SHA1_Final),
      // HMAC.
      entry_word(ZEB_SHA1_HMAC_SetInfo), entry_word(ZEB_SHA1_HMAC_Init),
      entry_word(ZEB_SHA1_HMAC_Update), entry_word(ZEB_SHA1_HMAC_Final),
      // Signatures.
      entry_word(Verify_PSS_RSASignature)};
  std::copy(entries.begin(), entries.end(), table);
}

}  // namespace sealwright
