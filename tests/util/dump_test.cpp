#include "util/dump.h"

#include <gtest/gtest.h>

#include <ctime>

#include "crypto/bytes.h"
#include "tests/support/files.h"
#include "util/build_info.h"

namespace {

template <typename Print>
std::string printed_by(Print print) {
  testing::internal::CaptureStdout();
  print();
  return testing::internal::GetCapturedStdout();
}

TEST(Dump, PrintsUpperCaseHex) {
  Bytes bytes(17);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(0xF1 - i);
  const std::string line = "F1F0EFEEEDECEBEAE9E8E7E6E5E4E3E2\n";
  const std::pair<std::int32_t, std::string> cases[] = {
      {0, ""}, {3, "F1F0EF\n"}, {16, line}, {17, line + "E1\n"}, {-3, "\n"}, {-32, ""}};
  for (const auto& [length, expected] : cases) {
    EXPECT_EQ(printed_by([&] { mem_dump(bytes.data(), length); }), expected) << length;
  }
  EXPECT_EQ(printed_by([] { prn_DWORD(0); }), "0x00000000, ");
  EXPECT_EQ(printed_by([] { prn_DWORD(0xDEADBEEF); }), "0xDEADBEEF, ");
}

TEST(Dump, PrintsWholeRowsOfWords) {
  const std::uint32_t words[] = {0, 0xDEADBEEF, 10, 1, 2, 3, 4, 0xFFFFFFFF};
  const std::string row = "0x00000000, 0xDEADBEEF, 0x0000000A, 0x00000001, \n";
  const std::string second_row = "0x00000002, 0x00000003, 0x00000004, 0xFFFFFFFF, \n";
  const std::pair<std::int32_t, std::string> cases[] = {
      {0, ""}, {1, row}, {4, row}, {5, row + second_row}};
  for (const auto& [count, rows] : cases) {
    EXPECT_EQ(printed_by([&] { print_DWORD("title", words, count); }), "title\n" + rows);
  }
}

TEST(BuildInfo, HoldsTimeAndTag) {
  Bytes room(50, 0xEE);
  const auto before = static_cast<std::uint32_t>(std::time(nullptr));
  mk_BL_Info(&room[1]);
  const std::uint32_t made = load_le32(&room[5]);
  EXPECT_TRUE(made >= before && made <= static_cast<std::uint32_t>(std::time(nullptr)));
  const std::string tag = "Vextral T.QRV Stage2Key";
  Bytes expected(50);
  expected.front() = expected.back() = 0xEE;
  store_le32(&expected[5], made);
  std::copy(tag.begin(), tag.end(), expected.begin() + 13);
  EXPECT_EQ(room, expected);
}

}  // namespace
