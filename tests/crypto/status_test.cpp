#include "crypto/status.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

// Scripts and callers of the library know these numbers; everywhere else they go by their names.
TEST(Status, TheNumbersStay) {
  const std::pair<Status, Status> numbers[] = {
      {ZEB_SUCCESS, 0},
      {ZEB_ERR_FAIL, 0xFFFF0000},
      {ZEB_ERR_NULL_POINTER, 0xFFFF0010},
      {ZEB_ERR_BUFFER_ARRANGEMENT, 0xFFFF0011},
      {ZEB_ERR_PARAMETER, 0xFFFF0020},
      {ZEB_ERR_NO_ENC_KEY, 0xFFFF0021},
      {ZEB_ERR_NO_DEC_KEY, 0xFFFF0022},
      {ZEB_ERR_NO_IV, 0xFFFF0023},
      {ZEB_ERR_NO_ROOM, 0xFFFF0024},
      {ZEB_ERR_BAD_PADDING, 0xFFFF0031},
      {ZEB_ERR_KEY_LENGTH, 0xFFFF0040},
      {ZEB_ERR_IV_LENGTH, 0xFFFF0041},
      {ZEB_ERR_NOT_WHOLE_BLOCKS, 0xFFFF0042},
      {ZEB_ERR_HELD_COUNT, 0xFFFF0043},
      {ZEB_ERR_STATE, 0xFFFF00FF},
      {VERIFY_ERR_SIGNATURE_LENGTH, 0xFFF20000},
      {VERIFY_ERR_SHA1_INIT, 0xFFF20060},
      {VERIFY_ERR_SHA1_UPDATE, 0xFFF20070},
      {VERIFY_ERR_SHA1_FINAL, 0xFFF20080},
      {VERIFY_ERR_RSA, 0xFFF20090},
      {SIGN_ERR_SHA1_INIT, 0xFFF40060},
      {SIGN_ERR_SHA1_UPDATE, 0xFFF40070},
      {SIGN_ERR_SHA1_FINAL, 0xFFF40080},
      {SIGN_ERR_RSA, 0xFFF40090},
  };
  for (const auto& [name, number] : numbers) EXPECT_EQ(name, number);
}

}  // namespace
