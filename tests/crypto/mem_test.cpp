#include "crypto/mem.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <numeric>

namespace {

struct alignas(4) Arena : std::array<std::uint8_t, 64> {
  Arena() { std::iota(begin(), end(), std::uint8_t{1}); }
};

TEST(Mem, CompareReversesThePlatformsSign) {
  const std::uint8_t low[] = {5, 0x7F, 9}, high[] = {5, 0x80, 1};
  EXPECT_EQ(tmkx_memcmp(low, high, 3), 1);
  EXPECT_EQ(tmkx_memcmp(high, low, 3), -1);
  EXPECT_EQ(tmkx_memcmp(low, high, 1), 0);
  EXPECT_EQ(tmkx_memcmp(low + 1, high + 1, 0), 0);
}

// Every overlap in both directions; disjoint ranges, fills and their alignment heads, which are
// written even when the length is smaller.
TEST(Mem, CopyFillAndXorWriteExactlyTheirBytes) {
  for (std::uint32_t i = 0; i < 24 * 24 * 37; ++i) {
    const std::uint32_t to = i % 24, from = i / 24 % 24, length = i / (24 * 24);
    const std::uint32_t distance = from < to ? to - from : from - to, head = (4 - to % 4) % 4;
    const bool has_head = distance >= length && distance % 4 == 0 && distance != 0;
    Arena expected, arena;
    std::memmove(&expected[to], &expected[from], std::max(length, has_head ? head : 0));
    tmkx_memcpy(&arena[to], &arena[from], length);
    ASSERT_EQ(arena, expected) << "copy " << from << " to " << to << ", length " << length;

    std::memset(&expected[to], 0xE7, std::max(length, head));
    tmkx_memset(&arena[to], 0xE7, length);
    ASSERT_EQ(arena, expected) << "fill at " << to << ", length " << length;

    const Arena source;
    for (std::size_t j = 0; j < length; ++j) expected[to + j] ^= source[from + j];
    tmkx_memxor(&arena[to], &arena[to], &source[from], length);
    ASSERT_EQ(arena, expected) << "xor at " << to << ", length " << length;
  }
}

}  // namespace
