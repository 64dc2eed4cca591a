#pragma once

#include <cstdint>

#include "crypto/status.h"

// Steps that several commands share.

namespace sealwright {

/// Aborts where neither /dev/random nor the kernel's generator delivers: without them keys and
/// salts could be guessed. For the first step of commands that make keys or signatures.
void require_randomness();

/// Prints that a key is being made, then has a scheme's function make it. @return 0.
[[nodiscard]] std::int32_t make_key_pair(const char* line,
                                         Status (*generate)(std::int32_t mode, const char* name),
                                         std::int32_t mode, const char* base_name);

/// Prints the line for the verdict. @return 0 when valid, otherwise -1.
[[nodiscard]] std::int32_t print_verdict(bool valid, const char* success_line,
                                         const char* failure_line);

}  // namespace sealwright
