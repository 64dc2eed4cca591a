#include "seal/program.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "util/descriptor.h"

namespace sealwright {

namespace {

constexpr const char* usual_path = "/usr/local/bin:/usr/bin:/bin";
constexpr int first_free_descriptor = 3;
constexpr int poll_interval = 20;  // milliseconds, where the kernel cannot wake us at a child's end

struct Pipe {
  Descriptor reader;
  Descriptor writer;
};

/// A pipe whose ends are out of the way of standard input, output and error, which may be closed.
bool open_pipe(Pipe& opened) {
  std::array<int, 2> ends = {-1, -1};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) return false;
  const Pipe low = {Descriptor(ends[0]), Descriptor(ends[1])};
  opened.reader = Descriptor(fcntl(ends[0], F_DUPFD_CLOEXEC, first_free_descriptor));
  opened.writer = Descriptor(fcntl(ends[1], F_DUPFD_CLOEXEC, first_free_descriptor));
  return opened.reader.is_open() && opened.writer.is_open();
}

struct Pipes {
  Pipe input;
  Pipe output;
  Pipe failure;  // tells errno when the program cannot be executed
};

/// Where a program stands: its name, or a file in PATH. Empty, with errno set, when there is none.
std::string find_program(const char* name) {
  const std::string_view word = name;
  if (word.empty()) errno = ENOENT;
  if (word.empty() || word.find('/') != std::string_view::npos) return name;
  const char* set = std::getenv("PATH");
  std::string_view rest = set != nullptr ? set : usual_path;
  int error = ENOENT;
  for (bool more = true; more;) {
    const std::size_t colon = rest.find(':');
    const std::string_view folder = rest.substr(0, colon);
    std::string path = std::string(folder.empty() ? "." : folder) + '/' + name;
    struct stat status = {};
    if (stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
      if (access(path.c_str(), X_OK) == 0) return path;
      error = EACCES;
    }
    more = colon != std::string_view::npos;
    if (more) rest.remove_prefix(colon + 1);
  }
  errno = error;
  return {};
}

/// Our environment with the given variables in the place of older ones of their names.
std::vector<std::string> join_environment(std::span<const EnvironmentVariable> added) {
  std::vector<std::string> all;
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
    const std::string_view text = *entry;
    const std::string_view name = text.substr(0, text.find('='));
    const bool replaced =
        std::ranges::any_of(added, [&](const auto& variable) { return variable.name == name; });
    if (!replaced) all.emplace_back(text);
  }
  for (const auto& variable : added) all.push_back(variable.name + '=' + variable.value);
  return all;
}

std::vector<char*> pointers_to(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

/// What an execution takes, made before the process is doubled.
struct Execution {
  std::string path;
  std::vector<char*> arguments;
  std::vector<char*> environment;
};

/// The half of the doubled process that becomes the program.
[[noreturn]] void become_program(const Execution& execution, const Pipes& pipes, pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != parent) _exit(EXIT_FAILURE);  // who died before that call sends nothing
  for (const int number : {SIGPIPE, SIGXFSZ, SIGCHLD, SIGTERM}) std::signal(number, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  if (dup2(pipes.input.reader.number(), STDIN_FILENO) >= 0 &&
      dup2(pipes.output.writer.number(), STDOUT_FILENO) >= 0) {
    execve(execution.path.c_str(), execution.arguments.data(), execution.environment.data());
  }
  const int error = errno;
  // Without this word the other half would take the end of this one for that of the program.
  if (write(pipes.failure.writer.number(), &error, sizeof error) < 0) abort();
  _exit(EXIT_FAILURE);
}

/// What the doubled process says before it becomes the program: an errno, or 0 when it did.
int read_failure(const Descriptor& reader) {
  int error = 0;
  while (read(reader.number(), &error, sizeof error) < 0 && errno == EINTR) {
  }
  return error;
}

/// Takes what is in the pipe. @return false at its end, or when it is empty for now.
bool take_output(const Descriptor& reader, std::vector<std::uint8_t>& output) {
  std::array<std::uint8_t, 4096> piece;
  const ssize_t got = read(reader.number(), piece.data(), piece.size());
  if (got < 0) return errno == EINTR;
  output.insert(output.end(), piece.begin(), piece.begin() + got);
  return got > 0;
}

/// The end of a child as waitpid tells it; false when it runs still.
bool take_end(pid_t child, int& status, int flags) {
  pid_t ended = -1;
  while ((ended = waitpid(child, &status, flags)) < 0 && errno == EINTR) {
  }
  return ended != 0;
}

/// Collects the output until the child has ended. A child that writes beyond the limit is told to
/// end, and finds the pipe closed.
int collect_output(pid_t child, Descriptor& reader, std::size_t limit,
                   std::vector<std::uint8_t>& output) {
  const Descriptor watched(static_cast<int>(syscall(SYS_pidfd_open, child, 0)));
  int status = 0;
  for (;;) {
    std::array<pollfd, 2> waiting = {{{reader.number(), POLLIN, 0}, {watched.number(), POLLIN, 0}}};
    poll(waiting.data(), waiting.size(), watched.is_open() ? -1 : poll_interval);
    const bool ended = take_end(child, status, WNOHANG);
    while (output.size() <= limit && take_output(reader, output)) {
    }
    if (ended) return status;
    const bool closed = (waiting[0].revents & POLLHUP) != 0;
    if (output.size() > limit) kill(child, SIGTERM);
    if (!closed && output.size() <= limit) continue;
    reader.reset();
    take_end(child, status, 0);
    return status;
  }
}

ProgramResult not_started(int error) {
  const std::string hint =
      error == ENOEXEC ? " (the first line of a script names its interpreter: #!/bin/sh)" : "";
  return {ProgramEnd::not_started,
          std::string("cannot be started: ") + std::strerror(error) + hint,
          {}};
}

std::string describe_end(int status) {
  if (WIFEXITED(status)) return "ended with status " + std::to_string(WEXITSTATUS(status));
  const int number = WTERMSIG(status);
  return "was ended by signal " + std::to_string(number) + " (" + strsignal(number) + ')';
}

ProgramResult finish(pid_t child, Pipes& pipes, std::size_t limit) {
  const int error = read_failure(pipes.failure.reader);
  ProgramResult result = {ProgramEnd::succeeded, {}, {}};
  const int status = collect_output(child, pipes.output.reader, limit, result.output);
  if (error != 0) return not_started(error);
  if (result.output.size() > limit) {
    result.reason = "wrote more than " + std::to_string(limit) + " bytes";
  } else if (status != 0) {
    result.reason = describe_end(status);
  }
  if (!result.reason.empty()) result.end = ProgramEnd::failed;
  return result;
}

}  // namespace

ProgramResult run_program(const ProgramCall& call) {
  std::vector<std::string> environment = join_environment(call.environment);
  Execution execution = {find_program(call.command.front()),
                         {call.command.begin(), call.command.end()},
                         pointers_to(environment)};
  execution.arguments.push_back(nullptr);
  if (execution.path.empty()) return not_started(errno);
  Pipes pipes;
  if (!open_pipe(pipes.input) || !open_pipe(pipes.output) || !open_pipe(pipes.failure)) {
    return not_started(errno);
  }
  // A pipe takes a page whoever reads it, so this neither waits nor meets a closed end.
  const ssize_t fed = write(pipes.input.writer.number(), call.input.data(), call.input.size());
  if (fed != std::ssize(call.input)) return not_started(fed < 0 ? errno : ENOBUFS);
  fcntl(pipes.output.reader.number(), F_SETFL, O_NONBLOCK);
  // A caller may have us ignore the end of children, and then it could not be learnt.
  std::signal(SIGCHLD, SIG_DFL);

  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child < 0) return not_started(errno);
  if (child == 0) become_program(execution, pipes, parent);
  pipes.input.reader.reset();
  pipes.input.writer.reset();
  pipes.output.writer.reset();
  pipes.failure.writer.reset();
  return finish(child, pipes, call.output_limit);
}

}  // namespace sealwright
