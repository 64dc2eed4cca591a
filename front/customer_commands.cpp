#include "front/customer_commands.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <tuple>

#include "crypto/rsa.h"
#include "front/image.h"
#include "front/texts.h"
#include "sb10/key_pair.h"
#include "sb10/key_store.h"
#include "sb10/stage2.h"
#include "sb20/key_pair.h"
#include "sb20/stage2.h"
#include "scheme/key_pair.h"
#include "scheme/key_store.h"

namespace sealwright {

namespace {

/// In what the commands of the schemes differ.
struct Stage2Scheme {
  const char* generating_line;
  Status (*generate_key_pair)(std::int32_t mode, const char* base_name);
  Status (*sign)(const char* private_key_file, const std::uint8_t* image,
                 std::uint32_t image_length, std::uint8_t* signature,
                 std::uint32_t* signature_length);
  std::uint32_t signature_length;
  ByteView (*load_public_key)(const char* path);
};
constexpr Stage2Scheme sb20 = {
    generating_2048_line, sb20_Generate_KeyPair, sb20_Generate_Stage2, signature_bytes_2048,
    [](const char* path) -> ByteView { return load_public_key_file(path); }};
constexpr Stage2Scheme sb10 = {generating_1024_line, sb10_Generate_KeyPair, sb10_Generate_Stage2,
                               signature_bytes_1024, load_sb10_stage2_public_key};

std::int32_t generate_keys(Arguments arguments, const Stage2Scheme& scheme) {
  require_randomness();
  std::fputs(scheme.generating_line, stdout);
  // Quirk: here and for root keys the result is 0 also when nothing could be made; scripts depend
  // on it.
  std::ignore = scheme.generate_key_pair(stage2_key_mode, arguments[2]);
  return 0;
}

std::int32_t sign(Arguments arguments, const Stage2Scheme& scheme) {
  require_randomness();
  Image image = read_image(arguments[2], scheme.signature_length);
  std::uint32_t signature_length = scheme.signature_length;
  const Status status = scheme.sign(arguments[4], image.buffer.data(), image.length, end_of(image),
                                    &signature_length);
  return publish(arguments[3], image, status);
}

std::int32_t verify(Arguments arguments, const Stage2Scheme& scheme) {
  const Image image = read_image(arguments[2], 0);
  const SecuredImage secured = split(image, scheme.signature_length);
  std::array<std::uint8_t, signature_bytes_2048> signature;
  std::copy(secured.tail.begin(), secured.tail.end(), signature.begin());
  const ByteView key = scheme.load_public_key(arguments[3]);
  const bool valid = !secured.tail.empty() &&
                     Verify_PSS_RSASignature2(key.data(), length_of(key), secured.body.data(),
                                              length_of(secured.body), signature.data(),
                                              scheme.signature_length) == ZEB_SUCCESS;
  return print_verdict(valid, stage2_verified_line, stage2_refused_line);
}

}  // namespace

std::int32_t generate_sb20_stage2_keys(Arguments arguments) {
  return generate_keys(arguments, sb20);
}

std::int32_t generate_sb10_stage2_keys(Arguments arguments) {
  return generate_keys(arguments, sb10);
}

std::int32_t sign_sb20_stage2(Arguments arguments) {
  return sign(arguments, sb20);
}

std::int32_t sign_sb10_stage2(Arguments arguments) {
  return sign(arguments, sb10);
}

std::int32_t verify_sb20_stage2(Arguments arguments) {
  return verify(arguments, sb20);
}

std::int32_t verify_sb10_stage2(Arguments arguments) {
  return verify(arguments, sb10);
}

std::int32_t show_version(Arguments /*arguments*/) {
  print_version_line();
  return 0;
}

}  // namespace sealwright
