#include "front/sb10_stage2_commands.h"

#include <cstdio>

#include "crypto/rsa.h"
#include "front/image_commands.h"
#include "sb10/key_pair.h"
#include "sb10/public_key_file.h"
#include "sb10/stage2.h"
#include "sb20/key_buffers.h"
#include "sb20/key_pair.h"
#include "sb20/messages.h"

namespace {

Status seal_stage2(Arguments arguments, std::uint8_t* image, std::uint32_t length) {
  std::uint32_t signature_length = signature_bytes_1024;
  return sb10_Generate_Stage2(arguments[4], image, length, image + length, &signature_length);
}

Status verify_stage2(const std::uint8_t* image, std::uint32_t length, std::uint8_t* signature) {
  return Verify_PSS_RSASignature2(publicKey, publicKeyLen, image, length, signature,
                                  signature_bytes_1024);
}

}  // namespace

std::int32_t generate_sb10_keys(std::int32_t mode, const char* base_name) {
  std::fputs("RSA 1024 bits key is generating...\n", stdout);
  sb10_Generate_KeyPair(mode, base_name);
  return 0;
}

std::int32_t generate_sb10_stage2_keys(Arguments arguments) {
  return generate_sb10_keys(stage2_key_mode, arguments[2]);
}

std::int32_t sign_sb10_stage2(Arguments arguments) {
  return seal_image(arguments, signature_bytes_1024, seal_stage2);
}

std::int32_t verify_sb10_stage2(Arguments arguments) {
  return check_image(arguments, {signature_bytes_1024, read_sb10_public_key_file, verify_stage2,
                                 stage2_verified_line, stage2_refused_line});
}
