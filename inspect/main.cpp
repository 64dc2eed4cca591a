#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <memory>
#include <span>
#include <string>
#include <utility>

#include "artefact/escape.h"
#include "artefact/input.h"
#include "artefact/key_encoding.h"
#include "inspect/boot.h"
#include "inspect/describe.h"
#include "inspect/options.h"
#include "util/process.h"

namespace sealwright {

namespace {

enum ExitStatus : int { all_sound = 0, not_sound = 1, not_done = 2 };

void complain(const std::string& what, const std::string& reason) {
  std::fprintf(stderr, "Sealwright_inspect: %s: %s\n", what.c_str(), reason.c_str());
}

int output_error = 0;  // of the first line that could not be written

void print(const std::string& text) {
  const bool failed = std::fputs(text.c_str(), stdout) < 0;
  if (failed && output_error == 0) output_error = errno;
}

/// A file that could be read, or null after a complaint.
std::unique_ptr<Input> read_input(const char* name) {
  auto input = std::make_unique<Input>(name);
  if (input->failure().empty()) return input;
  complain(show_name(name), input->failure());
  return nullptr;
}

int status_of(const Report& report) {
  return report.problems.empty() ? all_sound : not_sound;
}

/// The object that stands for a file that could not be read.
std::string unreadable_json(const char* name, const std::string& why) {
  return json_object({{"file", json_string(name)},
                      {"kind", json_string("unreadable")},
                      {"error", json_string(why)}});
}

int describe_files(const Options& options) {
  int status = all_sound;
  FileSet files;
  std::vector<std::string_view> names;  // of those that could be read
  std::vector<std::string> failures;    // of all; empty for those
  for (const char* name : options.names) {
    FileScan scan;
    failures.push_back(scan_file(scan, name));
    if (failures.back().empty()) {
      add_file(files, std::move(scan));
      names.emplace_back(name);
    } else {
      complain(show_name(name), failures.back());
      status = not_done;
    }
  }
  const std::vector<Report> reports = describe(files, names);
  std::vector<std::string> texts;
  auto report = reports.begin();
  for (std::size_t i = 0; i < failures.size(); ++i) {
    const char* name = options.names[i];
    if (!failures[i].empty()) {
      if (options.json) texts.push_back(unreadable_json(name, failures[i]));
      continue;
    }
    status = std::max(status, status_of(*report));
    texts.push_back(options.json ? to_json(*report) : to_text(show_name(name), *report));
    ++report;
  }
  print(options.json ? '[' + join(texts, ",\n") + "]\n" : join(texts, "\n"));
  return status;
}

int check_boot_chain(const Options& options) {
  const bool has_bl2 = options.names.size() == 3;
  const BootNames names = {options.names[0], options.names[1], has_bl2 ? options.names[2] : nullptr,
                           options.code};
  const auto efuse = read_input(names.efuse);
  const auto bl1 = read_input(names.bl1);
  const auto bl2 = names.bl2 == nullptr ? nullptr : read_input(names.bl2);
  const auto code = names.code == nullptr ? nullptr : read_input(names.code);
  const bool complete =
      efuse && bl1 && (bl2 || names.bl2 == nullptr) && (code || names.code == nullptr);
  if (!complete) return not_done;
  BootChain chain = {efuse->bytes(), bl1->bytes()};
  if (bl2) chain.bl2 = bl2->bytes();
  if (code) chain.code = code->bytes();
  const Report report = describe_boot(chain, names);
  std::string title =
      "Does a device fused with " + show_name(names.efuse) + " boot " + show_name(names.bl1);
  title += bl2 ? " and then " + show_name(names.bl2) + '?' : "?";
  print(options.json ? to_json(report) + '\n' : to_text(title, report));
  return status_of(report);
}

int print_pem(const Options& options) {
  const char* name = options.names[0];
  FileScan scan;
  const std::string failure = scan_file(scan, name);
  if (!failure.empty()) {
    complain(show_name(name), failure);
    return not_done;
  }
  FileSet files;
  add_file(files, std::move(scan));
  const Report report = describe(files, {name}).front();
  for (const NamedKey& key : report.keys) {
    if (report.keys.size() > 1) print(std::string(key.name) + '\n');
    print(encode_pem(key.key));
  }
  for (const std::string& problem : report.problems) complain(show_name(name), problem);
  if (!report.keys.empty()) return status_of(report);
  complain(show_name(name), "There is no public key in it.");
  return not_sound;
}

int run(const Options& options) {
  if (options.action == Action::describe) return describe_files(options);
  if (options.action == Action::boot) return check_boot_chain(options);
  if (options.action == Action::pem) return print_pem(options);
  if (options.action == Action::refuse) return not_done;
  print(options.action == Action::help ? help_text : "Sealwright_inspect " SEALWRIGHT_VERSION "\n");
  return all_sound;
}

}  // namespace

/// @return the exit status.
static int inspect(std::span<char*> arguments) {
  forbid_core_dumps();
  // A reader that goes away is a write error like others.
  std::signal(SIGPIPE, SIG_IGN);
  const int status = run(read_options(arguments));
  if (std::fclose(stdout) != 0 && output_error == 0) output_error = errno;
  if (output_error == 0) return status;
  complain("standard output", std::strerror(output_error));
  return not_done;
}

}  // namespace sealwright

/// Exits with 0 when all is sound or boots, 1 when not, and 2 when it cannot be told.
int main(int argc, char** argv) {
  return sealwright::inspect({argv + (argc > 0 ? 1 : 0), argv + argc});
}
