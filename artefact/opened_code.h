#pragma once

#include <cstdint>
#include <future>
#include <optional>
#include <string>

#include "artefact/secured_bl1.h"
#include "base/bytes.h"

namespace sealwright {

/// Why there is first-stage code to run, or none.
enum class CodeState : std::uint8_t { opened, no_context, wrong_fuses, not_whole_blocks };

/// The first-stage code as a device with these fuses runs it.
struct OpenedCode {
  CodeState state = CodeState::no_context;
  std::string sha1 = {};     // hexadecimal digits; empty unless opened
  bool is_expected = false;  // it is the code that it should be, byte for byte
};

/// Opens the code of an image that starts with it. `expected` is what should come out, when it is
/// known: where the code is stored as it runs, in scheme 1.1, it is compared also under wrong
/// fuses. The image is only read.
[[nodiscard]] OpenedCode open_code(const SecuredBl1& bl1, ByteView image, ByteView efuse,
                                   const std::optional<ByteView>& expected);

/// The same beside what the caller does meanwhile, or in get() when there is no thread to be had.
/// The arguments outlive the result; without a BL1 there is no code.
[[nodiscard]] std::future<OpenedCode> start_open_code(const std::optional<SecuredBl1>& bl1,
                                                      ByteView image, ByteView efuse,
                                                      const std::optional<ByteView>& expected);

}  // namespace sealwright
