#include "solve/integration/run_settings.h"

#include <algorithm>
#include <limits>

#include <gtest/gtest.h>

#include "solve/series/series.h"

namespace varno::solve {
namespace {

TEST(RunSettings, HoldTheToleranceAndItsGuards)
{
  for (const double decimals : {1.0, 12.0, 22.0, 57.0, 1007.0}) {
    const RunSettings settings = SettingsFor(decimals, 20);
    EXPECT_GE(settings.order, 12);
    EXPECT_NEAR(std::max(decimals, 12.0) / 0.30102999566398120, settings.toleranceBits, 1e-6);
    EXPECT_GE(static_cast<double>(settings.bits),
              settings.toleranceBits + 30 + 0.15 * std::min(settings.order, 27));
    EXPECT_LT(static_cast<double>(settings.bits),
              settings.toleranceBits + 31 + 0.15 * settings.order);
    EXPECT_LE(settings.bitsOfTerms, settings.bits);
  }
}

// What the guards of high orders ask for is no reason for longer numbers.
TEST(RunSettings, TakeNoMoreBitsThanTheShortestNumbersHave)
{
  for (int decimals = 12; decimals < 1000; ++decimals) {
    const RunSettings settings = SettingsFor(decimals, 20);
    EXPECT_LE(settings.bits, MostBitsAsCheapAs(settings.bitsOfTerms)) << decimals;
  }
}

// A loss of digits, extrapolated to the end of a long interval, asks for any number.
TEST(RunSettings, AskForBitsBeyondAllLimitsWhereDecimalsHaveNone)
{
  constexpr mpfr_prec_t kMostBitsByDefault = 1 << 20;
  for (const double decimals : {1e9, 1e30, 1e300, std::numeric_limits<double>::infinity()}) {
    const RunSettings settings = SettingsFor(decimals, 20);
    EXPECT_GT(settings.bits, kMostBitsByDefault) << decimals;
    EXPECT_LT(settings.bits, MPFR_PREC_MAX) << decimals;
    EXPECT_GT(settings.order, 12) << decimals;
  }
}

}  // namespace
}  // namespace varno::solve
