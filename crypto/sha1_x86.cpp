// SHA-1 by the x86 SHA extensions. Four rounds per instruction: sha1rnds4 does them, sha1nexte
// derives the next e, sha1msg1 and sha1msg2 with one XOR extend the message schedule.

#include "crypto/cpu.h"
#include "crypto/sha1_processor.h"

#if CRYPTO_PATHS_X86
#include <immintrin.h>

#define SHA1_TARGET __attribute__((target("sha,sse4.1,ssse3")))
#define SHA1_INLINE SHA1_TARGET __attribute__((always_inline)) inline

namespace sealwright {

namespace {

/// Rounds 4g to 4g + 3 with the words `w` of that group; F chooses function and constant. Takes the
/// saved a of four rounds ago in `e` and leaves the present one there.
template <int F>
SHA1_INLINE void four_rounds(__m128i& abcd, __m128i& e, __m128i w) {
  const __m128i e_plus_w = _mm_sha1nexte_epu32(e, w);
  e = abcd;
  abcd = _mm_sha1rnds4_epu32(abcd, e_plus_w, F);
}

/// w0 becomes the words of four groups later: the group 16 rounds on.
SHA1_INLINE void extend(__m128i& w0, __m128i w1, __m128i w2, __m128i w3) {
  w0 = _mm_sha1msg2_epu32(_mm_xor_si128(_mm_sha1msg1_epu32(w0, w1), w2), w3);
}

/// Sixteen rounds with the four groups, each extended for its next turn.
template <int F0, int F1, int F2, int F3>
SHA1_INLINE void sixteen_rounds(__m128i& abcd, __m128i& e, __m128i& w0, __m128i& w1, __m128i& w2,
                                __m128i& w3) {
  four_rounds<F0>(abcd, e, w0);
  extend(w0, w1, w2, w3);
  four_rounds<F1>(abcd, e, w1);
  extend(w1, w2, w3, w0);
  four_rounds<F2>(abcd, e, w2);
  extend(w2, w3, w0, w1);
  four_rounds<F3>(abcd, e, w3);
  extend(w3, w0, w1, w2);
}

}  // namespace

SHA1_TARGET void sha1_compress_by_processor(std::uint32_t* state, const std::uint8_t* data,
                                            std::size_t blocks) {
  // The instructions take the first word in the highest lane.
  const __m128i reverse_bytes = _mm_set_epi64x(0x0001020304050607, 0x08090A0B0C0D0E0F);
  __m128i abcd = _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(state)), 0x1B);
  __m128i e_start = _mm_set_epi32(static_cast<int>(state[4]), 0, 0, 0);

  for (; blocks > 0; --blocks, data += 64) {
    const auto load = [&](int group) SHA1_TARGET __attribute__((always_inline)) {
      const auto* words = reinterpret_cast<const __m128i*>(data + 16 * group);
      return _mm_shuffle_epi8(_mm_loadu_si128(words), reverse_bytes);
    };
    __m128i w0 = load(0);
    __m128i w1 = load(1);
    __m128i w2 = load(2);
    __m128i w3 = load(3);
    const __m128i abcd_before = abcd;

    // The first group adds e itself; later ones derive it from the a of four rounds ago.
    __m128i e = abcd;
    abcd = _mm_sha1rnds4_epu32(abcd, _mm_add_epi32(e_start, w0), 0);
    extend(w0, w1, w2, w3);
    four_rounds<0>(abcd, e, w1);
    extend(w1, w2, w3, w0);
    four_rounds<0>(abcd, e, w2);
    extend(w2, w3, w0, w1);
    four_rounds<0>(abcd, e, w3);
    extend(w3, w0, w1, w2);
    sixteen_rounds<0, 1, 1, 1>(abcd, e, w0, w1, w2, w3);
    sixteen_rounds<1, 1, 2, 2>(abcd, e, w0, w1, w2, w3);
    sixteen_rounds<2, 2, 2, 3>(abcd, e, w0, w1, w2, w3);
    four_rounds<3>(abcd, e, w0);
    four_rounds<3>(abcd, e, w1);
    four_rounds<3>(abcd, e, w2);
    four_rounds<3>(abcd, e, w3);

    e_start = _mm_sha1nexte_epu32(e, e_start);
    abcd = _mm_add_epi32(abcd, abcd_before);
  }
  _mm_storeu_si128(reinterpret_cast<__m128i*>(state), _mm_shuffle_epi32(abcd, 0x1B));
  state[4] = static_cast<std::uint32_t>(_mm_extract_epi32(e_start, 3));
}

}  // namespace sealwright

#endif
