#include "solve/integration/run_settings.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

TEST(RunSettings, HoldTheToleranceAndItsGuards)
{
  for (const double decimals : {1.0, 12.0, 22.0, 57.0, 1007.0}) {
    const RunSettings settings = SettingsFor(decimals, 20);
    EXPECT_GE(settings.order, 12);
    EXPECT_NEAR(std::max(decimals, 12.0) / 0.30102999566398120, settings.toleranceBits, 1e-6);
    EXPECT_GE(static_cast<double>(settings.bits),
              settings.toleranceBits + 30 + 0.15 * settings.order);
  }
}

}  // namespace
}  // namespace varno::solve
