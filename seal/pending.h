#pragma once

#include <initializer_list>
#include <string>

#include "seal/diagnosis.h"
#include "seal/inputs.h"
#include "seal/options.h"
#include "seal/signer.h"
#include "util/new_folder.h"

// What waits for a signature that is made in another room, beside the file that it becomes:
// OUT.pending is that file but for its signature, OUT.digest or OUT.block what is to be signed.

namespace sealwright {

struct PendingNames {
  std::string pending;
  std::string digest;
  std::string block;
};

/// The names beside the file `name`.
PendingNames pending_names(const std::string& name);

/// The bytes of a file but for its signature, piece after piece; zeros stand in its place.
using Pieces = std::span<const ByteView>;

/// What goes out to whoever signs: the digest, or the encoded block with a new salt.
class ToSign {
 public:
  ToSign(const SigningTask& task, bool padded);
  [[nodiscard]] ByteView bytes() const { return ByteView(room_).first(length_); }
  [[nodiscard]] bool is_block() const { return is_block_; }

 private:
  std::array<std::uint8_t, signature_bytes_2048> room_ = {};
  std::size_t length_;
  bool is_block_;
};

/// What came back for something that waits.
struct TakenUp {
  InputFile pending;  // not read when nothing waits
  InputFile signature;
  InputFile block;  // where it was padded and is still there
};

/// Reads what waits to become the file `name`, and the signature for it. Nothing is read where the
/// options do not ask for it.
[[nodiscard]] Objection read_taken_up(TakenUp& taken_up, const Options& options,
                                      const std::string& name);

/// Whether what waits is what is made of the inputs now.
[[nodiscard]] Objection check_pending(const InputFile& pending, Pieces pieces);

/// check_output for the file `name` and, where the options let it wait, for what waits beside it.
[[nodiscard]] Objection check_outputs(const std::string& name, const Options& options,
                                      std::initializer_list<const InputFile*> inputs);

/// Puts what waits beside the file `name`, where older ones of an image are replaced and those of a
/// key are not, and says so in the result.
[[nodiscard]] Objection write_pending(Result& result, const std::string& name, Pieces pieces,
                                      const SigningTask& task, const Options& options);

/// What is said of a file that waits, and of what is to be signed by the key of this name.
MadeFile made_pending(const std::string& name, Pieces pieces);
MadeFile made_to_sign(const std::string& name, const ToSign& to_sign, const SigningTask& task);

/// Removes what waited, when it has become the file `name`.
void remove_pending(const std::string& name);

}  // namespace sealwright
