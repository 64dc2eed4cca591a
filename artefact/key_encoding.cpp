#include "artefact/key_encoding.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "artefact/hex.h"

namespace sealwright {

namespace {

using Der = std::vector<std::uint8_t>;

enum Tag : std::uint8_t { tag_integer = 0x02, tag_bit_string = 0x03, tag_sequence = 0x30 };

/// AlgorithmIdentifier: rsaEncryption (1.2.840.113549.1.1.1) with NULL parameters.
constexpr std::array<std::uint8_t, 15> rsa_encryption = {
    tag_sequence, 13, 0x06, 9, 0x2A, 0x86, 0x48, 0x86, 0xF7, 0x0D, 0x01, 0x01, 0x01, 0x05, 0x00};

Der concatenate(ByteView head, ByteView tail) {
  Der whole(head.begin(), head.end());
  whole.insert(whole.end(), tail.begin(), tail.end());
  return whole;
}

/// Tag, length and content; up to 65535 bytes of content.
Der encode_element(Tag tag, ByteView content) {
  const std::size_t length = content.size();
  const auto high = static_cast<std::uint8_t>(length >> 8);
  const auto low = static_cast<std::uint8_t>(length);
  Der element = {tag};
  if (length >= 0x100) {
    element.insert(element.end(), {0x82, high, low});
  } else if (length >= 0x80) {
    element.insert(element.end(), {0x81, low});
  } else {
    element.push_back(low);
  }
  return concatenate(element, content);
}

/// A big-endian number without its leading zeros; a zero byte keeps one with its top bit set from
/// being negative.
Der encode_integer(ByteView number) {
  const auto significant = std::ranges::find_if(number, [](auto byte) { return byte != 0; });
  Der content(significant, number.end());
  if (content.empty() || content.front() >= 0x80) content.insert(content.begin(), 0);
  return encode_element(tag_integer, content);
}

std::string encode_base64(ByteView bytes) {
  constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (; !bytes.empty(); bytes = bytes.subspan(std::min<std::size_t>(3, bytes.size()))) {
    std::uint32_t group = 0;
    for (std::size_t i = 0; i < 3; ++i) group = group << 8 | (i < bytes.size() ? bytes[i] : 0U);
    for (std::size_t i = 0; i < 4; ++i) {
      text += i <= bytes.size() ? alphabet[group >> (18 - 6 * i) & 0x3F] : '=';
    }
  }
  return text;
}

}  // namespace

std::vector<std::uint8_t> encode_der(const PublicKey& key) {
  std::array<std::uint8_t, 4> exponent;
  store_be32(exponent.data(), key.exponent);
  const Der numbers = encode_element(
      tag_sequence, concatenate(encode_integer(key.modulus), encode_integer(exponent)));
  const Der no_unused_bits = {0};
  const Der wrapped = encode_element(tag_bit_string, concatenate(no_unused_bits, numbers));
  return encode_element(tag_sequence, concatenate(rsa_encryption, wrapped));
}

std::string encode_pem(const PublicKey& key) {
  constexpr std::size_t line_length = 64;
  const std::string text = encode_base64(encode_der(key));
  std::string pem = "-----BEGIN PUBLIC KEY-----\n";
  for (std::size_t i = 0; i < text.size(); i += line_length) {
    pem += text.substr(i, line_length) + '\n';
  }
  return pem + "-----END PUBLIC KEY-----\n";
}

std::string key_sha1(const PublicKey& key) {
  return sha1_hex(encode_der(key));
}

}  // namespace sealwright
