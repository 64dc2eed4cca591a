// Commands run inside the test program, to see what cannot be seen from outside.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <set>
#include <tuple>

#include "crypto/mem.h"
#include "crypto/prng.h"
#include "crypto/prng_state.h"
#include "front/drivers.h"
#include "front/texts.h"
#include "sb10/records.h"
#include "sb20/records.h"
#include "sb20/stage1.h"
#include "scheme/private_key_file.h"
#include "seal/verbs.h"
#include "tests/support/bytes.h"

extern char __data_start, _end;  // NOLINT: the linker's bounds of the static data

namespace {

using Words = std::vector<const char*>;

constexpr std::size_t run_length = 16;  // so many bytes of a secret must not be found
constexpr std::size_t stack_length = 1 << 20;
// On the heap, which is not searched.
std::set<std::string>* secrets = nullptr;
char* stack = nullptr;  // a copy of it

void add_secret(const Bytes& bytes, std::size_t from) {
  for (std::size_t i = from; i + run_length <= bytes.size(); ++i) {
    const Bytes run = slice(bytes, i, run_length);
    if (std::ranges::count(run, 0) < 8) secrets->insert(std::string(run.begin(), run.end()));
  }
}

/// The numbers of a private-key file from d on; what comes before is public.
void add_key(const std::string& path, std::int32_t mode, std::size_t d) {
  if (access(path.c_str(), R_OK) != 0) return;
  Bytes file = read_bytes(path);
  do_PrivateKey_Decrypt(mode, file.data(), length_of(file));
  add_secret(file, d);
}

/// The key that decrypts BL1.
void add_code_key() {
  if (access("eFuseData_V21.dat", R_OK) != 0) return;
  Bytes key = read_bytes("eFuseData_V21.dat");
  const Bytes info = read_bytes("publicKeyInfo_V21.dat");
  tmkx_memxor(key.data(), key.data(), &info[offsetof(Sb20PublicKeyInfo, hmac)], 20);
  add_secret(key, 0);
}

int found(const char* from, const char* to) {
  for (; from + run_length <= to; ++from) {
    if (secrets->contains(std::string(from, run_length))) return 1;
  }
  return 0;
}

/// Runs after the handlers that the command has registered. Ends with 1 for a secret on the stack,
/// 2 for one in static data, 3 for both; 4 when there was none to look for.
void search() {
  constexpr std::size_t d20 = offsetof(Sb20PrivateKeyFile, d);
  constexpr std::size_t d10 = offsetof(Sb10PrivateKeyItems, d);
  secrets = new std::set<std::string>;
  for (const std::string folder : {"", "d/"}) {
    add_key(folder + "privateKey_V21.dat", key_file_mode_sb20, d20);
    add_key(folder + "s_V21.prv", key_file_mode_sb20, d20);
    add_key(folder + "privateKey.dat", key_file_mode_sb10, d10);
    add_key(folder + "s.prv", key_file_mode_sb10, offsetof(Sb10PrivateKeyFile, items) + d10);
  }
  add_code_key();
  const int where = found(stack, stack + stack_length) + 2 * found(&__data_start, &_end);
  _exit(secrets->empty() ? 4 : where);
}

/// The commands that draw random numbers.
std::vector<Words> commands_of(bool v11) {
  const char *version = v11 ? "-v1.1" : "-v2.1", *key = v11 ? "s.prv" : "s_V21.prv";
  return {{"tool", version, "-KEYGEN"},
          {"tool", version, "s", "-STAGE2_KEYGEN"},
          {"tool", version, "image", "bl1", "-STAGE1"},
          {"tool", version, "image", "bl2", key, "-STAGE2"}};
}

void run(const Words& words) {
  // What is left in memory does not depend on how the command ended.
  std::ignore = sealwright::run_main(static_cast<int>(words.size()), words.data(),
                                     {sb10_main, sb20_main, print_SB20_Usage});
}

/// The verbs of the companion that seals, after the commands above.
std::vector<Words> verbs_of(bool v11) {
  const char *scheme = v11 ? "1.1" : "2.1", *key = v11 ? "s.spk" : "s_V21.spk";
  return {{"root-key", "--scheme", scheme, "d"},
          {"stage2-key", "--scheme", scheme, "d/s"},
          {"bl1", "--root", ".", "--stage2-key", key, "image", "bl1"},
          {"bl2", "--stage2-key", key, "image", "bl2"},
          {"export-key", v11 ? "privateKey.dat" : "privateKey_V21.dat", "pem"}};
}

/// @return the exit status.
int seal(const Words& words) {
  std::vector<std::string> texts(words.begin(), words.end());
  std::vector<char*> arguments;
  for (std::string& text : texts) arguments.push_back(text.data());
  sealwright::Result result;
  const auto objection = sealwright::make(result, sealwright::read_options(arguments));
  sealwright::forget_random_state();
  return objection ? static_cast<int>(objection->status) : 0;
}

/// Does the work in a process of its own and searches what it leaves.
int remains_of(const std::function<void()>& work) {
  const pid_t child = fork();
  if (child == 0) {
    if (std::freopen("/dev/null", "w", stdout) == nullptr) _exit(5);
    stack = new char[stack_length];
    std::atexit(search);
    work();
    const auto* frame = static_cast<const char*>(__builtin_frame_address(0));
    std::memcpy(stack, frame - stack_length, stack_length);  // before anything covers it
    std::exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// After each command, the memory it leaves is searched for the secrets it worked with: the whole
/// stack it ran on, and the static data after the handlers of a normal end.
TEST(Safety, SecretsAreNotLeftInMemory) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizer keeps copies of its own";
#endif
  const WorkingDirectory here;
  write_bytes("image", Bytes(4096, 0x5A));
  ASSERT_EQ(
      symlink("s_V21.spk", "publicKeyInfo_V21_stage2.dat") + symlink("s.spk", "stage2_key.spk"), 0);
  for (const bool v11 : {false, true}) {
    for (const Words& words : commands_of(v11)) {
      EXPECT_EQ(remains_of([&] { run(words); }), 0) << words.back();
    }
    for (const char* made : {"bl1", "bl2"}) EXPECT_TRUE(std::filesystem::remove(made)) << v11;
    for (const Words& words : verbs_of(v11)) {
      EXPECT_EQ(remains_of([&] { seal(words); }), 0) << words[0];
    }
    for (const char* made : {"d", "bl1", "bl2", "pem"}) {
      EXPECT_TRUE(std::filesystem::remove_all(made));
    }
  }
  // Alone, so that nothing that comes after it covers its tracks.
  Bytes code(48);
  EXPECT_EQ(remains_of([&] { do_Encrypt(code.data(), 32); }) & 1, 0);
}

TEST(Safety, NothingIsMadeWithoutASourceOfRandomness) {
  const WorkingDirectory here;
  const auto run_without = [](const Words& words, bool kernel, bool device) {
    kernel_random_blocked = kernel;
    random_device_blocked = device;
    run(words);
    std::exit(std::filesystem::is_empty(".") ? 1 : 0);
  };
  for (const bool v11 : {false, true}) {
    for (const Words& words : commands_of(v11)) {
      EXPECT_EXIT(run_without(words, true, true), testing::KilledBySignal(SIGABRT), "^$")
          << words.back();
    }
    for (const bool kernel : {false, true}) {  // one of them does
      const WorkingDirectory there;
      const Words words = commands_of(v11)[0];
      EXPECT_EXIT(run_without(words, kernel, !kernel), testing::ExitedWithCode(0), "^$");
    }
    for (const Words& words : verbs_of(v11)) {
      const auto seal_without = [&] {
        kernel_random_blocked = random_device_blocked = true;
        std::exit(seal(words));
      };
      EXPECT_EXIT(seal_without(), testing::ExitedWithCode(2), "^$") << words[0];
    }
  }
  EXPECT_TRUE(std::filesystem::is_empty("."));
}

}  // namespace
