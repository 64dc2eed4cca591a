#pragma once

#include <cstdint>

namespace sealwright {

/// First and last code point of a run.
struct CodePointRange {
  std::uint32_t first;
  std::uint32_t last;
};

// Every code point of the general categories Cc, Cf, Zl and Zp of Unicode 14.0: control and format
// characters, line and paragraph separators. What they do to a text cannot be seen.
// clang-format off
inline constexpr CodePointRange unseen_characters[] = {
    {0x00000, 0x0001F}, {0x0007F, 0x0009F}, {0x000AD, 0x000AD},
    {0x00600, 0x00605}, {0x0061C, 0x0061C}, {0x006DD, 0x006DD},
    {0x0070F, 0x0070F}, {0x00890, 0x00891}, {0x008E2, 0x008E2},
    {0x0180E, 0x0180E}, {0x0200B, 0x0200F}, {0x02028, 0x0202E},
    {0x02060, 0x02064}, {0x02066, 0x0206F}, {0x0FEFF, 0x0FEFF},
    {0x0FFF9, 0x0FFFB}, {0x110BD, 0x110BD}, {0x110CD, 0x110CD},
    {0x13430, 0x13438}, {0x1BCA0, 0x1BCA3}, {0x1D173, 0x1D17A},
    {0xE0001, 0xE0001}, {0xE0020, 0xE007F},
};
// clang-format on

}  // namespace sealwright
