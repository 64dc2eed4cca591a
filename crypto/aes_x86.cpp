// AES in CBC mode by AES-NI. The round keys lie in memory as the instructions take them, and the
// decryption schedule is that of the equivalent inverse cipher, which aesdec implements.

#include "crypto/aes_blocks.h"

#if defined(__x86_64__)
#include <immintrin.h>

namespace {

constexpr std::size_t lanes = 8;  // blocks in flight on decryption: covers the latency of aesdec
constexpr std::size_t max_round_keys = 15;

struct RoundKeys {
  __m128i key[max_round_keys];
};

__attribute__((target("aes,sse4.1"), always_inline)) inline RoundKeys load_round_keys(
    const AesKeySchedule& schedule) {
  RoundKeys keys = {};
  for (std::size_t i = 0; i <= aes_rounds(schedule); ++i) {
    keys.key[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(schedule.round_keys + 4 * i));
  }
  return keys;
}

}  // namespace

__attribute__((target("aes,sse4.1"))) void aes_cbc_encrypt_blocks_x86(
    const AesKeySchedule& encryption, std::uint8_t* chain, const std::uint8_t* in,
    std::uint8_t* out, std::size_t blocks) {
  const RoundKeys keys = load_round_keys(encryption);
  const std::size_t rounds = aes_rounds(encryption);
  __m128i state = _mm_loadu_si128(reinterpret_cast<const __m128i*>(chain));
  for (; blocks > 0; --blocks, in += aes_block_length, out += aes_block_length) {
    // The plaintext meets the first round key off the chain's critical path.
    const __m128i plain = _mm_loadu_si128(reinterpret_cast<const __m128i*>(in));
    state = _mm_xor_si128(state, _mm_xor_si128(plain, keys.key[0]));
    for (std::size_t round = 1; round < rounds; ++round) {
      state = _mm_aesenc_si128(state, keys.key[round]);
    }
    state = _mm_aesenclast_si128(state, keys.key[rounds]);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), state);
  }
  _mm_storeu_si128(reinterpret_cast<__m128i*>(chain), state);
}

__attribute__((target("aes,sse4.1"))) void aes_cbc_decrypt_blocks_x86(
    const AesKeySchedule& decryption, std::uint8_t* chain, std::uint8_t* in_out,
    std::size_t blocks) {
  const RoundKeys keys = load_round_keys(decryption);
  const std::size_t rounds = aes_rounds(decryption);
  __m128i previous = _mm_loadu_si128(reinterpret_cast<const __m128i*>(chain));
  auto* block = reinterpret_cast<__m128i*>(in_out);
  for (; blocks >= lanes; blocks -= lanes, block += lanes) {
    __m128i state[lanes];
    for (std::size_t i = 0; i < lanes; ++i) {
      state[i] = _mm_xor_si128(_mm_loadu_si128(block + i), keys.key[0]);
    }
    for (std::size_t round = 1; round < rounds; ++round) {
      for (__m128i& lane : state) lane = _mm_aesdec_si128(lane, keys.key[round]);
    }
    for (std::size_t i = 0; i < lanes; ++i) {
      const __m128i ciphertext = _mm_loadu_si128(block + i);
      const __m128i opened = _mm_aesdeclast_si128(state[i], keys.key[rounds]);
      _mm_storeu_si128(block + i, _mm_xor_si128(opened, previous));
      previous = ciphertext;
    }
  }
  for (; blocks > 0; --blocks, ++block) {
    const __m128i ciphertext = _mm_loadu_si128(block);
    __m128i state = _mm_xor_si128(ciphertext, keys.key[0]);
    for (std::size_t round = 1; round < rounds; ++round) {
      state = _mm_aesdec_si128(state, keys.key[round]);
    }
    state = _mm_aesdeclast_si128(state, keys.key[rounds]);
    _mm_storeu_si128(block, _mm_xor_si128(state, previous));
    previous = ciphertext;
  }
  _mm_storeu_si128(reinterpret_cast<__m128i*>(chain), previous);
}

#else

void aes_cbc_encrypt_blocks_x86(const AesKeySchedule& encryption, std::uint8_t* chain,
                                const std::uint8_t* in, std::uint8_t* out, std::size_t blocks) {
  aes_cbc_encrypt_blocks_portable(encryption, chain, in, out, blocks);
}

void aes_cbc_decrypt_blocks_x86(const AesKeySchedule& decryption, std::uint8_t* chain,
                                std::uint8_t* in_out, std::size_t blocks) {
  aes_cbc_decrypt_blocks_portable(decryption, chain, in_out, blocks);
}

#endif
