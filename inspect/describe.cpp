#include "inspect/describe.h"

#include <array>
#include <ctime>
#include <utility>

#include "artefact/private_key_file.h"
#include "artefact/public_key_file.h"
#include "artefact/secured_bl1.h"

namespace sealwright {

namespace {

/// What a reader is told first.
struct Identity {
  std::string_view name;
  std::size_t size;
  const char* kind;
  const char* kind_in_words;
  const char* scheme;  // null when unknown
};

/// The beginning of every report. It is sound when there are no problems, for the reason given.
Report start(const Identity& file, std::vector<std::string> problems, const char* why_sound) {
  const std::string reason = problems.empty() ? why_sound : join(problems, "\n");
  Report report;
  report.facts = {{"file", json_string(file.name)},
                  {"kind", json_string(file.kind), "what it is", file.kind_in_words},
                  text_fact("scheme", "scheme", file.scheme),
                  size_fact("size", "size", file.size),
                  yes_no_fact("sound", "sound", problems.empty(), reason),
                  problems_fact(problems)};
  report.problems = std::move(problems);
  return report;
}

Report describe_efuse_data(std::string_view name, std::size_t size) {
  return start({name, size, "efuse-data", "eFuse data; its value is not shown",
                size == sb20_efuse_length ? "2.1" : "1.1"},
               {}, "it has the right length");
}

void check_key(std::vector<std::string>& problems, const PublicKey& key, const std::string& what) {
  if (key.regular) return;
  problems.push_back("The " + what +
                     " is irregular: the stated lengths, the modulus or the exponent.");
}

/// What is said of the two kinds of key files.
struct KeyKind {
  const char* kind;
  const char* kind_in_words;
  const char* member;  // the JSON member that says whether the file proves what it claims
  const char* why_sound;
  const char* problem;
};
constexpr KeyKind public_kind = {"public-key", "public-key file", "proof_of_possession",
                                 "the proof of possession verifies",
                                 "The proof that its maker holds the private key does not verify."};
constexpr KeyKind private_kind = {"private-key", "private-key file; only its public part is shown",
                                  "consistent", "the numbers of the key agree",
                                  "The numbers of the key do not agree: it is damaged."};

Report describe_key_file(std::string_view name, std::size_t size, const KeyKind& kind,
                         const PublicKey& key, bool proven) {
  std::vector<std::string> problems;
  if (!proven) problems.emplace_back(kind.problem);
  check_key(problems, key, "key");
  Report report = start({name, size, kind.kind, kind.kind_in_words, facts_of(key.scheme).name},
                        std::move(problems), kind.why_sound);
  add_key(report, "key", "public key", key);
  report.facts.push_back(yes_no_fact(kind.member, nullptr, proven, ""));
  return report;
}

std::string format_time(std::uint32_t seconds, const char* format) {
  const auto time = static_cast<std::time_t>(seconds);
  std::tm parts = {};
  gmtime_r(&time, &parts);
  std::array<char, 64> text = {};
  std::strftime(text.data(), text.size(), format, &parts);
  return text.data();
}

Fact build_info_fact(const std::optional<BuildInfo>& info) {
  if (!info) return {"build_info", "null", "build information", "none"};
  const std::string tag = info->signer_tag;
  return {"build_info",
          json_object({{"time", json_string(format_time(info->build_time, "%FT%TZ"))},
                       {"tag", json_string(tag)}}),
          "build information",
          "sealed " + format_time(info->build_time, "%F %T UTC") + ", tag \"" + tag + '"'};
}

Report describe_bl1(std::string_view name, const FileScan& image, const SecuredBl1& bl1) {
  const PublicKey root = root_key_of(bl1);
  const PublicKey stage2 = stage2_key_of(bl1);
  std::vector<std::string> problems;
  if (!verify_bl1_signature(bl1, image)) {
    problems.emplace_back("The root key inside did not sign this code and stage-2 key.");
  }
  check_key(problems, root, "root key");
  check_key(problems, stage2, "stage-2 key");
  Report report = start({name, image.size, "secured-bl1", "secured BL1, a sealed first-stage image",
                         facts_of(bl1.scheme).name},
                        std::move(problems),
                        "the root key inside signed it;\n"
                        "only --boot tells whether fuses go with that key");
  report.facts.push_back(size_fact("code_size", "code", bl1.code_size));
  report.facts.push_back(build_info_fact(bl1.build_info));
  add_key(report, "root_key", "root key", root);
  add_key(report, "stage2_key", "stage-2 key", stage2);
  return report;
}

Report describe_unknown(std::string_view name, std::size_t size) {
  return start({name, size, "unknown", "unknown", nullptr},
               {"It is not eFuse data, not a key file that opens undamaged, and not a secured BL1.",
                "A secured BL2 carries no mark: --boot checks it together with its BL1."},
               "");
}

}  // namespace

Report describe(std::string_view name, ByteView file) {
  const FileScan scan = scan_bytes(file);
  const std::size_t size = file.size();
  if (const auto bl1 = recognise_secured_bl1(scan)) return describe_bl1(name, scan, *bl1);
  if (size == sb20_efuse_length || size == sb10_efuse_length) {
    return describe_efuse_data(name, size);
  }
  if (const auto key = read_public_key_file(file)) {
    return describe_key_file(name, size, public_kind, key->key, key->proven);
  }
  if (const auto key = read_private_key_file(file)) {
    return describe_key_file(name, size, private_kind, key->key, key->consistent);
  }
  return describe_unknown(name, size);
}

}  // namespace sealwright
