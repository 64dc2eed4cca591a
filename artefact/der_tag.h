#pragma once

#include <cstdint>

namespace sealwright {

/// The tags of DER (X.690, 8.1.2) that keys are made of.
enum class DerTag : std::uint8_t {
  integer = 0x02,
  bit_string = 0x03,
  octet_string = 0x04,
  null = 0x05,
  object_identifier = 0x06,
  sequence = 0x30
};

}  // namespace sealwright
