#include <ctime>

#include "crypto/bytes.h"
#include "tests/e2e/bench.h"

namespace {

class Road : public Bench {
 protected:
  Big number(const Bytes& bytes, std::size_t at, std::size_t length) const {
    return little_endian(slice(bytes, at, length));
  }
  Big modulus(const Bytes& bytes, std::size_t at) const {
    return number(bytes, at, scheme.signature_length);
  }
  bool accepts(const Bytes& key, std::size_t n, std::size_t e, const Bytes& message,
               const Bytes& signature) const {
    return openssl_accepts(modulus(key, n), number(key, e, 4), message, signature);
  }
  /// Checks a key record, items in the order n, [e], d, p, q, dP, dQ, qInv, each behind its length.
  void expect_key(const Bytes& record, std::size_t at, const Big& n, const Big& e) const {
    const std::size_t full = scheme.signature_length, half = full / 2;
    std::vector<Big> items;
    for (const std::size_t length : {full, std::size_t{4}, full, half, half, half, half, half}) {
      if (length == 4 && scheme.is_v11()) {
        items.push_back(e);
        continue;
      }
      EXPECT_EQ(number(record, at, 4), Big(length));
      items.push_back(number(record, at + 4, length));
      at += 4 + length;
    }
    const Big &d = items[2], &p = items[3], &q = items[4];
    EXPECT_EQ(items[0], n);
    EXPECT_EQ(items[1], e);
    EXPECT_TRUE(p.is_prime() && q.is_prime() && q < p);
    EXPECT_EQ(p * q, n);
    EXPECT_EQ(e * d % ((p - 1) * (q - 1)), Big(1));
    EXPECT_EQ(items[5], d % (p - 1));
    EXPECT_EQ(items[6], d % (q - 1));
    EXPECT_EQ(items[7] * q % p, Big(1));
  }
};
class BuildInformation : public Bench {};
RUN_FOR_SCHEMES(Road, v11, v21);
RUN_FOR_SCHEMES(BuildInformation, v21);

TEST_P(Road, KeyGenerationWritesItsFilesAndNoOther) {
  const std::string longest(127 - scheme.public_suffix.size(), 'k');
  const Snapshot before = read_directory(here.path());
  expect_run({longest, "-STAGE2_KEYGEN"}, 0, scheme.making_line());
  Snapshot after = read_directory(here.path());
  EXPECT_EQ(after.erase(longest + scheme.public_suffix), 1U);
  EXPECT_EQ(after.erase(longest + scheme.private_suffix), 1U);
  EXPECT_TRUE(after == before);
  expect_run({"-KEYGEN"}, 0, scheme.making_line());
  after = read_directory(here.path());
  EXPECT_EQ(after.size(), before.size() + 2);
  for (const std::string& name : {scheme.root_info, scheme.root_private, scheme.efuse}) {
    EXPECT_NE(after[name], before.at(name)) << name;
  }
  for (const std::string& name : {longest + scheme.private_suffix, scheme.root_private}) {
    EXPECT_EQ(std::filesystem::status(here / name).permissions(), std::filesystem::perms(0600));
  }
}

TEST_P(Road, RootFilesHoldABoundKey) {
  const Bytes info = read(scheme.root_info);
  const std::size_t length = scheme.root_proven_length, key_length = length - 20;
  const std::size_t e_at = key_length - 4;
  const Big e = scheme.is_v11() ? 65537 : 3;
  EXPECT_EQ(number(info, e_at, 4), e);
  EXPECT_EQ(info.size(), scheme.root_proof + scheme.signature_length);
  EXPECT_TRUE(accepts(info, scheme.root_n, e_at, slice(info, 0, length),
                      slice(info, scheme.root_proof, scheme.signature_length)));
  Bytes hmac_key = read(scheme.efuse);
  EXPECT_EQ(hmac_key.size(), scheme.efuse_length);
  for (std::size_t i = 0; i < hmac_key.size(); ++i) hmac_key[i] ^= info[key_length + i];
  EXPECT_EQ(hmac_sha1(hmac_key, slice(info, 0, key_length)), slice(info, key_length, 20));
  const Bytes record = open_key(scheme.root_private);
  EXPECT_EQ(record.size(), scheme.is_v11() ? 608U : 1200U);
  const std::size_t items = scheme.is_v11() ? 604 : 1188;
  EXPECT_EQ(slice(record, items, record.size() - items), Bytes(record.size() - items));
  expect_key(record, 0, modulus(info, scheme.root_n), e);
  if (scheme.is_v11()) return;
  EXPECT_EQ(number(info, 0, 4), Big(256));
  EXPECT_EQ(number(info, 260, 4), Big(4));
  EXPECT_EQ(number(info, 288, 4), Big(256));
}

TEST_P(Road, Stage2FilesHoldAProvenKey) {
  const Bytes file = read(public_key);
  const std::size_t at = scheme.is_v11() ? 36 : 0;
  EXPECT_EQ(number(file, scheme.n - 4, 4), Big(scheme.signature_length));
  EXPECT_EQ(number(file, scheme.e - 4, 4), Big(4));
  EXPECT_EQ(number(file, scheme.proof - 4, 4), Big(scheme.signature_length));
  EXPECT_EQ(file.size(), scheme.proof + scheme.signature_length);
  EXPECT_TRUE(accepts(file, scheme.n, scheme.e, slice(file, scheme.proven, scheme.proven_length),
                      slice(file, scheme.proof, scheme.signature_length)));
  const Bytes record = open_key(private_key);
  EXPECT_EQ(record.size(), scheme.is_v11() ? 640U : 1200U);
  expect_key(record, at, modulus(file, scheme.n), number(file, scheme.e, 4));
  if (!scheme.is_v11()) return;
  const auto header = [](const std::string& text, std::uint8_t low, std::uint8_t high) {
    Bytes bytes = joined({28, 0, 0, 0}, Bytes(text.begin(), text.end()));
    bytes.resize(32);
    return joined(bytes, {low, high, 0, 0});
  };
  EXPECT_EQ(slice(file, 0, 36), header("1.0, Pub, RSA-1024", 140, 0));
  EXPECT_EQ(slice(record, 0, 36), header("1.0, Priv, RSA-1024, CRT", 604 % 256, 604 / 256));
}

TEST_P(Road, OpensslAcceptsWhatIsSealed) {
  const Bytes sealed1 = read("sealed1"), root = read(scheme.root_info), file = read(public_key);
  const std::size_t code = sealed1.size() - scheme.context_length;
  const Bytes context = slice(sealed1, code, scheme.context_length);
  const std::size_t e = scheme.context_key_length - 4;
  EXPECT_EQ(scheme.is_v11() ? slice(sealed1, 0, code)
                            : open_code(root, read(scheme.efuse), slice(sealed1, 0, code)),
            counted_bytes(1024));
  EXPECT_TRUE(accepts(root, scheme.root_n, e, slice(sealed1, 0, code + scheme.context_key_length),
                      slice(context, scheme.context_signature, scheme.signature_length)));
  EXPECT_EQ(modulus(context, scheme.root_n), modulus(file, scheme.n));
  EXPECT_EQ(number(context, e, 4), number(file, scheme.e, 4));
  EXPECT_EQ(slice(context, scheme.context_info, scheme.root_proven_length),
            slice(root, 0, scheme.root_proven_length));

  const Bytes sealed2 = read("sealed2"), image = read("BL2.bin");
  EXPECT_TRUE(accepts(file, scheme.n, scheme.e, image,
                      slice(sealed2, image.size(), scheme.signature_length)));
}

TEST_P(Road, OpensslSignaturesAreTaken) {
  const Bytes file = read(public_key), image = counted_bytes(777);
  const Big d = modulus(open_key(private_key), scheme.is_v11() ? 172 : 272);
  const EvpKey key = make_evp_key(modulus(file, scheme.n), number(file, scheme.e, 4), d);
  for (const int salt_length : {20, 0, 32}) {  // any salt, on purpose
    const Bytes signature = openssl_pss_sign(key.get(), sha1(image), salt_length);
    write("sealed2", joined(image, Bytes(signature.rbegin(), signature.rend())));
    expect_run(check2, 0, verified_line[2]);
    flip("sealed2", 776);
    expect_failure(check2, 255, refused_line[2]);
  }
}

TEST_P(Road, ImagesOfAnyLength) {
  for (const std::size_t length : {0, 1, 255, 1001, 5000}) {
    write("BL2.bin", counted_bytes(length));
    for (const std::string& signer : {full_tool, client_tool}) {
      expect_outcome(run_tool(signer, scheme, seal2, here.path()), 0,
                     banner_of(scheme) + signed_line[2]);
      EXPECT_EQ(slice(read("out"), 0, length), counted_bytes(length));
      EXPECT_EQ(read("out").size(), length + scheme.signature_length);
      expect_run({"out", public_key, "-STAGE2_VERIFY"}, 0, verified_line[2]);  // by both tools
    }
  }
  for (const std::size_t length : {0, 1, 16, 100, 1008, 1001}) {
    write("BL1.bin", counted_bytes(length));
    std::filesystem::remove(here / "out");
    if (length % scheme.block != 0) {  // refused in silence
      expect_failure(seal1, 0, "");
      expect_failure({"BL1.bin", "out", "x", "-P"}, 0, "");
      continue;
    }
    expect_run(seal1, 0, signed_line[1]);
    EXPECT_EQ(read("out").size(), length + scheme.context_length);
    expect_run({"out", scheme.efuse, "-VERIFY"}, 0, verified_line[1]);
  }
}

TEST_P(Road, ChangedImagesAreRefused) {
  const std::size_t code = read("sealed1").size() - scheme.context_length;
  const std::size_t signature2 = read("sealed2").size() - scheme.signature_length;
  const struct {
    std::string file;
    std::size_t begin, end;
    int stage;
    bool covered;
  } areas[] = {
      {"sealed1", 0, code, 1, true},
      {"sealed1", code, code + scheme.context_key_length, 1, true},
      {"sealed1", code + scheme.context_signature, code + scheme.context_info, 1, true},
      {"sealed1", code + scheme.context_info, code + scheme.uncovered, 1, true},
      {"sealed1", code + scheme.uncovered, code + scheme.context_length, 1, false},
      {scheme.efuse, 0, scheme.efuse_length, 1, true},
      {"sealed2", 0, signature2, 2, true},
      {"sealed2", signature2, signature2 + scheme.signature_length, 2, true},
      {public_key, scheme.n, scheme.n + scheme.signature_length, 2, true},
      {public_key, scheme.e, scheme.e + 4, 2, true},
      {public_key, scheme.e + 4, scheme.proof + scheme.signature_length, 2, false},
  };
  for (const auto& area : areas) {
    for (const std::size_t at : {area.begin, (area.begin + area.end) / 2, area.end - 1}) {
      SCOPED_TRACE(area.file + " at " + std::to_string(at));
      flip(area.file, at);
      const Args& check = area.stage == 1 ? check1 : check2;
      area.covered ? expect_failure(check, 255, refused_line[area.stage])
                   : expect_run(check, 0, verified_line[area.stage]);
      restore();
    }
  }
  write(scheme.efuse, device(1).at(scheme.efuse));  // another device
  expect_failure(check1, 255, refused_line[1]);
  write(public_key, device(1).at(public_key));
  expect_failure(check2, 255, refused_line[2]);
}

TEST_P(Road, ProofOfPossessionIsCheckedBeforeAnythingElse) {
  std::filesystem::remove(here / scheme.root_private);  // is never missed
  const Bytes foreign = device(1).at(public_key), own = read(public_key);
  write(scheme.stage2_public,
        joined(slice(own, 0, scheme.proof), slice(foreign, scheme.proof, scheme.signature_length)));
  expect_failure(seal1, 144, popp_line);
  write(scheme.stage2_public, own);
  flip(scheme.stage2_public, scheme.n);
  expect_failure(seal1, 144, popp_line);
}

TEST_P(BuildInformation, StandsInTheClearAndIsCovered) {
  for (const char* word : {"-STAGE1", "anything", ""}) {
    const auto before = static_cast<std::uint32_t>(std::time(nullptr));
    expect_run({"BL1.bin", "out", word, "-P"}, 0, signed_line[1]);
    ASSERT_EQ(read("out").size(), 1024U + 48 + 1024);
    const Bytes info = slice(read("out"), 1024, 48);
    const std::uint32_t made = load_le32(&info[4]);
    EXPECT_TRUE(made >= before && made <= static_cast<std::uint32_t>(std::time(nullptr)));
    const std::string tag = "Vextral T.QRV Stage2Key";
    EXPECT_EQ(slice(info, 12, 23), Bytes(tag.begin(), tag.end()));
  }
  expect_run({"out", scheme.efuse, "-VERIFY"}, 0, verified_line[1]);
  for (std::size_t i = 1024; i < 1024 + 48; ++i) {
    flip("out", i);
    expect_failure({"out", scheme.efuse, "-VERIFY"}, 255, refused_line[1]);
    flip("out", i);
  }
}

}  // namespace
