#include "sb10/boot_context.h"
#include "sb10/public_key_info.h"
#include "tests/support/binding_tests.h"

namespace {

struct Scheme10 {
  using Info = Sb10PublicKeyInfo;
  using Context = SB10_CONTEXT;
  static constexpr std::uint32_t efuse_length = 16;
  static constexpr std::uint32_t signature_length = 128;
  static constexpr std::size_t signature_at = 132;
  static constexpr auto generate_info = Generate_SB10_PublicKeyInfo;
  static constexpr auto validate_info = Validate_SB10_PublicKeyInfo;
  static constexpr auto generate_context = Generate_SB10_Context;
  static constexpr auto check_context = Check_SB10_Context;
  static Bytes tail() { return context_tail(16, "SB10_CONTEXT", 20); }
  static Bytes table() { return common_table(); }
};
INSTANTIATE_TYPED_TEST_SUITE_P(V11, Binding, Scheme10);

TEST(EntryTable, IsReturned) {
  std::uint32_t table[12] = {};
  EXPECT_EQ(save_SB10_FuncPtr(table), table);
  EXPECT_EQ(bytes_of(table), common_table());
}

}  // namespace
