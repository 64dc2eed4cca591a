#include "front/customer_commands.h"

#include <algorithm>
#include <array>

#include "crypto/rsa.h"
#include "crypto/sha1.h"
#include "front/command_steps.h"
#include "front/image.h"
#include "front/texts.h"
#include "sb10/key_pair.h"
#include "sb10/key_store.h"
#include "sb10/stage2.h"
#include "sb20/key_pair.h"
#include "sb20/stage2.h"
#include "scheme/key_pair.h"
#include "scheme/key_store.h"
#include "util/block_reader.h"

namespace sealwright {

namespace {

/// In what signing and checking differ between the schemes.
struct Stage2Scheme {
  Status (*sign)(const char* private_key_file, const std::uint8_t* image,
                 std::uint32_t image_length, std::uint8_t* signature,
                 std::uint32_t* signature_length);
  std::uint32_t signature_length;
  ByteView (*load_public_key)(const char* path);
};
constexpr Stage2Scheme sb20 = {
    sb20_Generate_Stage2, signature_bytes_2048,
    [](const char* path) -> ByteView { return load_public_key_file(path); }};
constexpr Stage2Scheme sb10 = {sb10_Generate_Stage2, signature_bytes_1024,
                               load_sb10_stage2_public_key};

std::int32_t sign(Arguments arguments, const Stage2Scheme& scheme) {
  require_randomness();
  Image image = read_image(arguments[2], scheme.signature_length);
  std::uint32_t signature_length = scheme.signature_length;
  const Status status = scheme.sign(arguments[4], image.buffer.data(), image.length, end_of(image),
                                    &signature_length);
  return publish(arguments[3], image, status);
}

/// What is kept of a secured image that was read through.
struct HashedImage {
  std::array<std::uint8_t, sha1_digest_length> digest;       // of what was signed
  std::array<std::uint8_t, signature_bytes_2048> signature;  // what ends the image
  bool is_complete;  // not shorter than its signature; the rest holds only then
};

/// Reads an image once, to its end, and hashes what the signature covers on the way.
HashedImage hash_image(const char* path, std::uint32_t signature_length) {
  HashedImage image = {};
  ZEB_SHA1 hash;
  sha1_init(hash);
  BlockReader reader(path);
  while (reader.left() > signature_length) {
    sha1_update(hash, reader.next(reader.left() - signature_length));
  }
  sha1_final(hash, image.digest.data());
  const ByteView signature = reader.next(signature_length);
  std::copy(signature.begin(), signature.end(), image.signature.begin());
  image.is_complete = signature.size() == signature_length;
  return image;
}

std::int32_t verify(Arguments arguments, const Stage2Scheme& scheme) {
  HashedImage image = hash_image(arguments[2], scheme.signature_length);
  const ByteView key = scheme.load_public_key(arguments[3]);
  const WritableBytes signature = WritableBytes(image.signature).first(scheme.signature_length);
  const bool valid = image.is_complete &&
                     verify_by_stated_counts(signature, key.data(), image.digest) == ZEB_SUCCESS;
  return print_verdict(valid, stage2_verified_line, stage2_refused_line);
}

}  // namespace

std::int32_t generate_sb20_stage2_keys(Arguments arguments) {
  return make_key_pair(generating_2048_line, sb20_Generate_KeyPair, stage2_key_mode, arguments[2]);
}

std::int32_t generate_sb10_stage2_keys(Arguments arguments) {
  return make_key_pair(generating_1024_line, sb10_Generate_KeyPair, stage2_key_mode, arguments[2]);
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
