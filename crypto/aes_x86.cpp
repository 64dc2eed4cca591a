// AES in CBC mode by AES-NI. The round keys lie in memory as the instructions take them, and the
// decryption schedule is that of the equivalent inverse cipher, which aesdec implements.

#include "crypto/aes_processor.h"
#include "crypto/cpu.h"

#if CRYPTO_PATHS_X86
#include <immintrin.h>

#define AES_TARGET __attribute__((target("aes,sse4.1")))
#define AES_INLINE AES_TARGET __attribute__((always_inline)) inline

namespace sealwright {

namespace {

constexpr std::size_t lanes = 8;  // blocks in flight on decryption: covers the latency of aesdec

/// A round key, read where it lies: a copy of the schedule would stay behind on the stack.
AES_INLINE __m128i round_key(const AesKeySchedule& schedule, std::size_t round) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(schedule.round_keys + 4 * round));
}

/// Decrypts `Lanes` blocks in place; `previous` is the ciphertext block before them, in and out.
template <std::size_t Lanes>
AES_INLINE void decrypt_lanes(const AesKeySchedule& schedule, __m128i& previous, __m128i* block) {
  const std::size_t rounds = aes_rounds(schedule);
  __m128i state[Lanes];
  for (std::size_t i = 0; i < Lanes; ++i) {
    state[i] = _mm_xor_si128(_mm_loadu_si128(block + i), round_key(schedule, 0));
  }
  for (std::size_t round = 1; round < rounds; ++round) {
    const __m128i key = round_key(schedule, round);
    for (__m128i& lane : state) lane = _mm_aesdec_si128(lane, key);
  }
  const __m128i last_key = round_key(schedule, rounds);
  for (std::size_t i = 0; i < Lanes; ++i) {
    const __m128i ciphertext = _mm_loadu_si128(block + i);
    const __m128i opened = _mm_aesdeclast_si128(state[i], last_key);
    _mm_storeu_si128(block + i, _mm_xor_si128(opened, previous));
    previous = ciphertext;
  }
}

}  // namespace

AES_TARGET void aes_cbc_encrypt_by_processor(const AesKeySchedule& encryption, std::uint8_t* chain,
                                             const std::uint8_t* in, std::uint8_t* out,
                                             std::size_t blocks) {
  const std::size_t rounds = aes_rounds(encryption);
  __m128i state = _mm_loadu_si128(reinterpret_cast<const __m128i*>(chain));
  for (; blocks > 0; --blocks, in += aes_block_length, out += aes_block_length) {
    // The plaintext meets the first round key off the chain's critical path.
    const __m128i plain = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    state = _mm_xor_si128(state, _mm_xor_si128(plain, round_key(encryption, 0)));
    for (std::size_t round = 1; round < rounds; ++round) {
      state = _mm_aesenc_si128(state, round_key(encryption, round));
    }
    state = _mm_aesenclast_si128(state, round_key(encryption, rounds));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), state);
  }
  _mm_storeu_si128(reinterpret_cast<__m128i*>(chain), state);
}

AES_TARGET void aes_cbc_decrypt_by_processor(const AesKeySchedule& decryption, std::uint8_t* chain,
                                             std::uint8_t* in_out, std::size_t blocks) {
  __m128i previous = _mm_loadu_si128(reinterpret_cast<const __m128i*>(chain));
  auto* block = reinterpret_cast<__m128i*>(in_out);
  for (; blocks >= lanes; blocks -= lanes, block += lanes) {
    decrypt_lanes<lanes>(decryption, previous, block);
  }
  for (; blocks > 0; --blocks, ++block) decrypt_lanes<1>(decryption, previous, block);
  _mm_storeu_si128(reinterpret_cast<__m128i*>(chain), previous);
}

}  // namespace sealwright

#endif
