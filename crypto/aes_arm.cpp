// AES in CBC mode by the Arm AES instructions. aese and aesd take the round key before the rest of
// the round, so that the last key is left over for an XOR. The decryption schedule is that of the
// equivalent inverse cipher, whose rounds aesd and aesimc are.

#include "crypto/aes_processor.h"
#include "crypto/cpu.h"

#if CRYPTO_PATHS_ARM
#include <arm_neon.h>

#define AES_TARGET __attribute__((target("+crypto")))
#define AES_INLINE AES_TARGET __attribute__((always_inline)) inline

namespace sealwright {

namespace {

constexpr std::size_t lanes = 8;  // blocks in flight on decryption, to cover the rounds' latency

/// A round key, read where it lies: a copy of the schedule would stay behind on the stack.
AES_INLINE uint8x16_t round_key(const AesKeySchedule& schedule, std::size_t round) {
  return vld1q_u8(reinterpret_cast<const std::uint8_t*>(schedule.round_keys + 4 * round));
}

/// Decrypts `Lanes` blocks in place; `previous` is the ciphertext block before them, in and out.
template <std::size_t Lanes>
AES_INLINE void decrypt_lanes(const AesKeySchedule& schedule, uint8x16_t& previous,
                              std::uint8_t* bytes) {
  const std::size_t rounds = aes_rounds(schedule);
  uint8x16_t state[Lanes];
  for (std::size_t i = 0; i < Lanes; ++i) state[i] = vld1q_u8(bytes + aes_block_length * i);
  for (std::size_t round = 0; round + 1 < rounds; ++round) {
    const uint8x16_t key = round_key(schedule, round);
    for (uint8x16_t& lane : state) lane = vaesimcq_u8(vaesdq_u8(lane, key));
  }
  for (uint8x16_t& lane : state) {
    lane = vaesdq_u8(lane, round_key(schedule, rounds - 1));
    const uint8x16_t whitened = veorq_u8(previous, round_key(schedule, rounds));
    previous = vld1q_u8(bytes);
    vst1q_u8(bytes, veorq_u8(lane, whitened));
    bytes += aes_block_length;
  }
}

}  // namespace

AES_TARGET void aes_cbc_encrypt_by_processor(const AesKeySchedule& encryption, std::uint8_t* chain,
                                             const std::uint8_t* in, std::uint8_t* out,
                                             std::size_t blocks) {
  const std::size_t last = aes_rounds(encryption) - 1;
  uint8x16_t state = vld1q_u8(chain);
  for (; blocks > 0; --blocks, in += aes_block_length, out += aes_block_length) {
    state = veorq_u8(state, vld1q_u8(in));
    for (std::size_t round = 0; round < last; ++round) {
      state = vaesmcq_u8(vaeseq_u8(state, round_key(encryption, round)));
    }
    state = vaeseq_u8(state, round_key(encryption, last));
    state = veorq_u8(state, round_key(encryption, last + 1));
    vst1q_u8(out, state);
  }
  vst1q_u8(chain, state);
}

AES_TARGET void aes_cbc_decrypt_by_processor(const AesKeySchedule& decryption, std::uint8_t* chain,
                                             std::uint8_t* in_out, std::size_t blocks) {
  uint8x16_t previous = vld1q_u8(chain);
  for (; blocks >= lanes; blocks -= lanes, in_out += lanes * aes_block_length) {
    decrypt_lanes<lanes>(decryption, previous, in_out);
  }
  for (; blocks > 0; --blocks, in_out += aes_block_length) {
    decrypt_lanes<1>(decryption, previous, in_out);
  }
  vst1q_u8(chain, previous);
}

}  // namespace sealwright

#endif
