#include "sb20/entry_table.h"

#include <algorithm>
#include <array>

#include "crypto/aes_cbc.h"
#include "crypto/rsa.h"
#include "sb20/code_encryption.h"
#include "sb20/records.h"
#include "scheme/entry_table.h"

void save_SB20_FuncPtr(std::uint32_t* table) {
  save_common_entries(table);
  const std::array<std::uint32_t, sb20_entry_count - common_entry_count> entries = {
      entry_word(Verify_PSS_RSASignature2), entry_word(Make_AES_Param),
      entry_word(zeb_AES_Encrypt),          entry_word(zeb_AES_Decrypt),
      entry_word(ZEB_AES_SetInfo),          entry_word(ZEB_AES_CBC_EncInit),
      entry_word(ZEB_AES_CBC_EncUpdate),    entry_word(ZEB_AES_CBC_EncFinal),
      entry_word(ZEB_AES_CBC_DecInit),      entry_word(ZEB_AES_CBC_DecUpdate),
      entry_word(ZEB_AES_CBC_DecFinal),     entry_word(Decrypt_Code),
  };
  std::copy(entries.begin(), entries.end(), table + common_entry_count);
}
