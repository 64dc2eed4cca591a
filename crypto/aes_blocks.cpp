#include "crypto/aes_blocks.h"

#include <algorithm>

#include "crypto/cpu.h"
#include "crypto/mem.h"

void aes_cbc_encrypt_blocks_portable(const AesKeySchedule& encryption, std::uint8_t* chain,
                                     const std::uint8_t* in, std::uint8_t* out,
                                     std::size_t blocks) {
  for (; blocks > 0; --blocks, in += aes_block_length, out += aes_block_length) {
    tmkx_memxor(chain, chain, in, aes_block_length);
    zeb_AES_Encrypt(chain, &encryption);
    std::copy_n(chain, aes_block_length, out);
  }
}

void aes_cbc_decrypt_blocks_portable(const AesKeySchedule& decryption, std::uint8_t* chain,
                                     std::uint8_t* in_out, std::size_t blocks) {
  for (; blocks > 0; --blocks, in_out += aes_block_length) {
    std::uint8_t ciphertext[aes_block_length];
    std::copy_n(in_out, aes_block_length, ciphertext);
    zeb_AES_Decrypt(in_out, &decryption);
    tmkx_memxor(in_out, in_out, chain, aes_block_length);
    std::copy_n(ciphertext, aes_block_length, chain);
  }
}

void aes_cbc_encrypt_blocks(const AesKeySchedule& encryption, std::uint8_t* chain,
                            const std::uint8_t* in, std::uint8_t* out, std::size_t blocks) {
  if (crypto_paths().aes) {
    aes_cbc_encrypt_blocks_x86(encryption, chain, in, out, blocks);
  } else {
    aes_cbc_encrypt_blocks_portable(encryption, chain, in, out, blocks);
  }
}

void aes_cbc_decrypt_blocks(const AesKeySchedule& decryption, std::uint8_t* chain,
                            std::uint8_t* in_out, std::size_t blocks) {
  if (crypto_paths().aes) {
    aes_cbc_decrypt_blocks_x86(decryption, chain, in_out, blocks);
  } else {
    aes_cbc_decrypt_blocks_portable(decryption, chain, in_out, blocks);
  }
}
