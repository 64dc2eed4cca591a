#pragma once

#include <cstdint>

// Byte-buffer primitives of the crypto library. They look like the platform's routines of similar
// names but differ from them; each difference is stated at its function. No function checks its
// pointers or reports an error.

/// Compares `len` bytes of `a` and `b`, stopping at the first difference (not constant-time).
/// The sign is the reverse of the platform routine's.
/// @return 0 when equal, 1 when a < b, -1 when a > b at the first differing byte (unsigned).
std::int32_t tmkx_memcmp(const std::uint8_t* a, const std::uint8_t* b, std::uint32_t len);

/// Moves `len` bytes from `src` to `dst`; the ranges may overlap.
/// When they do not overlap and both addresses have the same remainder modulo 4, the bytes up to
/// the next word boundary (0 to 3) are copied even if `len` is smaller: pass no buffer that ends
/// inside that head.
void tmkx_memcpy(std::uint8_t* dst, const std::uint8_t* src, std::uint32_t len);

/// Fills `len` bytes of `dst` with `value`.
/// The bytes up to the next word boundary (0 to 3) are written even if `len` is smaller: pass no
/// buffer that ends inside that head.
void tmkx_memset(std::uint8_t* dst, std::uint8_t value, std::uint32_t len);

/// dst[i] = a[i] XOR b[i] for `len` bytes, upward. `dst` may be `a` or `b` itself.
void tmkx_memxor(std::uint8_t* dst, const std::uint8_t* a, const std::uint8_t* b,
                 std::uint32_t len);
