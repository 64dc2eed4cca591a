#pragma once

#include <initializer_list>
#include <optional>
#include <string>

#include "artefact/input.h"
#include "base/bytes.h"
#include "seal/outcome.h"

// The files that a command names.

namespace sealwright {

/// A file that is read, with the name it was reached by.
struct InputFile {
  std::string name;
  std::optional<Input> input;

  [[nodiscard]] ByteView bytes() const { return input->bytes(); }
};

[[nodiscard]] Objection read_input(InputFile& file, std::string name);

/// The same for an image, which has at least a byte: an empty one is what a failed build leaves.
[[nodiscard]] Objection read_image(InputFile& file, std::string name);

/// Whether an image can be written to this name: nothing but a file or a link may stand there, no
/// private key, in files of this tool or PEM, and none of the inputs, under whatever name.
[[nodiscard]] Objection check_output(const char* name,
                                     std::initializer_list<const InputFile*> inputs);

/// A name in a folder.
std::string join_path(const std::string& folder, const char* name);

/// Whether anything stands under a name, be it a link that leads nowhere.
[[nodiscard]] bool exists(const std::string& name);

}  // namespace sealwright
