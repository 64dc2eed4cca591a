#include "inspect/boot.h"

#include "inspect/boot_hints.h"
#include "inspect/facts.h"

namespace sealwright {

namespace {

/// A check as it is told.
struct Line {
  const char* what;
  const char* label;
  bool ok;
  const char* why_yes;
  const char* why_no;
};

constexpr const char* no_context = "BL1 carries no boot context of either scheme";

const char* why_fuses_fail(const BootCheck& check, std::size_t efuse_size) {
  if (!check.bl1) return no_context;
  const bool right_length = efuse_size == facts_of(check.bl1->scheme).efuse_length;
  return right_length ? "they do not hold the root key that BL1 carries"
                      : "eFuse data of this scheme has another length";
}

const char* why_not_opened(CodeState state) {
  switch (state) {
    case CodeState::no_context:
      return no_context;
    case CodeState::wrong_fuses:
      return "the fuses do not match";
    case CodeState::not_whole_blocks:
      return "it is no whole number of cipher blocks";
    case CodeState::opened:
      break;
  }
  return "";
}

std::vector<Line> list_checks(const BootCheck& check, std::size_t efuse_size) {
  const auto why_not = [&](const char* reason) { return check.bl1 ? reason : no_context; };
  std::vector<Line> lines = {
      {"fuses", "fuses", check.fuses, "they hold the root key that BL1 carries",
       why_fuses_fail(check, efuse_size)},
      {"bl1-signature", "BL1 signature", check.bl1_signature,
       "the root key in BL1 signed its code and stage-2 key",
       why_not("the root key in BL1 did not sign this code and stage-2 key")}};
  if (check.bl2_signature) {
    lines.push_back({"bl2-signature", "BL2 signature", *check.bl2_signature,
                     "the stage-2 key in BL1 signed BL2",
                     why_not("the stage-2 key in BL1 did not sign this BL2")});
  }
  lines.push_back({"keys", "keys", check.keys, "root key and stage-2 key are of the format",
                   why_not("the root key or the stage-2 key is irregular: the stated lengths, the "
                           "modulus or the exponent")});
  if (check.code) {
    const bool opened = check.opened.state == CodeState::opened;
    lines.push_back({"code", "expected code", *check.code, "it is the code in BL1, byte for byte",
                     opened || (check.bl1 && check.bl1->scheme == Scheme::sb10)
                         ? "BL1 holds other code"
                         : why_not_opened(check.opened.state)});
  }
  return lines;
}

/// One member for all checks, and a line for each.
void add_checks(Report& report, const std::vector<Line>& lines) {
  std::vector<std::string> objects;
  std::vector<Fact> facts;
  for (const Line& line : lines) {
    const char* reason = line.ok ? line.why_yes : line.why_no;
    const Fact ok = yes_no_fact("ok", line.label, line.ok, reason);
    objects.push_back(json_object({{"what", json_string(line.what)}, {"ok", ok.json}}));
    facts.push_back({nullptr, "", ok.label, ok.words});
    if (!line.ok) report.problems.push_back(std::string(line.label) + ": " + reason + '.');
  }
  report.facts.push_back({"checks", json_array(objects)});
  report.facts.insert(report.facts.end(), facts.begin(), facts.end());
}

void add_code_sha1(Report& report, const OpenedCode& opened) {
  const std::string why_none = why_not_opened(opened.state);
  if (opened.state == CodeState::not_whole_blocks) {
    report.problems.push_back("code: " + why_none + '.');
  }
  report.facts.push_back(sha1_fact("code_sha1", "code", opened.sha1, why_none));
}

/// What else a log wants to keep of the chain; words for it only where they tell more.
void add_manifest(Report& report, const BootNames& names, const std::optional<SecuredBl1>& bl1) {
  const auto name = [](const char* given) {
    return given == nullptr ? "null" : json_string(given);
  };
  report.facts.push_back({"files", json_object({{"efuse", name(names.efuse)},
                                                {"bl1", name(names.bl1)},
                                                {"bl2", name(names.bl2)},
                                                {"code", name(names.code)}})});
  if (!bl1) {
    for (const char* member : {"root_key", "stage2_key", "build_info"}) {
      report.facts.push_back({member, "null"});
    }
    return;
  }
  report.facts.push_back(key_fact("root_key", "root key", root_key_of(*bl1)));
  report.facts.push_back(key_fact("stage2_key", "stage-2 key", stage2_key_of(*bl1)));
  report.facts.push_back(build_info_fact(bl1->build_info));
}

}  // namespace

Report describe_boot(BootChain& chain, const BootNames& names) {
  const BootCheck check = check_boot_chain(chain);
  Report report;
  report.facts.push_back(
      text_fact("scheme", "scheme", check.bl1 ? facts_of(check.bl1->scheme).name : nullptr));
  add_checks(report, list_checks(check, chain.efuse.size()));
  add_code_sha1(report, check.opened);
  report.facts.push_back(problems_fact(report.problems));
  const auto& bl1 = check.bl1;
  report.facts.push_back(
      notes_fact(bl1 ? image_notes(root_key_of(*bl1), stage2_key_of(*bl1)) : Sentences()));
  add_manifest(report, names, bl1);
  for (const std::string& hint : boot_hints(chain, check)) {
    report.facts.push_back({nullptr, "", "hint", hint});
  }
  // The verdict stands before its reasons.
  const Fact verdict = yes_no_fact("boots", "boots", boots(check), "");
  report.facts.insert(report.facts.begin() + 1, verdict);
  return report;
}

}  // namespace sealwright
