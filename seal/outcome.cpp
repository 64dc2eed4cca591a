#include "seal/outcome.h"

#include "artefact/escape.h"
#include "artefact/json.h"

namespace sealwright {

namespace {

std::string about(std::string_view file, std::string_view reason) {
  return show_name(file).append(": ").append(reason);
}

std::string string_or_null(const std::string& text) {
  return text.empty() ? "null" : json_string(text);
}

}  // namespace

Complaint refuse(std::string_view file, std::string_view reason) {
  return {ExitStatus::refused, about(file, reason)};
}

Complaint give_up(std::string_view file, std::string_view reason) {
  return {ExitStatus::not_done, about(file, reason)};
}

Complaint complain(std::string_view file, const Failure& failure) {
  return failure.in_the_way ? refuse(file, failure.reason) : give_up(file, failure.reason);
}

std::string to_json(const Result& result) {
  std::vector<std::string> files;
  for (const MadeFile& file : result.files) {
    files.push_back(json_object({{"file", json_string(file.name)},
                                 {"size", std::to_string(file.size)},
                                 {"sha1", string_or_null(file.sha1)}}));
  }
  return json_object({{"made", json_string(result.made)},
                      {"scheme", json_string(result.scheme)},
                      {"files", json_array(files)},
                      {"root_key", string_or_null(result.root_key)},
                      {"stage2_key", string_or_null(result.stage2_key)},
                      {"code_sha1", string_or_null(result.code_sha1)},
                      {"signed_digest", string_or_null(result.signed_digest)},
                      {"signer", string_or_null(result.signer)},
                      {"key", string_or_null(result.key)}}) +
         '\n';
}

std::string to_words(const Result& result) {
  std::string text;
  for (const MadeFile& file : result.files) {
    text += about(file.name, file.words) + '\n';
  }
  return text;
}

}  // namespace sealwright
