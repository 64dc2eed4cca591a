// SHA-1 by the Arm SHA instructions. sha1c, sha1p and sha1m do four rounds with one of the round
// functions, sha1h derives the e of four rounds later, sha1su0 and sha1su1 extend the message
// schedule by four words.

#include "crypto/cpu.h"
#include "crypto/sha1_processor.h"

#if CRYPTO_PATHS_ARM
#include <arm_neon.h>

#define SHA1_TARGET __attribute__((target("+crypto")))
#define SHA1_INLINE SHA1_TARGET __attribute__((always_inline)) inline

namespace sealwright {

namespace {

constexpr int groups = 20;  // of four rounds; five in a row share round function and constant

/// The four rounds of a group with its words `w`; `e` becomes that of the next group.
SHA1_INLINE void four_rounds(uint32x4_t& abcd, std::uint32_t& e, uint32x4_t w, int group) {
  constexpr std::uint32_t constants[] = {0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC, 0xCA62C1D6};
  const uint32x4_t sum = vaddq_u32(w, vdupq_n_u32(constants[group / 5]));
  const std::uint32_t next_e = vsha1h_u32(vgetq_lane_u32(abcd, 0));
  switch (group / 5) {
    case 0:
      abcd = vsha1cq_u32(abcd, e, sum);
      break;
    case 2:
      abcd = vsha1mq_u32(abcd, e, sum);
      break;
    default:
      abcd = vsha1pq_u32(abcd, e, sum);
  }
  e = next_e;
}

}  // namespace

SHA1_TARGET void sha1_compress_by_processor(std::uint32_t* state, const std::uint8_t* data,
                                            std::size_t blocks) {
  uint32x4_t abcd = vld1q_u32(state);
  std::uint32_t e = state[4];
  for (; blocks > 0; --blocks, data += 64) {
    uint32x4_t w[4];  // the words of this group and the next three
    for (int i = 0; i < 4; ++i) {
      w[i] = vreinterpretq_u32_u8(vrev32q_u8(vld1q_u8(data + 16 * i)));
    }
    const uint32x4_t abcd_before = abcd;
    const std::uint32_t e_before = e;
// Unrolled in full, so that the words stay in registers and each group's function is known.
#pragma GCC unroll 20
    for (int group = 0; group < groups; ++group) {
      uint32x4_t& words = w[group % 4];
      four_rounds(abcd, e, words, group);
      words = vsha1su1q_u32(vsha1su0q_u32(words, w[(group + 1) % 4], w[(group + 2) % 4]),
                            w[(group + 3) % 4]);
    }
    abcd = vaddq_u32(abcd, abcd_before);
    e += e_before;
  }
  vst1q_u32(state, abcd);
  state[4] = e;
}

}  // namespace sealwright

#endif
