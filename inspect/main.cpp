#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <span>
#include <string>
#include <utility>

#include "artefact/escape.h"
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
    FileSource source(name);
    FileScan file = scan(source);
    failures.push_back(source.failure());
    if (failures.back().empty()) {
      add_file(files, std::move(file));
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

/// Complains of each file that has failed so far. @return whether there is none.
bool is_readable(const BootChain& chain, const BootNames& names) {
  const std::pair<const char*, const FileSource*> files[] = {
      {names.efuse, &chain.efuse},
      {names.bl1, &chain.bl1},
      {names.bl2, chain.bl2 ? &*chain.bl2 : nullptr},
      {names.code, chain.code ? &*chain.code : nullptr}};
  bool readable = true;
  for (const auto& [name, file] : files) {
    if (file == nullptr || file->failure().empty()) continue;
    complain(show_name(name), file->failure());
    readable = false;
  }
  return readable;
}

int check_boot_chain(const Options& options) {
  const bool has_bl2 = options.names.size() == 3;
  const BootNames names = {options.names[0], options.names[1], has_bl2 ? options.names[2] : nullptr,
                           options.code};
  BootChain chain = {FileSource(names.efuse), FileSource(names.bl1)};
  if (names.bl2 != nullptr) chain.bl2.emplace(names.bl2);
  if (names.code != nullptr) chain.code.emplace(names.code);
  if (!is_readable(chain, names)) return not_done;
  const Report report = describe_boot(chain, names);
  if (!is_readable(chain, names)) return not_done;
  std::string title =
      "Does a device fused with " + show_name(names.efuse) + " boot " + show_name(names.bl1);
  title += has_bl2 ? " and then " + show_name(names.bl2) + '?' : "?";
  print(options.json ? to_json(report) + '\n' : to_text(title, report));
  return status_of(report);
}

int print_pem(const Options& options) {
  const char* name = options.names[0];
  FileSource source(name);
  FileScan file = scan(source);
  if (!source.failure().empty()) {
    complain(show_name(name), source.failure());
    return not_done;
  }
  FileSet files;
  add_file(files, std::move(file));
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
