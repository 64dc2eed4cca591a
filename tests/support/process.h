#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/files.h"

// Runs of the real programs.

using Args = std::vector<std::string>;

struct Outcome {
  bool in_time = false;
  int signal = 0;   // that ended it, or 0
  int status = -1;  // exit status
  std::string output, errors;
};

inline constexpr int sanitizer_exit_status = 99;  // no command exits with it

/// Settings that children inherit: a sanitizer report gets a status of its own, and a deliberate
/// abort leaves no core file.
inline bool prepare_children() {
  const std::string options = "exitcode=" + std::to_string(sanitizer_exit_status);
  setenv("ASAN_OPTIONS", options.c_str(), 1);
  setenv("UBSAN_OPTIONS", options.c_str(), 1);
  const rlimit none = {0, 0};
  return setrlimit(RLIMIT_CORE, &none) == 0;
}

inline std::string take_text(int descriptor) {
  std::string text(static_cast<std::size_t>(lseek(descriptor, 0, SEEK_END)), '\0');
  const ssize_t got = pread(descriptor, text.data(), text.size(), 0);
  close(descriptor);
  if (got != static_cast<ssize_t>(text.size())) throw std::runtime_error("pread");
  return text;
}

/// Runs a program in a directory and waits for its end; one that takes longer is killed.
inline Outcome run_program(const std::string& program, const Args& arguments, const Path& directory,
                           int seconds = 60) {
  [[maybe_unused]] static const bool prepared = prepare_children();
  const int output = memfd_create("output", MFD_CLOEXEC);
  const int errors = memfd_create("errors", MFD_CLOEXEC);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addchdir_np(&actions, directory.c_str());
  posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, errors, STDERR_FILENO);
  std::vector<char*> argv = {const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  pid_t child = 0;
  const int failed = posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (failed != 0) throw std::runtime_error("cannot run " + program);

  Outcome outcome;
  pollfd ended = {static_cast<int>(syscall(SYS_pidfd_open, child, 0)), POLLIN, 0};
  outcome.in_time = poll(&ended, 1, 1000 * seconds) == 1;
  close(ended.fd);
  if (!outcome.in_time) kill(child, SIGKILL);
  int wait_status = 0;
  waitpid(child, &wait_status, 0);
  if (WIFSIGNALED(wait_status)) outcome.signal = WTERMSIG(wait_status);
  if (WIFEXITED(wait_status)) outcome.status = WEXITSTATUS(wait_status);
  outcome.output = take_text(output);
  outcome.errors = take_text(errors);
  return outcome;
}
