#include "artefact/public_key_import.h"

#include <algorithm>
#include <array>
#include <bit>
#include <string_view>
#include <vector>

#include "artefact/der_cursor.h"
#include "artefact/escape.h"
#include "artefact/text_encodings.h"

namespace sealwright {

namespace {

constexpr const char* private_key_refusal = "a private key: give the public one";
constexpr const char* no_key_refusal =
    R"(no RSA public key: give PEM "PUBLIC KEY" or "RSA PUBLIC KEY", or DER of either)";
constexpr const char* certificate_refusal =
    "a certificate: give the public key in it ('openssl x509 -pubkey -noout' prints it)";

/// Bytes; keys, also with a text about them, and certificates are much smaller.
constexpr std::size_t largest_file = 65536;

/// rsaEncryption (1.2.840.113549.1.1.1).
constexpr std::array<std::uint8_t, 9> rsa_encryption_identifier = {0x2A, 0x86, 0x48, 0x86, 0xF7,
                                                                   0x0D, 0x01, 0x01, 0x01};
/// id-RSASSA-PSS (1.2.840.113549.1.1.10).
constexpr std::array<std::uint8_t, 9> rsa_pss = {0x2A, 0x86, 0x48, 0x86, 0xF7,
                                                 0x0D, 0x01, 0x01, 0x0A};

/// Big-endian numbers without leading zeros, or why there are none.
struct Numbers {
  ByteView modulus;
  ByteView exponent;
  std::string refusal;
};

Numbers refuse(std::string reason) {
  return {{}, {}, std::move(reason)};
}

/// RSAPublicKey, or what looks like the private one, which starts with its version.
Numbers read_numbers(ByteView content) {
  DerCursor cursor(content);
  const auto modulus = cursor.take_number();
  const auto exponent = cursor.take_number();
  if (!modulus || !exponent) return refuse(no_key_refusal);
  if (cursor.at_end()) return {*modulus, *exponent, {}};
  return refuse(cursor.take_number() ? private_key_refusal : no_key_refusal);
}

/// What comes after the algorithm in a SubjectPublicKeyInfo, or in an encrypted private key.
Numbers read_wrapped(ByteView algorithm, DerCursor& rest) {
  if (rest.take(DerTag::octet_string)) return refuse(private_key_refusal);
  const auto bits = rest.take(DerTag::bit_string);
  DerCursor identifier(algorithm);
  const auto kind = identifier.take(DerTag::object_identifier);
  if (!bits || !rest.at_end() || !kind) return refuse(no_key_refusal);
  if (std::ranges::equal(*kind, rsa_pss)) {
    return refuse("a key for RSASSA-PSS alone: give it as a plain RSA key (rsaEncryption)");
  }
  if (!std::ranges::equal(*kind, rsa_encryption_identifier)) return refuse("not an RSA key");
  const auto parameters = identifier.take(DerTag::null);
  const bool plain = parameters && parameters->empty() && identifier.at_end();
  if (!plain || bits->empty() || bits->front() != 0) return refuse(no_key_refusal);
  DerCursor inside(bits->subspan(1));
  const auto numbers = inside.take(DerTag::sequence);
  return numbers && inside.at_end() ? read_numbers(*numbers) : refuse(no_key_refusal);
}

/// Any of the forms, told apart by their first elements.
Numbers read_der(ByteView der) {
  DerCursor file(der);
  const auto outer = file.take(DerTag::sequence);
  if (!outer || !file.at_end()) return refuse(no_key_refusal);
  DerCursor cursor(*outer);
  const auto inner = cursor.take(DerTag::sequence);
  if (inner) {
    // A certificate or a request: its body, the algorithm of its signature, the signature.
    if (cursor.take(DerTag::sequence)) return refuse(certificate_refusal);
    return read_wrapped(*inner, cursor);
  }
  DerCursor versioned(*outer);
  if (versioned.take_number() && versioned.take(DerTag::sequence)) {
    return refuse(private_key_refusal);  // PKCS #8
  }
  return read_numbers(*outer);
}

/// What stands between two marks of a text, the first of which it contains.
std::string_view between(std::string_view text, std::string_view before, std::string_view after) {
  const std::size_t start = text.find(before) + before.size();
  const std::size_t end = text.find(after, start);
  return end == std::string_view::npos ? std::string_view() : text.substr(start, end - start);
}

constexpr std::string_view pem_begin = "-----BEGIN ";
constexpr std::string_view pem_dashes = "-----";

std::string refuse_label(std::string_view label) {
  if (label.find("CERTIFICATE") != std::string_view::npos) return certificate_refusal;
  return "PEM of " + show_name(label) + R"(: give "PUBLIC KEY" or "RSA PUBLIC KEY")";
}

/// The DER in the one PEM block of a text that has a start of one.
std::string read_pem(std::vector<std::uint8_t>& der, std::string_view text) {
  if (text.find("PRIVATE KEY-----") != std::string_view::npos) return private_key_refusal;
  const std::string label(between(text, pem_begin, pem_dashes));
  if (label != "PUBLIC KEY" && label != "RSA PUBLIC KEY") return refuse_label(label);
  const std::string begin = std::string(pem_begin) + label + std::string(pem_dashes);
  const std::string end = "-----END " + label + std::string(pem_dashes);
  const auto decoded = decode_base64(between(text, begin, end));
  if (!decoded || decoded->empty()) return "damaged PEM";
  if (text.find(pem_begin, text.find(end)) != std::string_view::npos) {
    return "more than one PEM block: give the key alone";
  }
  der = *decoded;
  return {};
}

std::uint32_t bits_of(ByteView number) {
  return number.empty() ? 0
                        : 8 * (length_of(number) - 1) +
                              static_cast<std::uint32_t>(std::bit_width(number.front()));
}

std::string show_exponent(ByteView exponent) {
  if (exponent.size() > sizeof(std::uint64_t)) {
    return "of " + std::to_string(bits_of(exponent)) + " bits";
  }
  std::uint64_t value = 0;
  for (const std::uint8_t byte : exponent) value = value << 8 | byte;
  return std::to_string(value);
}

/// Why the numbers are no key of the scheme; empty when they are.
std::string find_misfit(const Numbers& numbers, const SchemeFacts& facts) {
  const std::string keys = std::string(": keys of scheme ") + facts.name + " have ";
  const std::uint32_t wanted = 8 * facts.modulus_length, bits = bits_of(numbers.modulus);
  if (bits != wanted) return std::to_string(bits) + " bits" + keys + std::to_string(wanted);
  const std::string exponent = show_exponent(numbers.exponent);
  if (exponent != std::to_string(facts.exponent)) {
    return "exponent " + exponent + keys + std::to_string(facts.exponent);
  }
  return (numbers.modulus.back() & 1) == 0 ? "an even modulus: no RSA key has one" : "";
}

/// The key as records store it: little-endian.
PublicKey store(const Numbers& numbers, Scheme scheme) {
  const std::uint32_t exponent = facts_of(scheme).exponent;
  if (scheme == Scheme::sb20) {
    RsaPublicKey2048 key = {sizeof key.n, {}, sizeof key.e, {}};
    std::ranges::reverse_copy(numbers.modulus, key.n);
    store_le32(key.e, exponent);
    return to_public_key(key);
  }
  RsaPublicKey1024 key = {};
  std::ranges::reverse_copy(numbers.modulus, key.n);
  store_le32(key.e, exponent);
  return to_public_key(key);
}

}  // namespace

ImportedKey import_public_key(ByteView file, Scheme scheme) {
  if (file.size() > largest_file) return {std::nullopt, no_key_refusal};
  const std::string_view text(reinterpret_cast<const char*>(file.data()), file.size());
  std::vector<std::uint8_t> der(file.begin(), file.end());
  if (text.find(pem_begin) != std::string_view::npos) {
    std::string refusal = read_pem(der, text);
    if (!refusal.empty()) return {std::nullopt, std::move(refusal)};
  } else if (text.starts_with("ssh-rsa ")) {
    return {std::nullopt, "an OpenSSH key: give it as PEM ('ssh-keygen -e -m PKCS8' prints it)"};
  }
  Numbers numbers = read_der(der);
  if (numbers.refusal.empty()) numbers.refusal = find_misfit(numbers, facts_of(scheme));
  if (!numbers.refusal.empty()) return {std::nullopt, std::move(numbers.refusal)};
  return {store(numbers, scheme), {}};
}

}  // namespace sealwright
