#pragma once

#include <array>

#include "crypto/status.h"

// Status codes of both schemes. The other signature codes (0xFFF2xxxx, 0xFFF4xxxx) are
// those of crypto/status.h.

/// What an operation of four steps returns for a failure of each, in their order.
using FourStepCodes = std::array<Status, 4>;

// Public-key info validation (0xFFF1xxxx).
inline constexpr Status INFO_ERR_HMAC_SETUP = 0xFFF10010;
inline constexpr Status INFO_ERR_HMAC_INIT = 0xFFF10020;
inline constexpr Status INFO_ERR_HMAC_UPDATE = 0xFFF10030;
inline constexpr Status INFO_ERR_HMAC_FINAL = 0xFFF10040;
inline constexpr Status INFO_ERR_MISMATCH = 0xFFF10050;  // the info has been wiped

// Context check (0xFFF3xxxx).
inline constexpr Status CHECK_ERR_LENGTH = 0xFFF30000;  // eFuse or signature length
inline constexpr Status CHECK_ERR_SHA1_INIT = 0xFFF30060;
inline constexpr Status CHECK_ERR_SHA1_IMAGE = 0xFFF30071;
inline constexpr Status CHECK_ERR_SHA1_KEY = 0xFFF30072;
inline constexpr Status CHECK_ERR_SHA1_FINAL = 0xFFF30080;
inline constexpr Status CHECK_ERR_SIGNATURE = 0xFFF30090;

// Signing inside context generation.
inline constexpr Status CONTEXT_ERR_SIGNING = 0xFFF40000;

// Public-key info generation (0xFFF5xxxx).
inline constexpr Status INFO_ERR_ARGUMENT = 0xFFF50000;  // bad argument or no random key
inline constexpr Status INFO_ERR_GEN_HMAC_SETUP = 0xFFF50010;
inline constexpr Status INFO_ERR_GEN_HMAC_INIT = 0xFFF50020;
inline constexpr Status INFO_ERR_GEN_HMAC_UPDATE = 0xFFF50030;
inline constexpr Status INFO_ERR_GEN_HMAC_FINAL = 0xFFF50040;

// Context generation (0xFFF6xxxx).
inline constexpr Status CONTEXT_ERR_SHA1_INIT = 0xFFF60020;
inline constexpr Status CONTEXT_ERR_SHA1_IMAGE = 0xFFF60031;
inline constexpr Status CONTEXT_ERR_SHA1_KEY = 0xFFF60032;
inline constexpr Status CONTEXT_ERR_SHA1_FINAL = 0xFFF60040;

// Code and key-file encryption (0xFFF7xxxx).
inline constexpr Status CIPHER_ERR_PARAMETER = 0xFFF7A000;  // key or IV cannot be derived
inline constexpr Status CIPHER_ERR_SETUP = 0xFFF7B000;
inline constexpr Status CIPHER_ERR_RUN = 0xFFF7C000;      // update, final or self-check failed
inline constexpr Status CIPHER_ERR_DECRYPT = 0xFFF7D000;  // decryption of code failed
