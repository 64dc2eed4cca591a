#include "scheme/private_key_file.h"

#include "sb10/key_pair.h"
#include "tests/support/binding_tests.h"

namespace {

Bytes encrypted(std::int32_t mode, Bytes bytes) {
  EXPECT_EQ(do_PrivateKey_Encrypt(mode, bytes.data(), length_of(bytes)), 0U);
  return bytes;
}

TEST(PrivateKeyFile, RoundTripInBothModes) {
  const Bytes plain = counted_bytes(1200);
  for (const std::int32_t mode : {1, 2}) {
    Bytes bytes = encrypted(mode, plain);
    EXPECT_EQ(bytes, encrypted(mode, plain));
    ASSERT_EQ(do_PrivateKey_Decrypt(mode, bytes.data(), 1200), 0U);
    EXPECT_EQ(bytes, plain);
    EXPECT_EQ(do_PrivateKey_Encrypt(mode, bytes.data(), 1190), 0xFFF7C000);
    EXPECT_EQ(bytes, plain);
    EXPECT_EQ(do_PrivateKey_Decrypt(mode, bytes.data(), 1190), 0xFFF7C000);
  }
  EXPECT_EQ(encrypted(7, plain), encrypted(2, plain));
}

TEST(PrivateKeyFile, FixedParametersNeverChange) {
  // Or key files made before could not be read: a zero block in each mode.
  EXPECT_EQ(encrypted(1, Bytes(16)), parse_value("cdba2b666bff002b94b337bc31feac8a"));
  EXPECT_EQ(encrypted(2, Bytes(16)), parse_value("b680ca6f0bca5d2c1329e33370343343"));
}

TEST(PrivateKeyFile, OldFormatHoldsSevenItemsInTheirSlots) {
  const std::uint32_t lengths[] = {128, 120, 64, 64, 60, 64, 64};  // two are short of their slots
  Bytes record;
  const std::string text = "1.0, Priv, RSA-1024, CRT";
  Bytes expected = joined(bytes_of(28U), Bytes(text.begin(), text.end()));
  expected = joined(expected, joined(bytes_of(0U), bytes_of(604U)));
  for (std::size_t i = 0; i < 7; ++i) {
    const Bytes item = joined(bytes_of(lengths[i]), Bytes(lengths[i], std::uint8_t(i + 1)));
    record = joined(record, item);
    expected = joined(expected, item);
    expected.resize(36 + (i < 2 ? 132 * (i + 1) : 264 + 68 * (i - 1)));
  }
  Bytes out(640, 0xEE);
  ASSERT_EQ(convert_To_OldPrivateKey(record.data(), 0, out.data()), 0U);
  EXPECT_EQ(out, encrypted(1, expected));
  record[0] = 129;  // wider than its slot
  EXPECT_EQ(convert_To_OldPrivateKey(record.data(), 0, out.data()), 0xFFF7B000);
}

}  // namespace
