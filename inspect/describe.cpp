#include "inspect/describe.h"

#include <utility>

#include "artefact/escape.h"
#include "inspect/facts.h"

namespace sealwright {

namespace {

/// What a reader is told first.
struct Identity {
  const char* kind;
  const char* kind_in_words;
  const char* scheme;  // null when unknown
};

/// What the other files named say about this one.
struct Company {
  Sentences relations = {};  // as JSON objects
  Sentences lines = {};
  bool is_stray = false;
  bool is_alone = true;
};

/// A file that is to be described.
struct Subject {
  std::string_view name;
  std::size_t size;
  const Company& company;
};

constexpr const char* name_of(Role role) {
  constexpr const char* names[] = {"root-key",     "stage2-key", "fuses",       "public-half",
                                   "private-half", "signer",     "signed-image"};
  return names[static_cast<std::size_t>(role)];
}

constexpr const char* words_for(Role role) {
  constexpr const char* words[] = {"root key",     "stage-2 key", "fuses",       "public half",
                                   "private half", "signer",      "signed image"};
  return words[static_cast<std::size_t>(role)];
}

Company make_company(const Standing& standing, const std::vector<std::string_view>& names) {
  Company company;
  for (const auto& [other, as] : standing.goes_with) {
    company.relations.push_back(
        json_object({{"file", json_string(names[other])}, {"as", json_string(name_of(as))}}));
    company.lines.push_back(show_name(names[other]) + " (" + words_for(as) + ')');
  }
  company.is_stray = standing.is_stray;
  company.is_alone = names.size() == 1;
  return company;
}

Fact company_fact(const Company& company) {
  std::string words = join(company.lines, "\n");
  if (words.empty() && !company.is_alone) words = "none of the other files named";
  return {"goes_with", json_array(company.relations), words.empty() ? nullptr : "goes with", words};
}

/// The beginning of every report. The file is sound when there are no problems, for the reason
/// given.
Report start(const Subject& file, const Identity& identity, Sentences problems,
             const Sentences& notes, const char* why_sound) {
  const std::string reason = problems.empty() ? why_sound : join(problems, "\n");
  Report report;
  report.facts = {{"file", json_string(file.name)},
                  {"kind", json_string(identity.kind), "what it is", identity.kind_in_words},
                  text_fact("scheme", "scheme", identity.scheme),
                  size_fact("size", "size", file.size),
                  yes_no_fact("sound", "sound", problems.empty(), reason),
                  problems_fact(problems),
                  notes_fact(notes),
                  company_fact(file.company)};
  report.problems = std::move(problems);
  return report;
}

/// Adds what is wrong with the form of a key.
void check_key(Sentences& problems, const PublicKey& key, const std::string& what) {
  if (key.regular) return;
  problems.push_back("The " + what +
                     " is irregular: the stated lengths, the modulus or the exponent.");
}

Report describe_content(const Subject& file, const EfuseFile& efuse) {
  Sentences problems;
  if (file.company.is_stray) {
    problems.emplace_back(efuse.scheme == Scheme::sb20
                              ? "It holds none of the keys named; a 2.1 .spk alone cannot tell."
                              : "It holds none of the keys named.");
  }
  return start(file,
               {"efuse-data", "eFuse data; its value is not shown", facts_of(efuse.scheme).name},
               problems, {}, "it has the right length");
}

Report describe_content(const Subject& file, const PublicKeyFile& content) {
  Sentences problems;
  if (!content.proven) {
    problems.emplace_back("The proof that its maker holds the private key does not verify.");
  }
  check_key(problems, content.key, "key");
  if (file.company.is_stray) problems.emplace_back("No BL1 named carries it.");
  Report report =
      start(file, {"public-key", "public-key file", facts_of(content.key.scheme).name}, problems,
            exponent_notes(content.key, "key"), "the proof of possession verifies");
  add_key(report, "key", "public key", content.key);
  report.facts.push_back(yes_no_fact("proof_of_possession", nullptr, content.proven, ""));
  return report;
}

Report describe_content(const Subject& file, const PrivateKeyFile& content) {
  Sentences problems;
  if (!content.consistent) {
    problems.emplace_back("The numbers of the key do not agree: it is damaged.");
  }
  check_key(problems, content.key, "key");
  if (file.company.is_stray) {
    problems.emplace_back("It is the other half of none of the keys named.");
  }
  Report report =
      start(file,
            {"private-key", "private-key file; only its public part is shown",
             facts_of(content.key.scheme).name},
            problems, exponent_notes(content.key, "key"), "the numbers of the key agree");
  add_key(report, "key", "public key", content.key);
  report.facts.push_back(yes_no_fact("consistent", nullptr, content.consistent, ""));
  return report;
}

Report describe_content(const Subject& file, const Bl1File& content) {
  Sentences problems;
  if (!content.signed_by_root) {
    problems.emplace_back("The root key inside did not sign this code and stage-2 key.");
  }
  check_key(problems, content.root_key, "root key");
  check_key(problems, content.stage2_key, "stage-2 key");
  Report report = start(
      file,
      {"secured-bl1", "secured BL1, a sealed first-stage image", facts_of(content.bl1.scheme).name},
      problems, image_notes(content.root_key, content.stage2_key),
      "the root key inside signed it;\n"
      "only --boot tells whether fuses go with that key");
  report.facts.push_back(size_fact("code_size", "code", content.bl1.code_size));
  report.facts.push_back(build_info_fact(content.bl1.build_info));
  add_key(report, "root_key", "root key", content.root_key);
  add_key(report, "stage2_key", "stage-2 key", content.stage2_key);
  return report;
}

Report describe_content(const Subject& file, const Bl2File& content) {
  const SchemeFacts& scheme = facts_of(content.signer.scheme);
  Report report =
      start(file, {"secured-bl2", "secured BL2, a signed second-stage image", scheme.name}, {},
            exponent_notes(content.signer, "signer"), "a key named with it signed it");
  report.facts.push_back(size_fact("code_size", "code", file.size - scheme.modulus_length));
  add_key(report, "signer", "signer", content.signer);
  return report;
}

Report describe_content(const Subject& file, const UnknownFile& /*content*/) {
  return start(
      file, {"unknown", "unknown", nullptr},
      {"It is not eFuse data, not a key file that opens undamaged, and not a secured BL1.",
       "It may be a secured BL2, which carries no mark: name its .spk or its BL1 with it."},
      {}, "");
}

}  // namespace

std::vector<Report> describe(FileSet& files, const std::vector<std::string_view>& names) {
  const std::vector<Standing> standings = relate(files);
  std::vector<Report> reports;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const RecognisedFile& file = files.contents[files.content_of[i]];
    const Company company = make_company(standings[i], names);
    const Subject subject = {names[i], file.scan.size, company};
    reports.push_back(std::visit(
        [&](const auto& content) { return describe_content(subject, content); }, file.content));
  }
  return reports;
}

}  // namespace sealwright
