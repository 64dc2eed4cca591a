#pragma once

#include <gtest/gtest.h>

#include "crypto/cpu.h"

/// Fixture whose tests run once in portable code and once on the paths that this processor has.
class OnEveryPath : public ::testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    force_crypto_paths(GetParam() ? available_crypto_paths() : CryptoPaths{});
  }
  void TearDown() override { force_crypto_paths(available_crypto_paths()); }
};

#define RUN_ON_EVERY_PATH(suite)                       \
  INSTANTIATE_TEST_SUITE_P(, suite, ::testing::Bool(), \
                           [](const auto& run) { return run.param ? "Processor" : "Portable"; })
