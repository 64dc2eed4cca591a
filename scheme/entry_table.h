#pragma once

#include <cstdint>

// Both boot contexts carry a table of library entry points as 32-bit words, which the tool fills
// with its own addresses. They mean nothing outside the process that wrote them.

inline constexpr std::uint32_t common_entry_count = 12;

namespace sealwright {

/// Low 32 bits of a function's address.
template <typename Function>
[[nodiscard]] std::uint32_t entry_word(Function* function) {
  return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(function));
}

/// Fills the slots that both schemes share: the memory primitives, SHA-1, HMAC and
/// Verify_PSS_RSASignature.
void save_common_entries(std::uint32_t* table);

}  // namespace sealwright
