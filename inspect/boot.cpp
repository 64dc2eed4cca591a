#include "inspect/boot.h"

namespace sealwright {

namespace {

struct Line {
  const char* what;
  const char* label;
  bool ok;
  const char* why_yes;
  const char* why_no;
};

std::vector<Line> list_checks(const BootCheck& check, ByteView efuse) {
  const char* no_context = "BL1 carries no boot context of either scheme";
  const auto why_not = [&](const char* reason) { return check.bl1 ? reason : no_context; };
  const bool right_length = check.bl1 && efuse.size() == facts_of(check.bl1->scheme).efuse_length;
  std::vector<Line> lines = {
      {"fuses", "fuses", check.fuses, "they hold the root key that BL1 carries",
       why_not(right_length ? "they do not hold the root key that BL1 carries"
                            : "eFuse data of this scheme has another length")},
      {"bl1-signature", "BL1 signature", check.bl1_signature,
       "the root key in BL1 signed its code and stage-2 key",
       why_not("the root key in BL1 did not sign this code and stage-2 key")}};
  if (check.bl2_signature) {
    lines.push_back({"bl2-signature", "BL2 signature", *check.bl2_signature,
                     "the stage-2 key in BL1 signed BL2",
                     why_not("the stage-2 key in BL1 did not sign this BL2")});
  }
  lines.push_back({"keys", "keys", check.keys, "root and stage-2 key are regular",
                   why_not("the stated lengths, the modulus or the exponent of one is irregular")});
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
  std::string why_none = "the fuses do not match";
  if (opened.state == CodeState::not_whole_blocks) {
    why_none = "it is no whole number of cipher blocks";
    report.problems.push_back("code: " + why_none + '.');
  }
  report.facts.push_back(sha1_fact("code_sha1", "code", opened.sha1, why_none));
}

}  // namespace

Report describe_boot(const BootChain& chain) {
  const BootCheck check = check_boot_chain(chain);
  Report report;
  report.facts.push_back(
      text_fact("scheme", "scheme", check.bl1 ? facts_of(check.bl1->scheme).name : nullptr));
  add_checks(report, list_checks(check, chain.efuse));
  add_code_sha1(report, check.opened);
  report.facts.push_back(problems_fact(report.problems));
  // The verdict stands before its reasons.
  const Fact verdict = yes_no_fact("boots", "boots", boots(check), "");
  report.facts.insert(report.facts.begin() + 1, verdict);
  return report;
}

}  // namespace sealwright
