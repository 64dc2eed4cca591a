#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "util/folder.h"

// How a command ends: with what it made, or with a complaint.

namespace sealwright {

enum class ExitStatus : int {
  made = 0,
  refused = 1,   // what was named must not, or cannot, be used like this
  not_done = 2,  // wrong usage, or a file that cannot be read or written
};

/// Why nothing was made: a sentence that names the file.
struct Complaint {
  ExitStatus status;
  std::string text;
};

/// What a step returns that can fail: nothing when it went well.
using Objection = std::optional<Complaint>;

/// The file must not, or cannot, be used like this.
Complaint refuse(std::string_view file, std::string_view reason);

/// The file cannot be read or written.
Complaint give_up(std::string_view file, std::string_view reason);

/// What the system or what stands under a name makes impossible.
Complaint complain(std::string_view file, const Failure& failure);

/// A file that was made.
struct MadeFile {
  std::string name;
  std::size_t size;
  std::string sha1;   // hexadecimal; empty for what is secret
  std::string words;  // what it is, and what a person wants to know of it
};

/// What was made. Texts are empty where there is nothing to say.
struct Result {
  const char* made = "";  // "root-key", "stage2-key", "bl1", "bl2", "private-key"
  const char* scheme = "";
  std::vector<MadeFile> files = {};
  std::string root_key = {};  // as all keys here the SHA-1 of the SubjectPublicKeyInfo
  std::string stage2_key = {};
  std::string code_sha1 = {};      // of the image as it came
  std::string signed_digest = {};  // hexadecimal
  std::string signer = "file";     // who signed
  std::string key = {};            // the key made or exported
};

/// One JSON object on one line, line end included.
std::string to_json(const Result& result);

/// One line for each file.
std::string to_words(const Result& result);

}  // namespace sealwright
