#include "tests/inspect/reports.h"
#include "tests/support/schemes.h"

namespace {

using sealwright::FileSource;

/// A chain in memory; the bytes outlive it.
sealwright::BootChain chain_of(const Bytes& efuse, const Bytes& bl1, const Bytes* bl2 = nullptr) {
  sealwright::BootChain chain = {FileSource(efuse), FileSource(bl1)};
  if (bl2 != nullptr) chain.bl2.emplace(*bl2);
  return chain;
}

std::string boot_json(const Bytes& efuse, const Bytes& bl1) {
  sealwright::BootChain chain = chain_of(efuse, bl1);
  return to_json(describe_boot(chain));
}

TEST(FileSource, TellsWhatAFileBecameWhileItWasRead) {
  const WorkingDirectory here;
  const Bytes file = some_bytes(132000);  // its end, seen first, is in two of the blocks read
  const std::size_t end = file.size() - 2048;
  const std::pair<Bytes, const char*> later[] = {
      {damage(file, end - 1), ""},  // nobody can tell
      {damage(file, end), "Changed while it was read"},
      {damage(file, file.size() - 1), "Changed while it was read"},
      {slice(file, 0, end), "Shorter than its size says"},
      {joined(file, Bytes(1)), "Longer than its size says"}};
  for (const auto& [bytes, failure] : later) {
    write_bytes("f", file);
    write_bytes("later", bytes);
    FileSource source("f");
    std::filesystem::copy_file("later", "f", std::filesystem::copy_options::overwrite_existing);
    EXPECT_EQ(bytes_of(digest_before(scan(source), 0, {})) == sha1(bytes), *failure == '\0');
    EXPECT_EQ(source.failure(), failure);
  }
}

class Boot : public EndToEnd {};
RUN_FOR_BOTH_SCHEMES(Boot);

/// What is right of a chain of eFuse data, BL1 and BL2, and whether it boots.
std::string verdicts(const Bytes& efuse, const Bytes& bl1, const Bytes& bl2) {
  sealwright::BootChain chain = chain_of(efuse, bl1, &bl2);
  const auto check = check_boot_chain(chain);
  return std::string(check.keys ? "keys " : "") + (check.fuses ? "fuses " : "") +
         (check.bl1_signature ? "bl1 " : "") + (*check.bl2_signature ? "bl2 " : "") +
         (boots(check) ? "boots" : "");
}

TEST_P(Boot, TellsWhetherADeviceBoots) {
  Bytes bl1 = read_bytes("sealed1");
  const Bytes bl2 = read_bytes("sealed2"), efuse = read_bytes(s.efuse),
              other = device(1).at(s.efuse);
  const std::size_t context = bl1.size() - s.context_length;
  const std::size_t signature = context + s.context_signature, end = context + s.uncovered;
  const std::size_t key = context + s.root.n, root = key + s.context_info;
  const std::string all = "keys fuses bl1 bl2 boots", no_bl1 = "keys fuses bl2 ",
                    no_bl2 = "keys fuses bl1 ", no_fuses = "keys bl1 bl2 ";
  const struct {
    const char* damaged;
    std::string expected;
    std::vector<std::size_t> places;
  } parts[] = {{"code or signature",
                no_bl1,
                {0, context - 1, signature - (s.is_v11() ? 0 : 4), signature + s.length - 1}},
               {"stage-2 key", "keys fuses ", {key + 4}},
               {"root key", "keys bl2 ", {root + 4}},
               {"HMAC", no_fuses, {end - 1}},
               {"what nothing covers", all, {end, bl1.size() - 1}}};
  for (const auto& [damaged, expected, places] : parts) {
    for (const auto at : places) {
      EXPECT_EQ(verdicts(efuse, damage(bl1, at), bl2), expected) << damaged << at;
    }
  }
  Bytes both = bl1;  // also with the mark of scheme 2.1, where scheme 1.1 covers nothing
  std::ranges::copy(sb20_context_magic, &both[bl1.size() - 80]);
  EXPECT_EQ(verdicts(efuse, both, bl2), all);
  const Bytes wrong[] = {damage(bl2, 0), damage(bl2, bl2.size() - 1), slice(bl2, 0, s.length - 1),
                         device(1).at("sealed2")};
  for (const Bytes& second : wrong) EXPECT_EQ(verdicts(efuse, bl1, second), no_bl2);
  EXPECT_EQ(verdicts(other, bl1, bl2), no_fuses);
  EXPECT_EQ(verdicts(joined(efuse, Bytes(1)), bl1, bl2), no_fuses);
  EXPECT_EQ(verdicts(efuse, slice(bl1, 0, bl1.size() - 1), bl2), "");
  EXPECT_EQ(verdicts(efuse, slice(bl1, context, s.context_length), bl2), no_bl1);
  Bytes swapped = bl1;  // to a stage-2 key that the root key has not vouched for
  const Bytes foreign = slice(device(1).at("sealed1"), context, s.key_length());
  std::ranges::copy(foreign, &swapped[context]);
  EXPECT_EQ(verdicts(efuse, swapped, device(1).at("sealed2")), no_bl1);

  EXPECT_THAT(boot_json(other, bl1), HasSubstr(R"("code_sha1": null)"));
  const std::string ragged = boot_json(efuse, slice(bl1, 1, bl1.size() - 1));
  EXPECT_EQ(ragged.find("code: it is no whole number of cipher blocks") < ragged.size(),
            !s.is_v11());
}

TEST_P(Boot, ShowsTheCodeOfALongImage) {
  for (const std::size_t length : {16384U, 32768U + 16U, 300000U}) {
    write_bytes("BL1.bin", some_bytes(length));
    ASSERT_EQ(run(full_tool + " " + s.option + " " + seal1).status, 0);
    EXPECT_THAT(boot_json(read_bytes(s.efuse), read_bytes("out")),
                HasSubstr(sealwright::to_hex(sha1(some_bytes(length)))));
  }
}

/// Runs --boot on a chain in files and compares its status and what it says of one check.
void expect_boot(const Bytes& efuse, const Bytes& bl1, const Bytes& bl2, int status,
                 const std::string& check) {
  write_bytes("fuses", efuse);
  write_bytes("bl1", bl1);
  write_bytes("bl2", bl2);
  const Outcome outcome = run(inspect_tool + " --json --boot fuses bl1 bl2");
  EXPECT_EQ(outcome.status, status);
  EXPECT_THAT(outcome.output, HasSubstr(check));
}

template <typename S>
void expect_exponent_one_refused() {
  const WorkingDirectory here;
  Sealed<S> sealed;
  Key key = sealed.key;
  key[1] = 1;  // an encoding is its own signature
  ASSERT_EQ(
      S::generate(sealed.list.data(), length_of(sealed.list), public_key_of(key, S::length).data(),
                  sealed.code.data(), length_of(sealed.code), &sealed.context),
      0U);
  const Bytes body = some_bytes(100);
  expect_boot(sealed.efuse, joined(sealed.code, bytes_of(sealed.context)),
              joined(body, reversed(pss_encode(key[0], sha1(body), 20))), 1,
              R"({"what": "bl2-signature", "ok": true}, {"what": "keys", "ok": false})");
}

TEST(BootKeys, HaveAnExponentThatProtects) {
  expect_exponent_one_refused<V11>();
  expect_exponent_one_refused<V21>();
}

TEST(BootKeys, WithALongExponentGetTheDevicesVerdict) {
  // The exponent reads on over the signature of the root key. Where BL2's signature stands in its
  // place, one that nobody made fits, and the one that fits does not.
  const WorkingDirectory here;
  const Bytes body = some_bytes(100);
  Sealed<V21> sealed;
  const auto& context = sealed.context;
  Big n(0), exponent(0);
  std::size_t seed = 0;
  do {
    n = some_prime(seed++);
    const RsaPublicKey2048 key = stored_key(n.bytes(256), 32, 3, 256);
    ASSERT_EQ(V21::generate(sealed.list.data(), length_of(sealed.list), bytes_of(key).data(),
                            sealed.code.data(), length_of(sealed.code), &sealed.context),
              0U);
    exponent = slice(bytes_of(context), 264, 256);
  } while (!(gcd(exponent, n - 1) == 1));
  const Bytes unmade = fit_signature(n, sha1(body), slice(bytes_of(context), 264, 8));
  const Bytes encoded = reversed(pss_encode(n, sha1(body), 1));
  const Bytes made = power(encoded, inverse(exponent, n - 1), n).bytes(256);
  write_bytes("context.spk", bytes_of(context));
  for (const auto& [signature, good] : {std::pair{unmade, false}, {made, true}}) {
    const Bytes bl2 = joined(body, signature);
    expect_boot(sealed.efuse, joined(sealed.code, bytes_of(context)), bl2, 1,
                std::string(R"({"what": "bl2-signature", "ok": )") + (good ? "true" : "false"));
    EXPECT_EQ(run(full_tool + " -v2.1 bl2 context.spk -STAGE2_VERIFY").status, good ? 0 : 255);
  }
}

}  // namespace
