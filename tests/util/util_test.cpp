#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/bytes.h"
#include "util/dump.h"
#include "util/file.h"

namespace {

template <typename Print>
std::string printed_by(Print print) {
  testing::internal::CaptureStdout();
  print();
  return testing::internal::GetCapturedStdout();
}

TEST(Dump, PrintsLinesOfBytesAndWholeRowsOfWords) {
  const Bytes bytes = parse_hex("0F1E2D3C4B5A69788796A5B4C3D2E1F0A5");
  const std::pair<std::int32_t, std::string> dumps[] = {
      {0, ""},
      {3, "0F1E2D\n"},
      {-3, "\n"},
      {-32, ""},
      {17, "0F1E2D3C4B5A69788796A5B4C3D2E1F0\nA5\n"}};
  for (const auto& [length, text] : dumps) {
    EXPECT_EQ(printed_by([&] { mem_dump(bytes.data(), length); }), text) << length;
  }
  const std::uint32_t words[] = {0, 0xDEADBEEF, 10, 1, 2, 3, 4, 0xFFFFFFFF};
  const std::string rows =
      "title\n0x00000000, 0xDEADBEEF, 0x0000000A, 0x00000001, \n"
      "0x00000002, 0x00000003, 0x00000004, 0xFFFFFFFF, \n";
  for (const std::int32_t count : {0, 1, 4, 5}) {
    EXPECT_EQ(printed_by([&] { print_DWORD("title", words, count); }),
              rows.substr(0, count == 0  ? 6
                             : count < 5 ? 55
                                         : rows.size()));
  }
}

TEST(Files, ReaderKeepsAskingAShortFile) {
  const WorkingDirectory here;
  write_bytes("file", some_bytes(4));
  const pid_t child = fork();
  if (child == 0) {
    alarm(60);
    Bytes read(10);
    _exit(read_file("file", read.data(), 10) == 0 && read == read_bytes("file") ? 0 : 1);
  }
  usleep(100'000);
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, WNOHANG), 0);  // still at it
  ASSERT_EQ(system("echo more >> file"), 0);
  ASSERT_EQ(system("echo >> file"), 0);
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST(Files, EndsThatCommandsNeverMeet) {
  const WorkingDirectory here;
  write_bytes("file", some_bytes(10));
  Bytes read(11);
  EXPECT_EXIT(read_whole_or_fail(read, "file"), testing::ExitedWithCode(255), "");  // it has shrunk
  std::filesystem::resize_file("file", (std::uintmax_t{1} << 31) - 1);  // all of it a hole
  EXPECT_EQ(get_file_length("file"), 0x7FFFFFFF);
  EXPECT_EQ(printed_by([] { EXPECT_EQ(write_file("/missing/file", nullptr, 0), 16); }),
            "file open error\n");
  EXPECT_EQ(write_file("file", read.data(), -1), 0);  // no byte at all
  EXPECT_EQ(read_bytes("file"), Bytes());
}

}  // namespace
