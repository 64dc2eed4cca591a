#pragma once

#include <cstddef>
#include <cstdint>

#include "crypto/bn.h"

inline constexpr std::uint32_t rsa_number_capacity =
    66;                                                // digits of n, e, d: 2048 bits and 2 spare
inline constexpr std::uint32_t rsa_crt_capacity = 34;  // digits of p, q, dP, dQ, qInv
inline constexpr std::uint32_t rsa_max_modulus_digits = 64;

/// RSA key record (RFC 8017, 3.2): numbers as digit arrays, each followed by its digit count. The
/// first four fields are the public key.
struct ZEB_RSA_PRIVATE_KEY {
  Digit n[rsa_number_capacity];
  std::uint32_t nWords;
  Digit e[rsa_number_capacity];
  std::uint32_t eWords;
  Digit d[rsa_number_capacity];
  std::uint32_t dWords;
  Digit p[rsa_crt_capacity];  // the larger prime
  std::uint32_t pWords;
  Digit q[rsa_crt_capacity];
  std::uint32_t qWords;
  Digit dP[rsa_crt_capacity];  // d mod (p - 1)
  std::uint32_t dPWords;
  Digit dQ[rsa_crt_capacity];  // d mod (q - 1)
  std::uint32_t dQWords;
  Digit qInv[rsa_crt_capacity];  // q^-1 mod p
  std::uint32_t qInvWords;
};
static_assert(sizeof(ZEB_RSA_PRIVATE_KEY) == 4 * (3 * 67 + 5 * 35));
static_assert(offsetof(ZEB_RSA_PRIVATE_KEY, p) == 4 * 3 * 67);
