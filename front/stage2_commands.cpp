#include <cstdio>

#include "crypto/prng.h"
#include "crypto/rsa.h"
#include "front/commands.h"
#include "front/image.h"
#include "front/texts.h"
#include "sb10/key_pair.h"
#include "sb10/key_store.h"
#include "sb10/stage2.h"
#include "sb20/key_pair.h"
#include "sb20/stage2.h"
#include "scheme/key_pair.h"
#include "scheme/key_store.h"
#include "scheme/messages.h"
#include "util/process.h"

namespace {

std::int32_t verify_stage2(Image& image, ByteView key, std::uint32_t signature_length) {
  const SecuredImage secured = split(image, signature_length);
  const bool valid = !secured.tail.empty() &&
                     Verify_PSS_RSASignature2(key.data(), length_of(key), secured.body.data(),
                                              length_of(secured.body), secured.tail.data(),
                                              signature_length) == ZEB_SUCCESS;
  return print_verdict(valid, stage2_verified_line, stage2_refused_line);
}

}  // namespace

void require_randomness() {
  if (!random_source_available()) sealwright::abort_run();
}

// Quirk: here and for root keys the result is 0 also when nothing could be made; scripts depend on
// it.
std::int32_t generate_sb20_stage2_keys(Arguments arguments) {
  require_randomness();
  std::fputs(generating_2048_line, stdout);
  sb20_Generate_KeyPair(stage2_key_mode, arguments[2]);
  return 0;
}

std::int32_t generate_sb10_stage2_keys(Arguments arguments) {
  require_randomness();
  std::fputs(generating_1024_line, stdout);
  sb10_Generate_KeyPair(stage2_key_mode, arguments[2]);
  return 0;
}

std::int32_t sign_sb20_stage2(Arguments arguments) {
  require_randomness();
  Image image = read_image(arguments[2], signature_bytes_2048);
  std::uint32_t signature_length = signature_bytes_2048;
  const Status status = sb20_Generate_Stage2(arguments[4], image.buffer.data(), image.length,
                                             end_of(image), &signature_length);
  return publish(arguments[3], image, status);
}

std::int32_t sign_sb10_stage2(Arguments arguments) {
  require_randomness();
  Image image = read_image(arguments[2], signature_bytes_1024);
  std::uint32_t signature_length = signature_bytes_1024;
  const Status status = sb10_Generate_Stage2(arguments[4], image.buffer.data(), image.length,
                                             end_of(image), &signature_length);
  return publish(arguments[3], image, status);
}

std::int32_t verify_sb20_stage2(Arguments arguments) {
  Image image = read_image(arguments[2], 0);
  return verify_stage2(image, load_public_key_file(arguments[3]), signature_bytes_2048);
}

std::int32_t verify_sb10_stage2(Arguments arguments) {
  Image image = read_image(arguments[2], 0);
  return verify_stage2(image, load_sb10_stage2_public_key(arguments[3]), signature_bytes_1024);
}

std::int32_t show_version(Arguments /*arguments*/) {
  print_version_line();
  return 0;
}
