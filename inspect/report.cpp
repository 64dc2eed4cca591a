#include "inspect/report.h"

#include "artefact/hex.h"
#include "artefact/key_encoding.h"

namespace sealwright {

namespace {

constexpr std::size_t label_width = 20;

/// A labelled line; further lines of the words stand below the first.
std::string show_line(const Fact& fact) {
  std::string line = "  " + std::string(fact.label);
  line.resize(label_width, ' ');
  for (const char letter : fact.words) {
    line += letter;
    if (letter == '\n') line.append(label_width, ' ');
  }
  return line + '\n';
}

}  // namespace

std::string facts_to_json(const std::vector<Fact>& facts) {
  std::vector<JsonMember> members;
  for (const Fact& fact : facts) {
    if (fact.name != nullptr) members.emplace_back(fact.name, fact.json);
  }
  return json_object(members);
}

Fact text_fact(const char* name, const char* label, const char* value) {
  if (value == nullptr) return {name, "null", label, "none"};
  return {name, json_string(value), label, value};
}

Fact size_fact(const char* name, const char* label, std::size_t bytes) {
  const std::string number = std::to_string(bytes);
  return {name, number, label, number + " bytes"};
}

Fact yes_no_fact(const char* name, const char* label, bool value, std::string_view reason) {
  std::string words = value ? "yes" : "no";
  if (!reason.empty()) words.append(": ").append(reason);
  return {name, value ? "true" : "false", label, words};
}

Fact problems_fact(const Sentences& problems) {
  return {"problems", json_strings(problems)};
}

Fact sha1_fact(const char* name, const char* label, const std::string& digits,
               const std::string& why_none) {
  if (digits.empty()) return {name, "null", label, "not known: " + why_none};
  return {name, json_string(digits), label, "SHA-1 " + digits};
}

Fact key_fact(const char* name, const char* label, const PublicKey& key) {
  const std::string bits = std::to_string(8 * key.modulus.size());
  const std::string exponent = std::to_string(key.exponent);
  const std::string sha1 = key_sha1(key);
  return {name,
          json_object({{"bits", bits},
                       {"exponent", exponent},
                       {"modulus", json_string(to_hex(key.modulus))},
                       {"sha1", json_string(sha1)}}),
          label, "RSA, " + bits + " bits, exponent " + exponent + "\nSHA-1 " + sha1};
}

void add_key(Report& report, const char* name, const char* label, const PublicKey& key) {
  report.facts.push_back(key_fact(name, label, key));
  report.keys.push_back({label, key});
}

std::string to_json(const Report& report) {
  return facts_to_json(report.facts);
}

std::string to_text(const std::string& title, const Report& report) {
  std::string text = title + '\n';
  for (const Fact& fact : report.facts) {
    if (fact.label != nullptr) text += show_line(fact);
  }
  return text;
}

}  // namespace sealwright
