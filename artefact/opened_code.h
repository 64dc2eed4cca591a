#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "artefact/file_source.h"
#include "artefact/secured_bl1.h"
#include "base/bytes.h"
#include "crypto/aes_cbc.h"
#include "crypto/sha1.h"

namespace sealwright {

/// Why there is first-stage code to run, or none.
enum class CodeState : std::uint8_t { opened, no_context, wrong_fuses, not_whole_blocks };

/// The first-stage code as a device with these fuses runs it.
struct OpenedCode {
  CodeState state = CodeState::no_context;
  std::string sha1 = {};     // hexadecimal digits; empty unless opened
  bool is_expected = false;  // it is the code that it should be, byte for byte
};

/// Opens the code of an image that starts with it, piece by piece; no piece of it is kept.
class CodeOpener {
 public:
  /// Without a BL1 there is no code. `expected` is what should come out, when it is known, and is
  /// read on the way: where the code is stored as it runs, in scheme 1.1, it is compared also under
  /// wrong fuses.
  CodeOpener(const std::optional<SecuredBl1>& bl1, ByteView efuse, FileSource* expected);
  ~CodeOpener();
  CodeOpener(const CodeOpener&) = delete;
  CodeOpener(CodeOpener&&) = delete;
  CodeOpener& operator=(const CodeOpener&) = delete;
  CodeOpener& operator=(CodeOpener&&) = delete;

  /// The next bytes of the image, whole cipher blocks but for its last bytes.
  void add(ByteView image);
  /// To be called once, after the last bytes.
  [[nodiscard]] OpenedCode finish();

 private:
  void decrypt(ByteView stored);
  void take(ByteView opened);

  OpenedCode result_;
  FileSource* expected_;
  bool is_encrypted_ = false;
  std::size_t left_ = 0;  // bytes of the code
  AesCbcContext cipher_ = {};
  ZEB_SHA1 hash_ = {};
};

}  // namespace sealwright
