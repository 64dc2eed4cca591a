#include "util/file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/files.h"

namespace {

mode_t mode_of(const char* path) {
  struct stat status = {};
  EXPECT_EQ(stat(path, &status), 0);
  return status.st_mode & 07777;
}

TEST(Files, ComeBackAsWritten) {
  const WorkingDirectory here;
  write_bytes("file", counted_bytes(5000));  // a longer file is cut
  for (const std::int32_t size : {0, 1, 255, 256, 512, 600}) {
    const Bytes bytes = counted_bytes(static_cast<std::size_t>(size));
    EXPECT_EQ(write_file("file", bytes.data(), size), 0);
    EXPECT_EQ(read_bytes("file"), bytes);
    EXPECT_EQ(get_file_length("file"), size);
    Bytes read(bytes.size() + 1, 0xEE);
    EXPECT_EQ(read_file("file", read.data(), size), 0);
    EXPECT_EQ(read, joined(bytes, {0xEE}));
  }
}

TEST(Files, RecordTakesWhatThereIs) {
  const WorkingDirectory here;
  write_bytes("file", counted_bytes(20));
  const Bytes longer = joined(counted_bytes(20), Bytes(4));
  for (const std::int32_t size : {0, 8, 20, 24}) {
    Bytes read(25, 0xEE);
    EXPECT_EQ(read_record({read.data(), static_cast<std::size_t>(size)}, "file"), 20);
    const auto count = static_cast<std::size_t>(size);
    EXPECT_EQ(read, joined(slice(longer, 0, count), Bytes(25 - count, 0xEE)));
  }
  Bytes whole(24, 0xEE);
  EXPECT_EQ(read_whole_or_abort({whole.data(), 24}, "file"), 20);
  EXPECT_EQ(whole, longer);
  EXPECT_EQ(read_whole_or_abort({whole.data(), 20}, "file"), 20);
  EXPECT_EXIT(read_whole_or_abort({whole.data(), 19}, "file"), testing::KilledBySignal(SIGABRT),
              "^$");
}

ssize_t note_request(void* requests, const char* /*bytes*/, std::size_t count) {
  // Whether an empty request arrives here is the C library's affair.
  if (count != 0) static_cast<std::vector<std::size_t>*>(requests)->push_back(count);
  return static_cast<ssize_t>(count);
}

TEST(Files, AreWrittenInBlocksOf256) {
  const std::map<std::int32_t, std::vector<std::size_t>> cases = {
      {-1, {}},     {0, {}},         {1, {1}},          {255, {255}},
      {256, {256}}, {257, {256, 1}}, {512, {256, 256}}, {600, {256, 256, 88}}};
  const Bytes bytes(600);
  for (const auto& [count, expected] : cases) {
    std::vector<std::size_t> requests;
    std::FILE* stream = fopencookie(&requests, "wb", {nullptr, note_request, nullptr, nullptr});
    std::setvbuf(stream, nullptr, _IONBF, 0);
    write_in_blocks(stream, bytes.data(), count);
    std::fclose(stream);
    EXPECT_EQ(requests, expected) << count;
  }
}

TEST(Files, PrivateOnesAreTheOwnersAlone) {
  const WorkingDirectory here;
  const mode_t old_mask = umask(0);
  write_bytes("older", counted_bytes(1000));
  chmod("older", 0644);
  for (const char* name : {"new", "older"}) {
    const Bytes secret = counted_bytes(300);
    const OutputFile set[] = {{name, secret, FileAccess::owner_only}};
    write_file_set(set);
    EXPECT_EQ(read_bytes(name), counted_bytes(300));
    EXPECT_EQ(mode_of(name), 0600U) << name;
  }
  write_file("public", counted_bytes(1).data(), 1);
  EXPECT_EQ(mode_of("public"), 0666U);
  umask(old_mask);
}

TEST(Files, ReaderKeepsAskingAShortFile) {
  const WorkingDirectory here;
  write_bytes("file", counted_bytes(4));
  const pid_t child = fork();
  if (child == 0) {
    alarm(60);
    Bytes read(10);
    read_file("file", read.data(), 10);
    _exit(read == counted_bytes(10) ? 0 : 1);
  }
  usleep(200'000);
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, WNOHANG), 0);  // still at it
  const Bytes all = counted_bytes(10);
  std::ofstream("file", std::ios::app).write(reinterpret_cast<const char*>(&all[4]), 6);
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

TEST(Files, UnusableInputsEndTheProcess) {
  const WorkingDirectory here;
  const auto expect_end = [](auto ask) {
    const auto ask_aloud = [&] {
      dup2(STDERR_FILENO, STDOUT_FILENO);
      ask();
    };
    EXPECT_EXIT(ask_aloud(), testing::ExitedWithCode(255), "^file open error\n$");
  };
  write_bytes("file", counted_bytes(10));
  Bytes read(11);
  read_whole_or_fail({read.data(), 10}, "file");
  EXPECT_EQ(slice(read, 0, 10), counted_bytes(10));
  expect_end([&] { read_whole_or_fail({read.data(), 11}, "file"); });  // it has shrunk
  write_bytes("large", {});
  std::filesystem::resize_file("large", (std::uintmax_t{1} << 31) - 1);  // all of it a hole
  EXPECT_EQ(get_file_length("large"), 0x7FFFFFFF);
  std::filesystem::resize_file("large", std::uintmax_t{1} << 31);
  expect_end([] { get_file_length("large"); });
}

TEST(Files, UnusableOutputIsReportedByItsMessageLength) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(write_file("/missing/file", nullptr, 0), 16);
  const OutputFile set[] = {{"new", {}, FileAccess::by_umask}, {".", {}, FileAccess::owner_only}};
  write_file_set(set);
  EXPECT_FALSE(std::filesystem::exists("new"));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "file open error\nfile open error\n");
}

}  // namespace
