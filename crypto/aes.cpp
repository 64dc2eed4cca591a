#include "crypto/aes.h"

#include <algorithm>
#include <array>
#include <bit>

#include "base/bytes.h"

namespace {

using sealwright::aes_rounds;
using sealwright::load_le32;
using sealwright::store_le32;

using ByteTable = std::array<std::uint8_t, 256>;
using WordTable = std::array<std::uint32_t, 256>;

constexpr std::uint32_t block_words = aes_block_length / 4;

constexpr std::uint8_t multiply(std::uint8_t a, std::uint8_t b) {
  std::uint32_t product = 0;
  std::uint32_t shifted = a;
  for (std::uint32_t rest = b; rest != 0; rest >>= 1) {
    if ((rest & 1) != 0) product ^= shifted;
    shifted <<= 1;
    if ((shifted & 0x100) != 0) shifted ^= 0x11B;
  }
  return static_cast<std::uint8_t>(product);
}

// The tables are computed by the compiler from FIPS 197's definitions.

/// S-box: multiplicative inverse, then the affine map (FIPS 197, 5.1.1).
constexpr ByteTable make_sbox() {
  ByteTable table = {};
  // 3 generates the multiplicative group and 0xF6 is its inverse, so x and y stay inverses.
  std::uint8_t x = 1;
  std::uint8_t y = 1;
  do {
    x = multiply(x, 3);
    y = multiply(y, 0xF6);
    table[x] = static_cast<std::uint8_t>(y ^ std::rotl(y, 1) ^ std::rotl(y, 2) ^ std::rotl(y, 3) ^
                                         std::rotl(y, 4) ^ 0x63);
  } while (x != 1);
  table[0] = 0x63;
  return table;
}

constexpr ByteTable make_inverse(const ByteTable& table) {
  ByteTable inverse = {};
  for (std::uint32_t i = 0; i < table.size(); ++i) inverse[table[i]] = static_cast<std::uint8_t>(i);
  return inverse;
}

/// Column of (Inv)MixColumns for one byte, its rows from the low byte of the word up.
constexpr std::uint32_t mixed_column(std::uint8_t byte, const std::array<std::uint8_t, 4>& rows) {
  std::uint32_t column = 0;
  for (std::uint32_t row = 0; row < 4; ++row) {
    column |= std::uint32_t{multiply(byte, rows[row])} << (8 * row);
  }
  return column;
}

constexpr std::array<std::uint8_t, 4> mix_column = {2, 1, 1, 3};
constexpr std::array<std::uint8_t, 4> inverse_mix_column = {14, 9, 13, 11};

/// A whole round of one byte: S-box, then its column of (Inv)MixColumns.
constexpr WordTable make_round_table(const ByteTable& sbox,
                                     const std::array<std::uint8_t, 4>& rows) {
  WordTable table = {};
  for (std::uint32_t i = 0; i < table.size(); ++i) table[i] = mixed_column(sbox[i], rows);
  return table;
}

constexpr ByteTable sbox = make_sbox();
constexpr ByteTable inverse_sbox = make_inverse(sbox);
constexpr WordTable round_table = make_round_table(sbox, mix_column);
constexpr WordTable inverse_round_table = make_round_table(inverse_sbox, inverse_mix_column);

std::uint8_t byte_of(std::uint32_t word, int index) {
  return static_cast<std::uint8_t>(word >> (8 * index));
}

/// The four bytes of a word, taken one each from four words, through the S-box.
std::uint32_t substitute(const ByteTable& table, std::uint32_t w0, std::uint32_t w1,
                         std::uint32_t w2, std::uint32_t w3) {
  return table[byte_of(w0, 0)] | std::uint32_t{table[byte_of(w1, 1)]} << 8 |
         std::uint32_t{table[byte_of(w2, 2)]} << 16 | std::uint32_t{table[byte_of(w3, 3)]} << 24;
}

/// Runs a block through all rounds. `step` is the column distance that ShiftRows moves row 1 by:
/// 1 to encrypt, 3 to decrypt.
template <std::uint32_t Step>
void run_rounds(std::uint8_t* block, const AesKeySchedule& schedule, const WordTable& table,
                const ByteTable& last) {
  const std::uint32_t rounds = aes_rounds(schedule);
  const std::uint32_t* key = schedule.round_keys;
  std::array<std::uint32_t, block_words> state;
  for (std::size_t j = 0; j < block_words; ++j) state[j] = load_le32(block + 4 * j) ^ key[j];
  for (std::uint32_t round = 1; round < rounds; ++round) {
    key += block_words;
    std::array<std::uint32_t, block_words> next;
    for (std::size_t j = 0; j < block_words; ++j) {
      next[j] = key[j] ^ table[byte_of(state[j], 0)] ^
                std::rotl(table[byte_of(state[(j + Step) % 4], 1)], 8) ^
                std::rotl(table[byte_of(state[(j + 2 * Step) % 4], 2)], 16) ^
                std::rotl(table[byte_of(state[(j + 3 * Step) % 4], 3)], 24);
    }
    state = next;
  }
  key += block_words;
  for (std::size_t j = 0; j < block_words; ++j) {
    store_le32(block + 4 * j,
               key[j] ^ substitute(last, state[j], state[(j + Step) % 4], state[(j + 2 * Step) % 4],
                                   state[(j + 3 * Step) % 4]));
  }
}

/// Round keys of the equivalent inverse cipher: reversed, the inner ones through InvMixColumns.
void invert_schedule(const AesKeySchedule& enc, AesKeySchedule& dec) {
  const std::uint32_t rounds = aes_rounds(enc);
  dec.key_words = enc.key_words;
  for (std::uint32_t round = 0; round <= rounds; ++round) {
    for (std::uint32_t j = 0; j < block_words; ++j) {
      const std::uint32_t word = enc.round_keys[block_words * (rounds - round) + j];
      std::uint32_t mixed = word;
      if (round != 0 && round != rounds) {
        mixed = 0;
        for (int row = 0; row < 4; ++row) {
          mixed ^= std::rotl(mixed_column(byte_of(word, row), inverse_mix_column), 8 * row);
        }
      }
      dec.round_keys[block_words * round + j] = mixed;
    }
  }
}

}  // namespace

// NOLINTNEXTLINE(clang-diagnostic-reserved-identifier): the interface gives this name
std::uint8_t _ff_mult(std::uint8_t a, std::uint8_t b) {
  return multiply(a, b);
}

// NOLINTNEXTLINE(clang-diagnostic-reserved-identifier): the interface gives this name
Status _AES_KeySchedule(const std::uint8_t* key, std::uint32_t keyLen, AesKeySchedule* encSchedule,
                        AesKeySchedule* decSchedule) {
  if (key == nullptr || encSchedule == nullptr) return ZEB_ERR_NULL_POINTER;
  if (keyLen != 16 && keyLen != 24 && keyLen != 32) return ZEB_ERR_KEY_LENGTH;
  const std::uint32_t key_words = keyLen / 4;
  encSchedule->key_words = key_words;
  std::uint32_t* w = encSchedule->round_keys;
  for (std::uint32_t i = 0; i < key_words; ++i) w[i] = load_le32(key + std::size_t{4} * i);

  std::uint8_t round_constant = 1;
  for (std::uint32_t i = key_words; i < block_words * (aes_rounds(*encSchedule) + 1); ++i) {
    std::uint32_t word = w[i - 1];
    if (i % key_words == 0) {
      word = std::rotr(word, 8);
      word = substitute(sbox, word, word, word, word) ^ round_constant;
      round_constant = multiply(round_constant, 2);
    } else if (key_words > 6 && i % key_words == 4) {
      word = substitute(sbox, word, word, word, word);
    }
    w[i] = w[i - key_words] ^ word;
  }
  if (decSchedule != nullptr) invert_schedule(*encSchedule, *decSchedule);
  return ZEB_SUCCESS;
}

void zeb_AES_Encrypt(std::uint8_t* block, const AesKeySchedule* encSchedule) {
  run_rounds<1>(block, *encSchedule, round_table, sbox);
}

void zeb_AES_Decrypt(std::uint8_t* block, const AesKeySchedule* decSchedule) {
  run_rounds<3>(block, *decSchedule, inverse_round_table, inverse_sbox);
}
