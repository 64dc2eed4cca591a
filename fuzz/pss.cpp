// The signature wrappers with hostile keys, key lists, lengths and signatures.

#include "crypto/rsa.h"
#include "fuzz/judge.h"

namespace {

std::uint8_t* data_or_null(Bytes& bytes) {
  return bytes.empty() ? nullptr : bytes.data();
}

Status verify_digest(const Bytes& key, Bytes& digest, Bytes& signature, std::uint32_t length) {
  return Verify_PSS_RSASignature(key.data(), 0, data_or_null(digest), length_of(digest),
                                 signature.data(), length);
}

Status verify_message(const Bytes& key, Bytes& message, Bytes& signature, std::uint32_t length) {
  return Verify_PSS_RSASignature2(key.data(), 0, data_or_null(message), length_of(message),
                                  signature.data(), length);
}

std::uint32_t take_signature_length(FuzzInput& input, std::uint8_t form) {
  if ((form & 2) != 0) return input.word();
  return (form & 1) != 0 ? 256 : 128;
}

/// Digit counts of n and e; 0 and 0 for those that no key has.
using Widths = std::pair<std::size_t, std::size_t>;
Widths stated_widths(const Bytes& key) {
  const std::int32_t n_digits = static_cast<std::int32_t>(load_le32(key.data())) / 4;
  const std::int32_t e_digits = static_cast<std::int32_t>(load_le32(&key[260])) / 4;
  if (n_digits < 1 || n_digits > 64 || e_digits < 1 || e_digits > 64) return {0, 0};
  return {n_digits, e_digits};
}

/// Makes a signature under e = 1, whose data block is what `signature` starts with.
void seal(Bytes& signature, std::size_t n_width, const Bytes& digest) {
  const std::size_t room = signature.size();
  signature.resize(4 * n_width);
  signature = bytes_of(pss_seal(signature, digest), signature.size());
  signature.resize(room);
}

void verify(FuzzInput& input, bool over_message) {
  const std::uint8_t form = input.byte();
  const std::uint32_t length = take_signature_length(input, form);
  Bytes covered = input.bytes(input.byte());
  Bytes key = input.bytes(std::size_t{4} * input.byte());
  key.resize(1024);  // as the tool has it
  const bool wide = length == 256;
  const bool known_length = wide || length == 128;
  Bytes signature = known_length ? input.bytes(length) : input.rest(256);
  const Bytes digest = over_message ? sha1(covered) : covered;

  const std::size_t e_at = wide ? 264 : 128;
  const bool stated = wide && over_message;
  const auto [n_width, e_width] = stated ? stated_widths(key) : Widths{wide ? 64 : 32, 1};
  const bool sealed = (form & 4) != 0 && known_length && n_width >= 6;
  // Wide exponents only under small moduli, for speed.
  if (sealed || n_width > 12) std::fill(&key[e_at + 4], &key.back(), std::uint8_t{0});
  if (sealed) {
    store_le32(&key[e_at], 1);
    seal(signature, n_width, digest);
  }

  const bool valid = known_length && judge_verify(number_at(key, wide ? 4 : 0, n_width),
                                                  number_at(key, e_at, e_width), signature, digest);
  Status expected = valid ? ZEB_SUCCESS : VERIFY_ERR_RSA;
  if (!known_length) expected = VERIFY_ERR_SIGNATURE_LENGTH;
  if (over_message && covered.empty()) expected = VERIFY_ERR_SHA1_UPDATE;  // a null pointer
  const bool wiped = expected == VERIFY_ERR_RSA;
  const Bytes signature_after = wiped ? Bytes(signature.size()) : signature;
  const Bytes covered_after = wiped && !over_message ? Bytes(covered.size()) : covered;
  const auto wrapper = over_message ? verify_message : verify_digest;
  const Status status = wrapper(key, covered, signature, length);
  require(status == expected, "status of a verification");
  require(signature == signature_after && covered == covered_after, "wiping");
}

void generate(FuzzInput& input, bool over_message) {
  const std::int32_t mode = input.byte();
  Bytes covered = input.bytes(input.byte());
  const Bytes list = input.key_list();
  const Bytes made = judge_sign(list, mode == rsa_mode_crt, over_message ? sha1(covered) : covered);
  Status expected = made.empty() ? SIGN_ERR_RSA : ZEB_SUCCESS;
  if (over_message && covered.empty()) expected = SIGN_ERR_SHA1_UPDATE;
  constexpr std::uint32_t untouched = 0xA5A5A5A5;
  Bytes signature(256, 0xA5);
  Bytes signature_after = signature;
  if (expected == ZEB_SUCCESS) std::ranges::copy(made, signature_after.begin());
  std::uint32_t length = untouched;
  const auto sign = over_message ? Generate_PSS_RSASignature2 : Generate_PSS_RSASignature;
  const Status status = sign(mode, list.data(), length_of(list), data_or_null(covered),
                             length_of(covered), signature.data(), &length);
  require(status == expected, "status of signing");
  require(signature == signature_after, "signature");
  require(length == (expected == ZEB_SUCCESS ? length_of(made) : untouched), "signature length");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzInput input(data, size);
  const std::uint8_t wrapper = input.byte();
  const bool over_message = (wrapper & 1) != 0;
  (wrapper & 2) == 0 ? verify(input, over_message) : generate(input, over_message);
  return 0;
}
