#include "inspect/boot.h"

#include <utility>

#include "artefact/opened_code.h"
#include "artefact/secured_bl1.h"

namespace {

struct Check {
  const char* what;
  const char* label;
  bool ok;
  const char* why_yes;
  const char* why_no;
};

std::vector<Check> make_checks(const SecuredBl1* bl1, bool fuses_match, ByteView efuse,
                               const std::optional<ByteView>& bl2) {
  const char* no_context = "BL1 carries no boot context of either scheme";
  const auto why_not = [&](const char* reason) { return bl1 == nullptr ? no_context : reason; };
  const bool right_length = bl1 != nullptr && efuse.size() == bl1->efuse_length;
  std::vector<Check> checks = {
      {"fuses", "fuses", fuses_match, "they hold the root key that BL1 carries",
       why_not(right_length ? "they do not hold the root key that BL1 carries"
                            : "eFuse data of this scheme has another length")},
      {"bl1-signature", "BL1 signature", bl1 != nullptr && verify_bl1_signature(*bl1),
       "the root key in BL1 signed its code and stage-2 key",
       why_not("the root key in BL1 did not sign this code and stage-2 key")}};
  if (bl2) {
    checks.push_back({"bl2-signature", "BL2 signature",
                      bl1 != nullptr && verify_bl2_signature(*bl1, *bl2),
                      "the stage-2 key in BL1 signed BL2",
                      why_not("the stage-2 key in BL1 did not sign this BL2")});
  }
  return checks;
}

/// One member for all checks, and a line for each.
void add_checks(Report& report, const std::vector<Check>& checks) {
  std::vector<std::string> objects;
  std::vector<Fact> lines;
  for (const Check& check : checks) {
    const char* reason = check.ok ? check.why_yes : check.why_no;
    const Fact ok = yes_no_fact("ok", check.label, check.ok, reason);
    objects.push_back(json_object({{"what", json_string(check.what)}, {"ok", ok.json}}));
    lines.push_back({nullptr, "", ok.label, ok.words});
    if (!check.ok) report.problems.push_back(std::string(check.label) + ": " + reason + '.');
  }
  report.facts.push_back({"checks", json_array(objects)});
  report.facts.insert(report.facts.end(), lines.begin(), lines.end());
}

/// Adds what was computed of the code; nothing was when the fuses do not match.
void add_code_sha1(Report& report, std::future<std::string> computed) {
  std::string code_sha1;
  std::string why_none = "the fuses do not match";
  if (computed.valid()) {
    code_sha1 = computed.get();
    if (code_sha1.empty()) {
      why_none = "it is no whole number of cipher blocks";
      report.problems.push_back("code: " + why_none + '.');
    }
  }
  report.facts.push_back(sha1_fact("code_sha1", "code", code_sha1, why_none));
}

}  // namespace

Report check_boot(ByteView efuse, ByteView bl1, const std::optional<ByteView>& bl2) {
  const auto found = find_secured_bl1(bl1, efuse.size() == sb10_efuse_length);
  const bool fuses_match = found && verify_fuses(*found, efuse);
  // The code is hashed while the signature check hashes it as stored.
  std::future<std::string> code_sha1;
  if (fuses_match) code_sha1 = start_opened_code_sha1(*found, efuse);
  Report report;
  report.facts.push_back(text_fact("scheme", "scheme", found ? found->scheme : nullptr));
  add_checks(report, make_checks(found ? &*found : nullptr, fuses_match, efuse, bl2));
  add_code_sha1(report, std::move(code_sha1));
  report.facts.push_back(problems_fact(report.problems));
  // The verdict stands before its reasons.
  const Fact verdict = yes_no_fact("boots", "boots", report.problems.empty(), "");
  report.facts.insert(report.facts.begin() + 1, verdict);
  return report;
}
