#pragma once

#include <cstdint>

#include "crypto/status.h"

/// Generate_PSS_RSASignature into scratch, copied to `signature` only when it has exactly
/// `signature_bytes` bytes: a damaged key of another size must not reach past the caller's room.
/// @return 0; SIGN_ERR_RSA.
Status sign_digest_at_size(std::int32_t mode, const std::uint8_t* key_items,
                           std::uint32_t key_items_length, const std::uint8_t* digest,
                           std::uint8_t* signature, std::uint32_t signature_bytes);

/// Signs the SHA-1 digest of a message and checks the signature with the key's own public part, so
/// that a damaged key file, or a fault in one CRT half that would give the key away, never leaves
/// as a success. `public_key` has the form that Verify_PSS_RSASignature takes for this size.
/// @return 0; SIGN_ERR_SHA1_...; SIGN_ERR_RSA, and `signature` is untouched then.
Status sign_message_checked(std::int32_t mode, const std::uint8_t* key_items,
                            std::uint32_t key_items_length, const std::uint8_t* public_key,
                            const std::uint8_t* message, std::uint32_t message_length,
                            std::uint8_t* signature, std::uint32_t signature_bytes);
