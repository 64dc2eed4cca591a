#include "front/sb20_stage2_commands.h"

#include <cstdio>

#include "crypto/rsa.h"
#include "front/image_commands.h"
#include "sb20/key_buffers.h"
#include "sb20/key_pair.h"
#include "sb20/messages.h"
#include "sb20/stage2.h"
#include "util/file.h"

namespace {

Status seal_stage2(Arguments arguments, std::uint8_t* image, std::uint32_t length) {
  std::uint32_t signature_length = signature_bytes_2048;
  return sb20_Generate_Stage2(arguments[4], image, length, image + length, &signature_length);
}

void read_public_key(const char* path) {
  publicKeyLen = static_cast<std::uint32_t>(read_whole_or_abort(path, publicKey, sizeof publicKey));
}

Status verify_stage2(const std::uint8_t* image, std::uint32_t length, std::uint8_t* signature) {
  // Only the public key that the file starts with counts, whatever the file's length.
  return Verify_PSS_RSASignature2(publicKey, sizeof(Sb20PublicKey), image, length, signature,
                                  signature_bytes_2048);
}

}  // namespace

std::int32_t generate_sb20_keys(std::int32_t mode, const char* base_name) {
  std::fputs("RSA 2048 bits key is generating...\n", stdout);
  sb20_Generate_KeyPair(mode, base_name);
  return 0;
}

std::int32_t generate_sb20_stage2_keys(Arguments arguments) {
  return generate_sb20_keys(stage2_key_mode, arguments[2]);
}

std::int32_t sign_sb20_stage2(Arguments arguments) {
  return seal_image(arguments, signature_bytes_2048, seal_stage2);
}

std::int32_t verify_sb20_stage2(Arguments arguments) {
  return check_image(arguments, {signature_bytes_2048, read_public_key, verify_stage2,
                                 stage2_verified_line, stage2_refused_line});
}
