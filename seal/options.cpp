#include "seal/options.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>
#include <string_view>
#include <utility>

#include "artefact/escape.h"

namespace sealwright {

namespace {

/// A verb: how many names it takes, what they are, and the options that it cannot do without.
struct VerbRow {
  const char* word;
  Verb verb;
  std::size_t name_count;
  const char* names;
  const char* Options::*needed[2];
};

/// An option: the verbs that take it, and what it sets.
struct OptionRow {
  const char* word;
  std::initializer_list<Verb> verbs;  // none: all
  bool Options::*flag;                // null: it has a value
  const char* Options::*value;
};

// clang-format off
const VerbRow verb_rows[] = {
    {"root-key",   Verb::root_key,   1, "DIR",          {nullptr, nullptr}},
    {"stage2-key", Verb::stage2_key, 1, "NAME",         {nullptr, nullptr}},
    {"bl1",        Verb::bl1,        2, "BL1 OUT",      {&Options::root, &Options::stage2_key}},
    {"bl2",        Verb::bl2,        2, "BL2 OUT",      {&Options::stage2_key, nullptr}},
    {"export-key", Verb::export_key, 2, "FILE OUT.pem", {nullptr, nullptr}},
};
const OptionRow option_rows[] = {
    {"--json",        {},                                 &Options::json,       nullptr},
    {"--scheme",      {Verb::root_key, Verb::stage2_key}, nullptr,              &Options::scheme},
    {"--build-info",  {Verb::bl1},                        &Options::build_info, nullptr},
    {"--root",        {Verb::bl1},                        nullptr,              &Options::root},
    {"--stage2-key",  {Verb::bl1, Verb::bl2},             nullptr,              &Options::stage2_key},
    {"--private-key", {Verb::bl2},                        nullptr,              &Options::private_key},
    {"--public-key",  {Verb::root_key, Verb::stage2_key}, nullptr,              &Options::public_key},
    {"--padded",      {Verb::root_key, Verb::stage2_key, Verb::bl1, Verb::bl2},
                                                          &Options::padded,     nullptr},
    {"--prepare",     {Verb::root_key, Verb::stage2_key, Verb::bl1, Verb::bl2},
                                                          &Options::prepare,    nullptr},
    {"--signature",   {Verb::root_key, Verb::stage2_key, Verb::bl1, Verb::bl2},
                                                          nullptr,              &Options::signature},
};
// clang-format on

Options wrong_usage(Options options, const std::string& complaint) {
  options.request = Request::refuse;
  options.complaint = complaint;
  return options;
}

const VerbRow* find_verb(std::string_view word) {
  const auto* row = std::ranges::find(verb_rows, word, &VerbRow::word);
  return row == std::end(verb_rows) ? nullptr : row;
}

const VerbRow& row_of(Verb verb) {
  return *std::ranges::find(verb_rows, verb, &VerbRow::verb);
}

const char* word_of(const char* Options::*value) {
  return std::ranges::find(option_rows, value, &OptionRow::value)->word;
}

/// What has been read so far.
struct Arguments {
  Options options;
  std::vector<const OptionRow*> given;
  std::span<char* const> rest;
  bool has_program = false;
};

/// Takes one option, in one word with its value or in two. @return why it cannot; empty if it can.
std::string take_option(Arguments& reading, const char* argument) {
  const std::string_view text = argument;
  const std::size_t equals = text.find('=');
  const std::string_view word = text.substr(0, equals);
  const auto* row = std::ranges::find(option_rows, word, &OptionRow::word);
  if (row == std::end(option_rows)) return "wrong option " + show_name(word);
  if (std::ranges::count(reading.given, row) != 0) return std::string(row->word) + " given twice";
  reading.given.push_back(row);
  Options& options = reading.options;
  if (row->flag != nullptr) {
    options.*row->flag = true;
    return equals == std::string_view::npos ? "" : std::string(row->word) + " takes no value";
  }
  if (equals != std::string_view::npos) {
    options.*row->value = argument + equals + 1;
  } else if (reading.rest.empty()) {
    return std::string(row->word) + " lacks its value";
  } else {
    options.*row->value = reading.rest.front();
    reading.rest = reading.rest.subspan(1);
  }
  // As with `--root "$KEYS"` where KEYS is not set: an empty folder would be the working directory.
  return *(options.*row->value) != '\0' ? "" : std::string(row->word) + " has an empty value";
}

/// Whether what was said of who signs goes together. @return why it does not; empty if it does.
std::string find_signing_misfit(const Arguments& reading) {
  const Options& options = reading.options;
  const bool makes_key = options.verb == Verb::root_key || options.verb == Verb::stage2_key;
  const bool by_program = reading.has_program;
  if (by_program && options.program.empty()) return "-- comes before a PROGRAM that signs";
  if (by_program && options.verb == Verb::export_key) return "export-key takes no PROGRAM";
  const auto ways = std::ranges::count(
      std::array{by_program, options.prepare, options.signature != nullptr}, true);
  if (ways > 1) return "--prepare, --signature FILE and -- PROGRAM exclude each other";
  const bool has_key = options.public_key != nullptr;
  if (ways == 0) {
    const char* idle = options.padded ? "--padded" : has_key ? "--public-key" : nullptr;
    if (idle == nullptr) return "";
    return std::string(idle) + " needs one of --prepare, --signature FILE and -- PROGRAM";
  }
  if (makes_key && !has_key) return "a key that is elsewhere needs --public-key FILE";
  return options.private_key == nullptr ? "" : "--private-key is for a key that signs here";
}

/// Whether what was given goes with the verb. @return why it does not; empty if it does.
std::string find_misfit(const Arguments& reading) {
  const Options& options = reading.options;
  if (options.verb == Verb::none) return "no command given";
  const VerbRow& verb = row_of(options.verb);
  const std::string name = verb.word;
  for (const OptionRow* row : reading.given) {
    const bool fits = row->verbs.size() == 0 || std::ranges::count(row->verbs, verb.verb) != 0;
    if (!fits) return name + " takes no " + row->word;
  }
  for (const auto needed : verb.needed) {
    if (needed != nullptr && options.*needed == nullptr) return name + " needs " + word_of(needed);
  }
  if (options.names.size() != verb.name_count) {
    return name + " takes " + verb.names + ", not " + std::to_string(options.names.size()) +
           (options.names.size() == 1 ? " name" : " names");
  }
  const auto is_empty = [](const char* given) { return *given == '\0'; };
  if (std::ranges::any_of(options.names, is_empty)) return "an empty name";
  const std::string_view scheme = options.scheme == nullptr ? "2.1" : options.scheme;
  if (scheme != "2.1" && scheme != "1.1") return "--scheme is 2.1 or 1.1";
  const bool to_output = verb.verb == Verb::export_key && options.names[1] == std::string_view("-");
  if (to_output && options.json) return "the key and --json cannot both go to standard output";
  return find_signing_misfit(reading);
}

}  // namespace

bool is_signed_elsewhere(const Options& options) {
  return options.prepare || options.signature != nullptr || !options.program.empty();
}

Options read_options(std::span<char* const> arguments) {
  Arguments reading = {{}, {}, arguments};
  Options& options = reading.options;
  while (!reading.rest.empty()) {
    const char* argument = reading.rest.front();
    reading.rest = reading.rest.subspan(1);
    const std::string_view word = argument;
    if (word == "--help" || word == "--version") {
      options.request = word == "--help" ? Request::help : Request::version;
      return options;
    }
    if (word == "--") {
      reading.has_program = true;
      options.program = std::exchange(reading.rest, {});
    } else if (word.size() > 1 && word[0] == '-') {
      const std::string misuse = take_option(reading, argument);
      if (!misuse.empty()) return wrong_usage(options, misuse);
    } else if (options.verb != Verb::none) {
      options.names.push_back(argument);
    } else if (const VerbRow* row = find_verb(word)) {
      options.verb = row->verb;
    } else {
      return wrong_usage(options, "no command " + show_name(word));
    }
  }
  const std::string misfit = find_misfit(reading);
  if (!misfit.empty()) return wrong_usage(options, misfit);
  if (options.scheme == nullptr) options.scheme = "2.1";
  return options;
}

}  // namespace sealwright
