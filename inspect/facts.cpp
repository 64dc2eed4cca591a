#include "inspect/facts.h"

#include <array>
#include <ctime>

namespace sealwright {

namespace {

std::string format_time(std::uint32_t seconds, const char* format) {
  const auto time = static_cast<std::time_t>(seconds);
  std::tm parts = {};
  gmtime_r(&time, &parts);
  std::array<char, 64> text = {};
  std::strftime(text.data(), text.size(), format, &parts);
  return text.data();
}

}  // namespace

Sentences exponent_notes(const PublicKey& key, const std::string& what) {
  const std::uint32_t usual = facts_of(key.scheme).exponent;
  if (!key.regular || key.exponent == usual) return {};
  return {"The " + what + " has exponent " + std::to_string(key.exponent) +
          ", where keys of scheme " + facts_of(key.scheme).name + " have " + std::to_string(usual) +
          ": the check accepts it, a device may not."};
}

Sentences image_notes(const PublicKey& root, const PublicKey& stage2) {
  Sentences notes = exponent_notes(root, "root key");
  for (std::string& note : exponent_notes(stage2, "stage-2 key")) notes.push_back(std::move(note));
  const bool is_one = root.regular && is_same_key(root, stage2);
  if (is_one) notes.emplace_back("The stage-2 key is the root key itself.");
  return notes;
}

Fact notes_fact(const Sentences& notes) {
  return {"notes", json_strings(notes), notes.empty() ? nullptr : "note", join(notes, "\n")};
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

}  // namespace sealwright
