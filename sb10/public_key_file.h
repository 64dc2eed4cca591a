#pragma once

#include <cstddef>
#include <cstdint>

/// Stage-2 public-key file of version 1.1 (".spk").
struct Sb10PublicKeyFile {
  std::uint32_t header_length;  // 28
  char text[24];                // "1.0, Pub, RSA-1024", zero-filled
  std::uint32_t zero;
  std::uint32_t signed_length;  // 140: what the proof of possession covers, from n_length on
  std::uint32_t n_length;       // 128
  std::uint8_t n[128];
  std::uint32_t e_length;  // 4
  std::uint8_t e[4];
  std::uint32_t signature_length;  // 128
  std::uint8_t signature[128];     // proof of possession
};
static_assert(sizeof(Sb10PublicKeyFile) == 308);
static_assert(offsetof(Sb10PublicKeyFile, signed_length) == 32);
static_assert(offsetof(Sb10PublicKeyFile, n_length) == 36);
static_assert(offsetof(Sb10PublicKeyFile, e_length) == 168);
static_assert(offsetof(Sb10PublicKeyFile, signature) == 180);

/// Bytes of the file that the proof of possession covers: n and e with their lengths.
inline constexpr std::uint32_t sb10_signed_offset = offsetof(Sb10PublicKeyFile, n_length);
inline constexpr std::uint32_t sb10_signed_length =
    offsetof(Sb10PublicKeyFile, signature_length) - sb10_signed_offset;
static_assert(sb10_signed_length == 140);

/// Reads a public-key file into `sb10_pubkey_file` and puts its n and e, as long as the file says
/// they are, one behind the other into `publicKey`. A length of n above 1024 aborts. Lengths that
/// run past the file's record or the key buffer leave an all-zero key, which verifies nothing.
void read_sb10_public_key_file(const char* path);
