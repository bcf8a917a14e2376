#pragma once

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "xel/simulation/SimulatedPlatform.h"

namespace xel::test {

/// A test on a simulated platform. A log line that it does not expect fails it.
class PlatformTest : public testing::Test {
 public:
  void TearDown() override { EXPECT_EQ(platform.log().lines(), expectedLog); }

  simulation::SimulatedPlatform platform;
  std::vector<std::string> expectedLog;
};

}  // namespace xel::test
