#include <ctime>

#include "tests/e2e/end_to_end.h"

namespace {

class Road : public EndToEnd {
 protected:
  Big modulus(const Bytes& bytes, std::size_t at) const { return slice(bytes, at, s.length); }
  /// Whether OpenSSL takes a signature under the key at this place.
  bool accepts(const Bytes& file, const PublicFile& place, const Bytes& covered,
               const Bytes& signature) const {
    return pss_verify(modulus(file, place.n), slice(file, place.e, 4), sha1(covered), signature,
                      20);
  }
  /// The code of a sealed stage-1 image as the device runs it.
  Bytes opened(const Bytes& code) const {
    if (s.is_v11()) return code;
    const Bytes info = read_bytes(s.root_info);
    const Bytes key = slice(hmac_key(read_bytes(s.efuse), info), 0, 16);
    return aes_cbc(false, key, slice(sha1(slice(info, 0, 268)), 0, 16), code);
  }
};
RUN_FOR_BOTH_SCHEMES(Road);

TEST_P(Road, KeyGenerationWritesItsFilesAndNoOther) {
  const std::string longest(127 - s.public_suffix.size(), 'k');
  std::filesystem::permissions(s.root_private, std::filesystem::perms{0644});
  Files before = read_all_files();
  expect_run(longest + " -STAGE2_KEYGEN", 0, line("making_" + s.name));
  expect_run("-KEYGEN", 0, line("making_" + s.name));
  Files after = read_all_files();
  EXPECT_EQ(after.erase(longest + s.public_suffix), 1U);
  EXPECT_EQ(after.erase(longest + s.private_suffix), 1U);
  // eFuse data binds the root key by an HMAC key of its own.
  const Bytes info = after[s.root_info], hmac = slice(info, s.key_length(), 20);
  const Bytes key = hmac_key(after[s.efuse], info);
  EXPECT_EQ(key.size(), s.efuse_length);
  EXPECT_EQ(hmac_sha1(key, slice(info, 0, s.key_length())), hmac);
  EXPECT_NE(key, hmac_key(before[s.efuse], before[s.root_info]));
  for (const std::string& name : {s.root_info, s.root_private, s.efuse}) {
    EXPECT_NE(after[name], before[name]) << name;
    before[name] = after[name];
  }
  EXPECT_TRUE(after == before);
  // The owner's alone are new files and those that replace one which was not.
  const auto mode = [](const std::string& name) {
    return std::filesystem::status(name).permissions();
  };
  for (const std::string& name : {longest + s.private_suffix, s.root_private}) {
    EXPECT_EQ(mode(name), std::filesystem::perms{0600}) << name;
  }
  EXPECT_EQ(mode(longest + s.public_suffix), mode("BL1.bin"));
  EXPECT_EQ(mode(s.efuse), mode(s.is_v11() ? "BL1.bin" : s.root_private));  // no secret in V11
}

TEST_P(Road, KeyFilesHoldAProvenKey) {
  for (const bool is_root : {true, false}) {
    SCOPED_TRACE(is_root ? "root key" : "stage-2 key");
    const PublicFile& place = is_root ? s.root : s.stage2;
    const Bytes file = read_bytes(is_root ? s.root_info : public_key);
    EXPECT_EQ(file.size(), place.proof + s.length);
    EXPECT_TRUE(accepts(file, place, slice(file, place.proven, place.proven_end - place.proven),
                        slice(file, place.proof, s.length)));
    const bool has_header = s.is_v11() && !is_root;
    const Bytes record = open_key(is_root ? s.root_private : private_key);
    const std::size_t items = has_header ? 36 : 0, p = items + (s.is_v11() ? 268 : 532);
    const Key key =
        make_key(slice(record, p, s.length / 2), slice(record, p + s.length / 2 + 4, s.length / 2),
                 slice(file, place.e, 4));
    EXPECT_TRUE(is_sound(key));
    EXPECT_EQ(key[0], modulus(file, place.n));
    EXPECT_EQ(key[1], Big(s.is_v11() ? 65537 : 3));
    const Bytes list = key_list(key, full_widths(s.length), !s.is_v11());
    if (has_header) {
      EXPECT_EQ(record, joined(header_of("1.0, Priv, RSA-1024, CRT", 604), list));
      EXPECT_EQ(slice(file, 0, 36), header_of("1.0, Pub, RSA-1024", 140));
    } else {
      EXPECT_EQ(record, padded(list, s.is_v11() ? 608 : 1200));
    }
    // Length fields stand before each number of the file where it has any.
    if (has_header || !s.is_v11()) {
      EXPECT_EQ(load_le32(&file[place.n - 4]), s.length);
      EXPECT_EQ(load_le32(&file[place.e - 4]), 4U);
      EXPECT_EQ(load_le32(&file[place.proof - 4]), s.length);
    }
  }
}

TEST_P(Road, Stage1ImagesOfAnyLength) {
  const Bytes root = read_bytes(s.root_info), file = read_bytes(public_key);
  const auto expect_sealed = [&](const std::string& command, std::size_t length, std::size_t more) {
    const auto before = static_cast<std::uint32_t>(std::time(nullptr));
    expect_run(command, 0, line("signed", 1));
    const Bytes out = read_bytes("out");
    ASSERT_EQ(out.size(), length + more + s.context_length);
    EXPECT_EQ(opened(slice(out, 0, length)), some_bytes(length));
    if (more != 0) {  // in the clear
      const std::uint32_t made = load_le32(&out[length + 4]);
      EXPECT_TRUE(made >= before && made <= static_cast<std::uint32_t>(std::time(nullptr)));
      const std::string tag = "Vextral T.QRV Stage2Key";
      EXPECT_EQ(slice(out, length, 48),
                padded(joined(bytes_of(0U), bytes_of(made), bytes_of(0U), tag), 48));
    }
    const Bytes context = slice(out, length + more, s.context_length);
    EXPECT_TRUE(accepts(root, s.root, slice(out, 0, length + more + s.key_length()),
                        slice(context, s.context_signature, s.length)));
    const Bytes key =
        s.is_v11() ? joined(slice(file, 40, 128), slice(file, 172, 4)) : slice(file, 0, 268);
    EXPECT_EQ(slice(context, 0, s.key_length()), key);
    EXPECT_EQ(slice(context, s.context_info, s.root.proven_end), slice(root, 0, s.root.proven_end));
    expect_run("out" + verify1, 0, line("verified", 1));
  };
  // The longest lies in large pages.
  for (const std::size_t length : {0U, 1U, 16U, 100U, 1008U, 1001U, 3000000U}) {
    write_bytes("BL1.bin", some_bytes(length));
    std::filesystem::remove("out");
    if (length % s.block != 0) {  // refused in silence
      expect_failure(seal1, 0, "");
      expect_failure("BL1.bin out x -P", 0, "");
      continue;
    }
    expect_sealed(seal1, length, 0);
    // The word before -P is not looked at.
    for (const char* word : {"-STAGE1", "anything", "''"}) {
      if (!s.is_v11()) expect_sealed(std::string("BL1.bin out ") + word + " -P", length, 48);
    }
  }
}

TEST_P(Road, Stage2ImagesOfAnyLength) {
  const Bytes file = read_bytes(public_key);
  // Files are read in blocks of 128 KiB; the longest lies in large pages.
  for (const std::size_t length :
       {0U, 1U, 255U, 1001U, 5000U, 130815U, 131072U, 131073U, 3000001U}) {
    const Bytes image = some_bytes(length);
    write_bytes("BL2.bin", image);
    expect_run(seal2, 0, line("signed", 2));
    const Bytes out = read_bytes("out");
    EXPECT_EQ(out.size(), length + s.length);
    EXPECT_EQ(slice(out, 0, length), image);
    EXPECT_TRUE(accepts(file, s.stage2, image, slice(out, length, s.length)));
    expect_run("out" + verify2, 0, line("verified", 2));
  }
}

}  // namespace
