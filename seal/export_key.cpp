#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string_view>

#include "artefact/key_encoding.h"
#include "seal/key_inputs.h"
#include "seal/pkcs8.h"
#include "seal/verbs.h"
#include "util/new_file.h"

namespace sealwright {

namespace {

/// Writes the key past the stream, whose buffer would keep a copy.
Objection write_to_standard_output(ByteView bytes) {
  constexpr const char* name = "standard output";
  if (isatty(STDOUT_FILENO) != 0) {
    return refuse(name,
                  "a terminal, which the private key is not shown on; send it through a pipe "
                  "or name a file");
  }
  while (!bytes.empty()) {
    const ssize_t count = write(STDOUT_FILENO, bytes.data(), bytes.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return give_up(name, std::strerror(errno));
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
  return std::nullopt;
}

Objection write_to_file(const char* name, ByteView bytes) {
  if (exists(name)) return refuse(name, "exists already; a key is written to a new file alone");
  NewFile file;
  file.create(name, FileAccess::owner_only, Existing::kept);
  file.write(bytes);
  const Failure failure = publish({&file, 1});
  return failed(failure) ? Objection(complain(name, failure)) : std::nullopt;
}

}  // namespace

Objection export_key(Result& result, const Options& options) {
  const char* name = options.names[1];
  PrivateFile file;
  if (auto objection = read_private_file(file, options.names[0])) return objection;
  PrivatePem pem;
  encode_pkcs8(pem, file.key.numbers);
  wipe_dead_stack();
  if (name == std::string_view("-")) return write_to_standard_output(pem.bytes());
  if (auto objection = write_to_file(name, pem.bytes())) return objection;
  result.made = "private-key";
  result.scheme = facts_of(file.key.scheme).name;
  result.files = {{name, pem.length, "",
                   "private key, " + std::to_string(pem.length) +
                       " bytes, not encrypted: import it and remove the file"}};
  result.key = key_sha1(public_half_of(file.key));
  return std::nullopt;
}

}  // namespace sealwright
