#include "seal/diagnosis.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <vector>

#include "artefact/escape.h"
#include "artefact/hex.h"
#include "artefact/text_encodings.h"
#include "crypto/pss.h"
#include "crypto/sha1.h"

namespace sealwright {

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint8_t pss_trailer = 0xBC;
/// Bytes; no usual hash is longer. A longer one is seen by chance in one number of some 30,000.
constexpr std::uint32_t longest_usual_salt = 64;
/// Bytes; a signature as text, in whatever lines, is shorter.
constexpr std::size_t longest_text = 4096;

/// The faults that are not empty, as one part of a sentence.
std::string list_faults(const std::vector<std::string>& faults) {
  std::string list;
  for (const std::string& fault : faults) {
    if (fault.empty()) continue;
    if (!list.empty()) list += "; and ";
    list += fault;
  }
  return list;
}

/// One way to take what came: the signature that it would be, little-endian.
struct Reading {
  Bytes signature;
  std::string fault;  // of who sent it like this; empty for the right way
};

/// The forms in which a signature of this length may have come.
std::vector<Reading> read_all_ways(ByteView given, std::size_t length) {
  std::vector<Reading> readings;
  if (given.size() > longest_text) return readings;
  const auto add = [&](Bytes bytes, const std::string& fault) {
    if (bytes.size() != length) return;
    std::ranges::reverse(bytes);
    readings.push_back({bytes, fault});
    std::ranges::reverse(bytes);
    readings.push_back(
        {std::move(bytes),
         list_faults(
             {fault, "its bytes are reversed (the first has to be the most significant)"})});
  };
  const std::string_view text(reinterpret_cast<const char*>(given.data()), given.size());
  add({given.begin(), given.end()}, "");
  if (auto bytes = decode_hex(text)) add(*std::move(bytes), "it is hexadecimal text, not bytes");
  if (auto bytes = decode_base64(text)) add(*std::move(bytes), "it is base64 text, not bytes");
  return readings;
}

Digest sha1_of(ByteView bytes) {
  Digest digest = {};
  sealwright::sha1(digest.data(), {bytes});
  return digest;
}

/// Bytes of salt in a block that is a PSS encoding of a digest, also where the salt is so long that
/// no device takes it; nothing for other blocks.
std::optional<std::size_t> find_salt(ByteView block, ByteView digest) {
  std::array<std::uint8_t, pss_max_block_bytes> room;
  std::ranges::copy(block, room.begin());
  const WritableBytes data = WritableBytes(room).first(block.size() - sha1_digest_length - 1);
  const ByteView h = block.subspan(data.size(), sha1_digest_length);
  zeb_PKCS1_MGF1_Sha1(data.data(), length_of(data), h.data(), length_of(h));
  data[0] &= 0x7F;
  const auto separator = std::ranges::find_if(data, [](std::uint8_t byte) { return byte != 0; });
  if (separator == data.end() || *separator != 1) return std::nullopt;
  const ByteView salt(separator + 1, data.end());
  Bytes hashed(8);
  hashed.insert(hashed.end(), digest.begin(), digest.end());
  hashed.insert(hashed.end(), salt.begin(), salt.end());
  const bool same = std::ranges::equal(sha1_of(hashed), h);
  return same ? std::optional(salt.size()) : std::nullopt;
}

/// Empty for a salt of the right length.
std::string describe_salt(std::size_t length) {
  if (length == pss_salt_length) return "";
  return "its salt has " + std::to_string(length) + " bytes instead of " +
         std::to_string(pss_salt_length);
}

/// Whether a recovered block is a number no longer than `bytes`, which are its end.
bool is_bare(ByteView block, ByteView bytes) {
  if (block.size() < bytes.size()) return false;
  const ByteView before = block.first(block.size() - bytes.size());
  return std::ranges::all_of(before, [](std::uint8_t byte) { return byte == 0; }) &&
         std::ranges::equal(block.last(bytes.size()), bytes);
}

/// What is wrong with what a key made, empty when nothing is; nothing when this key did not make
/// it.
std::optional<std::string> recognise(const WrongSignature& wrong, const PssFindings& findings) {
  const ByteView block = ByteView(findings.block).first(findings.block_length);
  if (block.empty()) return std::nullopt;
  if (findings.verdict == PssVerdict::pkcs1_v15) {
    return "its padding is that of PKCS#1 v1.5 instead of PSS";
  }
  if (is_bare(block, wrong.digest)) {
    return "it has no padding: a signer that does the bare RSA operation needs --padded";
  }
  if (const auto salt = find_salt(block, wrong.digest)) {
    return findings.verdict == PssVerdict::not_below_modulus ? "it is not below the modulus"
                                                             : describe_salt(*salt);
  }
  const bool padded = !wrong.block.empty();
  if (const auto salt = find_salt(block, sha1_of(padded ? wrong.block : wrong.digest))) {
    return list_faults({padded ? "the block was hashed and padded once more: it has to be signed "
                                 "as it is, by the bare RSA operation"
                               : "the digest was hashed once more: it has to be signed as it is",
                        describe_salt(*salt)});
  }
  const bool other = findings.verdict == PssVerdict::other_digest;
  if (other && findings.salt_length <= longest_usual_salt) {
    return "it is a signature of something else";
  }
  return std::nullopt;
}

std::string describe_length(ByteView given, std::size_t length) {
  if (given.empty()) return "it is empty";
  return "its length is " + std::to_string(given.size()) +
         ", and that of a signature by this key is " + std::to_string(length) + " bytes";
}

}  // namespace

std::string diagnose(const WrongSignature& wrong, std::span<const KeyCandidate> keys) {
  const std::size_t right_length = keys.front().key.modulus.size();
  std::string guess = describe_length(wrong.given, right_length);
  for (const KeyCandidate& candidate : keys) {
    const bool right_key = &candidate == &keys.front();
    const RsaPublicNumbers numbers = numbers_of(candidate.key);
    const std::vector<Reading> readings = read_all_ways(wrong.given, numbers.n.size());
    for (const Reading& reading : readings) {
      const PssFindings findings = check_new_signature(reading.signature, numbers, wrong.digest);
      if (const auto fault = recognise(wrong, findings)) {
        return list_faults(
            {reading.fault,
             right_key ? "" : "it was made by the key of " + show_name(candidate.name), *fault});
      }
      if (!right_key || &reading != &readings.front()) continue;
      guess = list_faults({reading.fault, "it was made by another key or of something else"});
      if (findings.block[right_length - 1] == pss_trailer) {
        guess = "it may be PSS with another hash than SHA-1, or with another mask";
      }
    }
  }
  return guess;
}

}  // namespace sealwright
