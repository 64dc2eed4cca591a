#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <atomic>
#include <cstddef>
#include <set>
#include <thread>

#include "tests/e2e/end_to_end.h"

namespace {

// Key generation over an older set, whatever else happens: the folder holds a whole older set or a
// whole new one, nobody else gets the new key, and nothing of the older set is lost before that.

std::vector<std::string> temporary_names() {
  std::vector<std::string> names;
  for (const auto& [name, bytes] : read_all_files()) {
    if (name.starts_with(".sealwright-")) names.push_back(name);
  }
  return names;
}

/// Denies every rename that asks for more than renaming, as some file systems do; for good.
bool deny_flags_of_renames() {
  constexpr std::uint32_t flags = offsetof(seccomp_data, args) + 4 * sizeof(std::uint64_t);
  sock_filter steps[] = {
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_renameat2, 0, 3),
      BPF_STMT(BPF_LD | BPF_W | BPF_ABS, flags),
      BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, 0, 1, 0),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EINVAL),
      BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
  };
  const sock_fprog program = {std::size(steps), steps};
  return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
         prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

class KeySet : public EndToEnd {
 protected:
  const std::vector<std::string> names = {s.root_info, s.root_private, s.efuse};
  const std::string tool = full_tool + " " + s.option + " ", keygen = tool + "-KEYGEN";
  const Files& older = device(0);
  std::mt19937_64 engine = seeded_engine();

  /// Keys of 2.1 take several times as long to make, and the same code puts them in their place.
  int tries(int all) const { return std::max(2, trials(s.is_v11() ? all : all / 3)); }
  bool is_one_set(const Files& files) const {
    for (const std::string& name : names) {
      if (!files.contains(name) || files.at(name).size() != older.at(name).size()) return false;
    }
    const Bytes& info = files.at(s.root_info);
    return slice(open_key(s.root_private), 4, s.length) == slice(info, s.root.n, s.length) &&
           hmac_sha1(hmac_key(files.at(s.efuse), info), slice(info, 0, s.key_length())) ==
               slice(info, s.key_length(), 20);
  }
  /// What the folder holds: a whole set, "older" or "newer", or what is wrong. After a kill alone
  /// temporary names may be left, and "both" sets under names of either kind, whole.
  std::string found(bool killed = false) const {
    const Files files = read_all_files();
    std::set<Bytes> contents;
    for (const auto& [name, content] : files) contents.insert(content);
    std::size_t same = 0, lost = 0;
    const std::size_t temporary = temporary_names().size();
    for (const std::string& name : names) {
      same += files.contains(name) && files.at(name) == older.at(name) ? 1U : 0U;
      lost += contents.contains(older.at(name)) ? 0U : 1U;
    }
    if (temporary != 0 && !killed) return "temporary names";
    if (same == names.size()) return "older";
    if (same == 0 && is_one_set(files)) return "newer";
    return lost == 0 && temporary == names.size() ? "both" : "half a set";
  }
  static bool is_whole(const std::string& what) { return what == "older" || what == "newer"; }
  /// The older set again, and nothing beside.
  void start_again() const {
    for (const std::string& name : temporary_names()) std::filesystem::remove(name);
    for (const std::string& name : names) write_bytes(name, older.at(name));
  }
  /// Runs a part of a test in a process of its own. @return whether it could, as `prepare` says.
  template <typename Prepare, typename Part>
  bool run_apart(Prepare prepare, Part part) {
    const pid_t child = fork();
    if (child == 0) {
      if (!prepare()) std::_Exit(2);
      part();
      std::_Exit(HasFailure() ? 1 : 0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) != 1);
    return WEXITSTATUS(status) != 2;
  }
  void expect_replacing_and_undoing();
};
RUN_FOR_BOTH_SCHEMES(KeySet);

/// Over an older set and over none; with a name that cannot be given from the start, and with one
/// that turns out so at its turn.
void KeySet::expect_replacing_and_undoing() {
  const std::string refused = line("making_" + s.name) + line("open_error");
  for (const bool has_older : {true, false}) {
    for (const std::string& name : names) {
      for (const std::string& other : names) {
        if (!has_older || other == name) std::filesystem::remove(other);
      }
      std::filesystem::create_directory(name);
      expect_failure("-KEYGEN", 0, refused);
      std::filesystem::remove(name);
      EXPECT_EQ(run(keygen).status, 0);
      EXPECT_EQ(found(), "newer");
      start_again();
      if (run("chattr +i " + name).status != 0) continue;  // takes a right and a file system
      expect_failure("-KEYGEN", 0, refused);
      EXPECT_EQ(run("chattr -i " + name).status, 0);
    }
  }
}

TEST_P(KeySet, IsReplacedWholeOrNotAtAll) {
  expect_replacing_and_undoing();
}

TEST_P(KeySet, IsReplacedWholeWhereRenamesHaveNoFlags) {
  EXPECT_TRUE(run_apart(deny_flags_of_renames, [&] { expect_replacing_and_undoing(); }));
}

TEST_P(KeySet, NothingThatStandsUnderANameIsOpened) {
  std::filesystem::permissions(s.root_private, std::filesystem::perms{0644});
  std::ifstream held_open(s.root_private, std::ios::binary);
  EXPECT_EQ(run(keygen).status, 0);
  EXPECT_EQ(Bytes(std::istreambuf_iterator<char>(held_open), {}), device(0).at(s.root_private));
  for (const std::string& name : names) std::filesystem::remove(name);
  write_bytes("victim", some_bytes(10));
  std::filesystem::create_directory("folder");
  std::filesystem::create_symlink("victim", s.root_info);
  std::filesystem::create_symlink("folder", s.efuse);
  ASSERT_EQ(mkfifo(s.root_private.c_str(), 0666), 0);
  const int pipe = open(s.root_private.c_str(), O_RDONLY | O_NONBLOCK);
  expect_run("-KEYGEN", 0, line("making_" + s.name));
  EXPECT_EQ(found(), "newer");
  EXPECT_EQ(read_bytes("victim"), some_bytes(10));
  std::uint8_t byte = 0;
  EXPECT_EQ(read(pipe, &byte, 1), 0);
  close(pipe);
}

// A file of another user that comes and goes all the time gets nothing of the key.
TEST_P(KeySet, AFileThatAppearsMeanwhileIsNotWritten) {
  if (geteuid() != 0) GTEST_SKIP() << "only root has files of others";
  write_bytes("bait", {});
  ASSERT_EQ(chown("bait", 65534, 65534), 0);
  std::atomic<bool> done = false;
  std::thread planter([&] {
    while (!done) {
      std::error_code refused;
      std::filesystem::remove(s.root_private, refused);
      std::filesystem::create_hard_link("bait", s.root_private, refused);
    }
  });
  for (int i = 0; i < tries(100) && std::filesystem::file_size("bait") == 0; ++i) run(keygen);
  done = true;
  planter.join();
  EXPECT_EQ(read_bytes("bait"), Bytes());
}

TEST_P(KeySet, IsWholeWithoutMemoryAndUnderALimitOfFileSizes) {
  const auto expect_whole = [&](const std::string& limit, int value) {
    run("prlimit --" + limit + "=" + std::to_string(value) + " " + keygen);
    EXPECT_TRUE(is_whole(found())) << limit << value << found();
    start_again();
  };
  std::filesystem::rename("sealed2", "out");
  for (int i = 0, steps = tries(100); i < steps; ++i) {
    const int limit = (2000 + i * 2000 / steps) << 10;  // from no start at all to success
    expect_whole("as", limit);
    run("prlimit --as=" + std::to_string(limit) + " " + tool + seal2);
    ASSERT_EQ(std::filesystem::file_size("out"), 1001 + s.length) << limit;
  }
  for (int i = 0, steps = tries(50); i < steps; ++i) expect_whole("fsize", i * 1300 / steps);
}

TEST_P(KeySet, IsWholeOnADiskThatIsFullAtAnyPoint) {
  const auto enter_small_disk = [] {
    const std::string folder = std::filesystem::current_path();
    return unshare(CLONE_NEWNS) == 0 &&
           mount("", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("none", folder.c_str(), "tmpfs", 0, "size=64k") == 0 && chdir(folder.c_str()) == 0;
  };
  const auto part = [&] {
    const Bytes page(4096);
    for (off_t left = 0; left < 12 * std::ssize(page); left += std::ssize(page)) {
      std::filesystem::remove("filler");
      start_again();
      const int filler = open("filler", O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
      while (write(filler, page.data(), page.size()) > 0) continue;
      EXPECT_EQ(ftruncate(filler, lseek(filler, 0, SEEK_END) - left), 0);
      close(filler);
      run(keygen);
      EXPECT_TRUE(is_whole(found())) << left << found();
    }
  };
  if (!run_apart(enter_small_disk, part)) GTEST_SKIP() << "may not mount a small disk";
}

// Half of the kills come at any moment, half shortly after the first change in the folder.
TEST_P(KeySet, SurvivesAKillAtAnyMoment) {
  std::map<std::string, int> seen;
  for (int i = 0; i < tries(300); ++i) {
    const int watch = inotify_init1(IN_CLOEXEC);
    inotify_add_watch(watch, ".", IN_CREATE | IN_OPEN | IN_MODIFY | IN_MOVE);
    const pid_t child = fork();
    if (child == 0) {
      execl("/bin/sh", "sh", "-c", ("exec >/dev/null " + keygen).c_str(), nullptr);
      std::_Exit(127);
    }
    const bool is_early = i % 2 == 0;
    pollfd change = {watch, POLLIN, 0};
    EXPECT_EQ(is_early ? poll(&change, 1, 200'000) : 1, 1);
    usleep(static_cast<useconds_t>(engine() % (is_early ? 4000 : 200'000)));
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    close(watch);
    ++seen[found(true)];
    start_again();
  }
  for (const auto& [what, count] : seen) RecordProperty(what, count);
  EXPECT_EQ(seen["half a set"], 0);
  EXPECT_LE(seen["both"], 2 + tries(300) / 10);
}

TEST_P(KeySet, IsOfOneRunWhenTwoMakeItAtOnce) {
  for (int i = 0; i < tries(50); ++i) {
    run("sh -c '" + keygen + " & " + keygen + " & wait'");
    ASSERT_EQ(found(), "newer");
  }
  // A run that is at it is waited for.
  start_again();
  const int folder = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_EQ(flock(folder, LOCK_EX), 0);
  std::thread waiting([&] { run(keygen); });
  for (int i = 0; i < 6000 && temporary_names().size() < names.size(); ++i) usleep(10'000);
  usleep(50'000);
  for (const std::string& name : names) EXPECT_EQ(read_bytes(name), device(0).at(name));
  close(folder);
  waiting.join();
  EXPECT_EQ(found(), "newer");
}

}  // namespace
