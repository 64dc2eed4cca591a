// The road of a command: main -> options -> the verb in bl1, bl2, key_pair or export_key, each of
// them assemble, sign, finish. boot_image and key_record are the steps that see no files, of both
// schemes alike, over the records in sb20/records.h and sb10/records.h; key_inputs and root_set
// read and check keys; signer is whoever signs.

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>

#include "crypto/prng.h"
#include "seal/verbs.h"
#include "util/process.h"

namespace sealwright {

namespace {

/// Fills standard descriptors that the caller left closed: otherwise a file would get the number of
/// standard output and the messages. What fills them cannot be used, so that output is missed.
void occupy_standard_descriptors() {
  for (int wanted = STDIN_FILENO; wanted <= STDERR_FILENO; ++wanted) {
    if (fcntl(wanted, F_GETFD) >= 0) continue;
    open("/dev/null", wanted == STDIN_FILENO ? O_WRONLY : O_RDONLY);  // takes the lowest number
  }
}

void print_complaint(const std::string& text) {
  std::fprintf(stderr, "Sealwright_seal: %s\n", text.c_str());
}

ExitStatus print_output(const std::string& text) {
  const bool written = std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
  if (written) return ExitStatus::made;
  print_complaint(std::string("standard output: ") + std::strerror(errno));
  return ExitStatus::not_done;
}

ExitStatus run(const Options& options) {
  if (options.request == Request::help) return print_output(help_text(options.verb));
  if (options.request == Request::version) {
    return print_output("Sealwright_seal " SEALWRIGHT_VERSION "\n");
  }
  if (options.request == Request::refuse) {
    print_complaint(options.complaint + "; see 'Sealwright_seal --help'");
    return ExitStatus::not_done;
  }
  Result result;
  const Objection objection = make(result, options);
  forget_random_state();
  if (!objection) return print_output(options.json ? to_json(result) : to_words(result));
  print_complaint(objection->text);
  return objection->status;
}

}  // namespace

}  // namespace sealwright

/// Exits with 0 when it is made and proved, 1 when it is refused, 2 when it cannot be done.
int main(int argc, char** argv) {
  sealwright::forbid_core_dumps();
  sealwright::occupy_standard_descriptors();
  // A reader that goes away and a limit of file sizes are write errors like others.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
  const std::span<char* const> arguments = {argv + (argc > 0 ? 1 : 0), argv + argc};
  return static_cast<int>(sealwright::run(sealwright::read_options(arguments)));
}
