#include <sys/stat.h>

#include "crypto/bytes.h"
#include "tests/e2e/bench.h"

namespace {

using Change = std::function<void(Bytes&)>;

Change resize(std::size_t size) {
  return [size](Bytes& bytes) { bytes.resize(size); };
}
Change word(std::size_t at, std::uint32_t value) {
  return [at, value](Bytes& bytes) { store_le32(&bytes.at(at + 3) - 3, value); };
}
Change bit(std::size_t at) {
  return [at](Bytes& bytes) { bytes.at(at) ^= 0x80; };
}
void noise(Bytes& bytes) {
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<std::uint8_t>(i * i >> 3);
}

class BadInput : public Bench {
 protected:
  struct Row {
    std::string file;
    Change change;
    Args args;
    int status;
    std::string text;
    int signal = 0;
  };
  enum class Stored { plain, encrypted };

  void expect_rows(const std::vector<Row>& rows, Stored stored = Stored::plain) const {
    for (const Row& row : rows) {
      SCOPED_TRACE("row " + std::to_string(&row - rows.data()) + " on " + row.file);
      Bytes bytes = stored == Stored::plain ? read(row.file) : open_key(row.file);
      row.change(bytes);
      stored == Stored::plain ? write(row.file, bytes) : write_key(row.file, bytes);
      const bool good = row.text.ends_with("successful.\n");
      good ? expect_run(row.args, row.status, row.text)
           : expect_failure(row.args, row.status, row.text, row.signal);
      std::filesystem::remove(here / "out");
      restore();
    }
  }
};
class BadInput11 : public BadInput {};
class BadInput21 : public BadInput {};
RUN_FOR_SCHEMES(BadInput, v11, v21);
RUN_FOR_SCHEMES(BadInput11, v11);
RUN_FOR_SCHEMES(BadInput21, v21);

TEST_P(BadInput, ShortAndNoisyFiles) {
  expect_rows({
      {scheme.efuse, resize(10), check1, 255, refused_line[1]},
      {scheme.efuse, resize(24), check1, 0, verified_line[1]},  // takes the record's size
      {"sealed1", resize(0), check1, 255, refused_line[1]},
      {"sealed1", resize(scheme.context_length - 1), check1, 255, refused_line[1]},
      {"sealed2", resize(0), check2, 255, refused_line[2]},
      {"sealed2", resize(scheme.signature_length - 1), check2, 255, refused_line[2]},
      {scheme.root_info, resize(100), seal1, 0x50, not_signed_line[1]},
      {scheme.root_info, resize(0), seal1, 0x50, not_signed_line[1]},
      {scheme.stage2_public, resize(100), seal1, 0, popp_line},
      {scheme.stage2_public, resize(scheme.proof + 20), seal1, 144, popp_line},
      {public_key, resize(0), check2, 255, refused_line[2]},
      {public_key, resize(100), check2, 255, refused_line[2]},
      {private_key, noise, seal2, 144, not_signed_line[2]},
      {private_key, resize(208), seal2, 144, not_signed_line[2]},
      {private_key, resize(0), seal2, 144, not_signed_line[2]},
      {scheme.root_private, noise, seal1, 0, not_signed_line[1]},  // 0xFFF40000
      {scheme.root_private, resize(208), seal1, 0, not_signed_line[1]},
      {scheme.root_private, resize(2049), seal1, 0, "", SIGABRT},
      {private_key, resize(2049), seal2, 0, "", SIGABRT},
  });
}

TEST_P(BadInput21, LengthsAndFields) {
  const std::uint32_t hostile[] = {0, 3, 128, 255, 260, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFC};
  std::vector<Row> rows = {
      {scheme.efuse, resize(10), seal1, 0, ""},  // 0xFFF7A000
      {scheme.efuse, resize(24), seal1, 0, ""},
      {scheme.root_private, resize(1190), seal1, 0, ""},  // 0xFFF7C000
      {private_key, resize(1190), seal2, 0, ""},
      {private_key, resize(1184), seal2, 144, not_signed_line[2]},
      {public_key, resize(1024), check2, 0, verified_line[2]},
      {public_key, resize(1025), check2, 0, "", SIGABRT},
      {scheme.stage2_public, resize(1025), seal1, 0, "", SIGABRT},
      {scheme.stage2_public, word(288, 128), seal1, 144, popp_line},
      {scheme.stage2_public, word(288, 0xFFFFFFFF), seal1, 0, popp_line},
      {public_key, word(0, 259), check2, 0, verified_line[2]},  // counted in whole digits
      {public_key, word(260, 7), check2, 0, verified_line[2]},
      {public_key, bit(259), check2, 255, refused_line[2]},  // top bit of n
  };
  for (const std::uint32_t value : hostile) {
    rows.push_back({public_key, word(0, value), check2, 255, refused_line[2]});
    if (value != 3) rows.push_back({public_key, word(260, value), check2, 255, refused_line[2]});
    rows.push_back({scheme.stage2_public, word(0, value), seal1, 144, popp_line});
  }
  expect_rows(rows);
}

TEST_P(BadInput11, LengthsAndFields) {
  expect_rows({
      {scheme.efuse, resize(10), seal1, 0, not_signed_line[1]},  // 0xFFF30000
      {scheme.efuse, resize(24), seal1, 0, not_signed_line[1]},
      {scheme.root_private, resize(600), seal1, 0, signed_line[1]},  // n and d are whole
      {private_key, resize(2048), seal2, 0, signed_line[2]},         // takes the record's size
      {public_key, resize(4000), check2, 0, verified_line[2]},
      {public_key, word(36, 1024), check2, 255, refused_line[2]},
      {public_key, word(36, 1025), check2, 0, "", SIGABRT},
      {public_key, word(36, 0xFFFFFFFF), check2, 0, "", SIGABRT},
      {public_key, word(36, 0), check2, 255, refused_line[2]},
      {public_key, word(168, 0), check2, 255, refused_line[2]},
      {public_key, word(168, 1000), check2, 255, refused_line[2]},
      {public_key, word(168, 0xFFFFFFFF), check2, 255, refused_line[2]},
      {scheme.stage2_public, word(36, 1024), seal1, 144, popp_line},
      {scheme.stage2_public, word(36, 1025), seal1, 0, "", SIGABRT},
      {scheme.stage2_public, word(168, 0xFFFFFFFF), seal1, 144, popp_line},
      {scheme.stage2_public, word(32, 0), seal1, 144, popp_line},
      {scheme.stage2_public, word(32, 273), seal1, 144, popp_line},
      {scheme.stage2_public, word(32, 0xFFFFFFFF), seal1, 144, popp_line},
      {scheme.stage2_public, word(176, 256), seal1, 144, popp_line},
      {scheme.stage2_public, word(176, 200), seal1, 0, popp_line},
  });
}

TEST_P(BadInput21, DamagedPrivateKeyNeverSigns) {
  // Offsets within n, e, p, q, dP, dQ and qInv, then every length.
  std::vector<Row> rows;
  for (const std::size_t at : {4, 259, 264, 532, 664, 796, 923, 928, 1060, 1187}) {
    rows.push_back({private_key, bit(at), seal2, 144, not_signed_line[2]});
    // The exponent of the root key comes from its public-key info.
    if (at != 264 && at != 4 && at != 259) {
      rows.push_back({scheme.root_private, bit(at), seal1, 144, not_signed_line[1]});
    }
  }
  for (const std::size_t at : {0, 260, 268, 528, 660, 792, 924, 1056}) {
    for (const std::uint32_t length : {0U, 60U, 280U, 0x7FFFFFFCU, 0xFFFFFFFFU}) {
      rows.push_back({private_key, word(at, length), seal2, 144, not_signed_line[2]});
    }
  }
  expect_rows(rows, Stored::encrypted);
}

TEST_P(BadInput11, DamagedPrivateKeyNeverSigns) {
  std::vector<Row> rows = {{scheme.root_private, bit(136), seal1, 144, not_signed_line[1]}};
  for (const std::size_t at : {40, 100, 172, 299}) {
    rows.push_back({private_key, bit(at), seal2, 144, not_signed_line[2]});
  }
  for (const std::size_t at : {36, 168}) {
    for (const std::uint32_t length : {0U, 60U, 280U, 700U, 0x7FFFFFFCU, 0xFFFFFFFFU}) {
      rows.push_back({private_key, word(at, length), seal2, 144, not_signed_line[2]});
    }
  }
  expect_rows(rows, Stored::encrypted);
}

TEST_P(BadInput, InputsThatCannotBeRead) {
  std::vector<std::pair<Args, std::vector<std::string>>> commands = {
      {seal1,
       {"BL1.bin", scheme.stage2_public, scheme.root_private, scheme.root_info, scheme.efuse}},
      {check1, {"sealed1", scheme.efuse}},
      {seal2, {"BL2.bin", private_key}},
      {check2, {"sealed2", public_key}}};
  if (!scheme.is_v11()) {
    commands.push_back({{"BL1.bin", "out", "x", "-P"}, commands[0].second});
  }
  for (const auto& [args, inputs] : commands) {
    for (const std::string& input : inputs) {
      SCOPED_TRACE(input);
      const Path path = here / input;
      std::filesystem::remove(path);
      expect_failure(args, 255, open_error);
      std::filesystem::create_directory(path);
      expect_failure(args, 255, open_error);
      std::filesystem::remove(path);
      ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
      expect_failure(args, 255, open_error);
      std::filesystem::remove(path);
      restore();
    }
  }
  // With its signature this image would pass 2^31 - 1 bytes; the file is a hole.
  std::filesystem::resize_file(here / "BL2.bin", (1U << 31) - scheme.signature_length);
  expect_run(seal2, 255, open_error);
  EXPECT_FALSE(std::filesystem::exists(here / "out"));
}

TEST_P(BadInput, OutputsThatCannotBeWrittenLeaveTheStatus) {
  std::filesystem::create_directory(here / "directory");
  ASSERT_EQ(mkfifo((here / "pipe").c_str(), 0600), 0);
  for (const char* out : {"directory", "missing/out", "pipe"}) {
    expect_failure({"BL1.bin", out, "-STAGE1"}, 0, signed_line[1] + open_error);
    expect_failure({"BL2.bin", out, private_key, "-STAGE2"}, 0, signed_line[2] + open_error);
  }
  expect_failure({"missing/key", "-STAGE2_KEYGEN"}, 0,
                 scheme.making_line() + open_error + open_error);
  const std::size_t longest = 127 - scheme.public_suffix.size();
  expect_failure({std::string(longest + 1, 'k'), "-STAGE2_KEYGEN"}, 0, scheme.making_line(),
                 SIGABRT);
  std::filesystem::remove(here / scheme.root_private);
  std::filesystem::create_directory(here / scheme.root_private);
  expect_run({"-KEYGEN"}, 0, scheme.making_line() + open_error);
}

}  // namespace
