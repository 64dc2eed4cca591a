#pragma once

#include <cstdint>

/// Result of a library or tool function: 0 for success, otherwise one of the codes below or of the
/// other wings' status headers. The high half names the layer that speaks.
using Status = std::uint32_t;

// Base layer of the crypto library (0xFFFF00xx).
inline constexpr Status ZEB_SUCCESS = 0;
inline constexpr Status ZEB_ERR_FAIL = 0xFFFF0000;          // general failure, "no", "not prime"
inline constexpr Status ZEB_ERR_NULL_POINTER = 0xFFFF0010;  // a required pointer is null
inline constexpr Status ZEB_ERR_BUFFER_ARRANGEMENT = 0xFFFF0011;  // input/output overlap refused
inline constexpr Status ZEB_ERR_PARAMETER = 0xFFFF0020;  // unknown padding rule; bad modulus size
inline constexpr Status ZEB_ERR_NO_ENC_KEY = 0xFFFF0021;
inline constexpr Status ZEB_ERR_NO_DEC_KEY = 0xFFFF0022;
inline constexpr Status ZEB_ERR_NO_IV = 0xFFFF0023;
inline constexpr Status ZEB_ERR_NO_ROOM = 0xFFFF0024;           // stated output room too small
inline constexpr Status ZEB_ERR_BAD_PADDING = 0xFFFF0031;       // found on decryption
inline constexpr Status ZEB_ERR_KEY_LENGTH = 0xFFFF0040;        // not 16, 24 or 32 bytes
inline constexpr Status ZEB_ERR_IV_LENGTH = 0xFFFF0041;         // not 16 bytes
inline constexpr Status ZEB_ERR_NOT_WHOLE_BLOCKS = 0xFFFF0042;  // no-padding rule, ragged data
inline constexpr Status ZEB_ERR_HELD_COUNT = 0xFFFF0043;        // decryption ends on a ragged block
inline constexpr Status ZEB_ERR_STATE = 0xFFFF00FF;             // internal state not as expected

// Signature verification wrappers (0xFFF2xxxx).
inline constexpr Status VERIFY_ERR_SIGNATURE_LENGTH = 0xFFF20000;  // neither 128 nor 256 bytes
inline constexpr Status VERIFY_ERR_SHA1_INIT = 0xFFF20060;
inline constexpr Status VERIFY_ERR_SHA1_UPDATE = 0xFFF20070;
inline constexpr Status VERIFY_ERR_SHA1_FINAL = 0xFFF20080;
inline constexpr Status VERIFY_ERR_RSA = 0xFFF20090;  // the signature does not verify

// Signature generation wrappers (0xFFF4xxxx).
inline constexpr Status SIGN_ERR_SHA1_INIT = 0xFFF40060;
inline constexpr Status SIGN_ERR_SHA1_UPDATE = 0xFFF40070;
inline constexpr Status SIGN_ERR_SHA1_FINAL = 0xFFF40080;
inline constexpr Status SIGN_ERR_RSA = 0xFFF40090;  // key refused or signature not sound
