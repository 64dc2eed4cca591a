#include "crypto/sha1_blocks.h"

#include <bit>

#include "crypto/bytes.h"
#include "crypto/cpu.h"

namespace {

struct WorkingWords {
  std::uint32_t a, b, c, d, e;
};

std::uint32_t choose(std::uint32_t b, std::uint32_t c, std::uint32_t d) {
  return (b & c) | (~b & d);
}
std::uint32_t parity(std::uint32_t b, std::uint32_t c, std::uint32_t d) {
  return b ^ c ^ d;
}
std::uint32_t majority(std::uint32_t b, std::uint32_t c, std::uint32_t d) {
  return (b & c) | (b & d) | (c & d);
}

/// Twenty rounds with one round function and constant, unrolled by five so that the working words
/// change roles instead of places.
template <std::uint32_t (*F)(std::uint32_t, std::uint32_t, std::uint32_t), std::uint32_t K>
void twenty_rounds(WorkingWords& v, const std::uint32_t* schedule) {
  const auto round = [](std::uint32_t a, std::uint32_t& b, std::uint32_t c, std::uint32_t d,
                        std::uint32_t& e, std::uint32_t w) {
    e += std::rotl(a, 5) + F(b, c, d) + K + w;
    b = std::rotl(b, 30);
  };
  for (std::size_t t = 0; t < 20; t += 5) {
    round(v.a, v.b, v.c, v.d, v.e, schedule[t]);
    round(v.e, v.a, v.b, v.c, v.d, schedule[t + 1]);
    round(v.d, v.e, v.a, v.b, v.c, schedule[t + 2]);
    round(v.c, v.d, v.e, v.a, v.b, schedule[t + 3]);
    round(v.b, v.c, v.d, v.e, v.a, schedule[t + 4]);
  }
}

}  // namespace

void sha1_compress_blocks_portable(std::uint32_t* state, const std::uint8_t* data,
                                   std::size_t blocks) {
  for (; blocks > 0; --blocks, data += 64) {
    std::uint32_t w[80];
    for (std::size_t t = 0; t < 16; ++t) w[t] = load_be32(data + 4 * t);
    for (std::size_t t = 16; t < 80; ++t) {
      w[t] = std::rotl(w[t - 3] ^ w[t - 8] ^ w[t - 14] ^ w[t - 16], 1);
    }
    WorkingWords v = {state[0], state[1], state[2], state[3], state[4]};
    twenty_rounds<choose, 0x5A827999>(v, w);
    twenty_rounds<parity, 0x6ED9EBA1>(v, w + 20);
    twenty_rounds<majority, 0x8F1BBCDC>(v, w + 40);
    twenty_rounds<parity, 0xCA62C1D6>(v, w + 60);
    state[0] += v.a;
    state[1] += v.b;
    state[2] += v.c;
    state[3] += v.d;
    state[4] += v.e;
  }
}

void sha1_compress_blocks(std::uint32_t* state, const std::uint8_t* data, std::size_t blocks) {
  if (crypto_paths().sha1) {
    sha1_compress_blocks_x86(state, data, blocks);
  } else {
    sha1_compress_blocks_portable(state, data, blocks);
  }
}
