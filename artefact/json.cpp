#include "artefact/json.h"

#include "artefact/escape.h"

namespace sealwright {

std::string join(const std::vector<std::string>& parts, const char* separator) {
  std::string joined;
  for (const std::string& part : parts) joined += (joined.empty() ? "" : separator) + part;
  return joined;
}

std::string json_string(std::string_view text) {
  return '"' + escape(text) + '"';
}

std::string json_strings(const std::vector<std::string>& texts) {
  std::vector<std::string> values;
  values.reserve(texts.size());
  for (const std::string& text : texts) values.push_back(json_string(text));
  return json_array(values);
}

std::string json_array(const std::vector<std::string>& values) {
  return '[' + join(values, ", ") + ']';
}

std::string json_object(const std::vector<JsonMember>& members) {
  std::vector<std::string> pairs;
  pairs.reserve(members.size());
  for (const auto& [name, value] : members) pairs.push_back(json_string(name) + ": " + value);
  return '{' + join(pairs, ", ") + '}';
}

}  // namespace sealwright
