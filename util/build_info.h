#pragma once

#include <cstddef>
#include <cstdint>

/// Build-information record that comes after the code of a BL1 image sealed with "-P".
struct BuildInfo {
  std::uint32_t reserved_0;
  std::uint32_t build_time;  // seconds since 1970-01-01 00:00 UTC, low 32 bits
  std::uint32_t reserved_8;
  char signer_tag[24];  // zero-terminated
  std::uint8_t reserved_36[12];
};
static_assert(sizeof(BuildInfo) == 48);
static_assert(offsetof(BuildInfo, build_time) == 4);
static_assert(offsetof(BuildInfo, signer_tag) == 12);

/// Fills the 48 bytes at `record` (any alignment) with the current time and the signer tag.
void mk_BL_Info(std::uint8_t* record);
