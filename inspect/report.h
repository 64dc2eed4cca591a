#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "artefact/json.h"
#include "artefact/public_key.h"

namespace sealwright {

using Sentences = std::vector<std::string>;

/// One thing that is known, said twice by the functions below: as a member of a JSON object and as
/// a line for a reader.
struct Fact {
  const char* name;             // of the member; null where another member says it
  std::string json;             // its value, as JSON text
  const char* label = nullptr;  // of the line; null where another line says it
  std::string words = {};       // one line or more
};

struct NamedKey {
  const char* name;
  PublicKey key;
};

/// Everything that is said about a file, or about a chain of files.
struct Report {
  std::vector<Fact> facts;
  std::vector<NamedKey> keys;  // the keys among the facts
  Sentences problems;          // none when it is sound, or boots
};

/// The facts that have a name, as one JSON object.
std::string facts_to_json(const std::vector<Fact>& facts);

/// A string, or null for a null pointer, which the line calls "none".
Fact text_fact(const char* name, const char* label, const char* value);
Fact size_fact(const char* name, const char* label, std::size_t bytes);
Fact yes_no_fact(const char* name, const char* label, bool value, std::string_view reason);
Fact problems_fact(const Sentences& problems);
/// SHA-1 in hexadecimal digits; null when there are none, and the line says why.
Fact sha1_fact(const char* name, const char* label, const std::string& digits,
               const std::string& why_none);
Fact key_fact(const char* name, const char* label, const PublicKey& key);
/// The same, and the key joins those of the report.
void add_key(Report& report, const char* name, const char* label, const PublicKey& key);

/// The report as one JSON object.
std::string to_json(const Report& report);

/// The report in aligned lines under a title.
std::string to_text(const std::string& title, const Report& report);

}  // namespace sealwright
