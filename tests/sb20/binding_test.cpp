#include "crypto/aes_cbc.h"
#include "sb20/boot_context.h"
#include "sb20/code_encryption.h"
#include "sb20/entry_table.h"
#include "sb20/public_key_info.h"
#include "tests/support/binding_tests.h"

namespace {

struct Scheme20 {
  using Info = Sb20PublicKeyInfo;
  using Context = SB20_CONTEXT;
  static constexpr std::uint32_t efuse_length = 20;
  static constexpr std::uint32_t signature_length = 256;
  static constexpr std::size_t signature_at = 272;
  static constexpr auto generate_info = Generate_SB20_PublicKeyInfo;
  static constexpr auto validate_info = Validate_SB20_PublicKeyInfo;
  static constexpr auto generate_context = Generate_SB20_Context;
  static constexpr auto check_context = Check_SB20_Context;
  static Bytes tail() { return context_tail(32, "SB20_CONTEXT", 64); }
  static Bytes table() {
    return joined(
        common_table(),
        table_of(Verify_PSS_RSASignature2, Make_AES_Param, zeb_AES_Encrypt, zeb_AES_Decrypt,
                 ZEB_AES_SetInfo, ZEB_AES_CBC_EncInit, ZEB_AES_CBC_EncUpdate, ZEB_AES_CBC_EncFinal,
                 ZEB_AES_CBC_DecInit, ZEB_AES_CBC_DecUpdate, ZEB_AES_CBC_DecFinal, Decrypt_Code));
  }
};
INSTANTIATE_TYPED_TEST_SUITE_P(V21, Binding, Scheme20);

}  // namespace
