#include "solve/quick/rounding.h"

#include <gtest/gtest.h>

namespace varno::solve::quick {
namespace {

TEST(QuickRounding, IsKnownAwayFromBoundaries)
{
  EXPECT_TRUE(IsRoundingKnown(1.2345L, 1e-10L, 4 - 1));
  EXPECT_TRUE(IsRoundingKnown(-9.87654321e-50L, 1e-58L, 3));
  EXPECT_TRUE(IsRoundingKnown(1e40L / 3, 1e29L, 9));
}

TEST(QuickRounding, IsUnknownNearABoundary)
{
  // To three digits 1.235 lies between 1.23 and 1.24.
  EXPECT_FALSE(IsRoundingKnown(1.235L, 0, 3));
  EXPECT_FALSE(IsRoundingKnown(1.2351L, 1e-4L, 3));
  EXPECT_FALSE(IsRoundingKnown(1.2349L, 1.001e-4L, 3));
  EXPECT_TRUE(IsRoundingKnown(1.2351L, 0.99e-4L, 3));
  EXPECT_FALSE(IsRoundingKnown(-1.2351L, 1e-4L, 3));
  // 9.995 is 9.99 or 10.0.
  EXPECT_FALSE(IsRoundingKnown(9.995L, 1e-12L, 3));
  EXPECT_TRUE(IsRoundingKnown(9.9999L, 1e-12L, 3));
}

TEST(QuickRounding, IsUnknownOfWhatIsOffByAFortiethOfAUnit)
{
  EXPECT_TRUE(IsRoundingKnown(1.23L, 0.0002L, 3));
  EXPECT_FALSE(IsRoundingKnown(1.23L, 0.0003L, 3));
  EXPECT_TRUE(IsRoundingKnown(9.23L, 0.0002L, 3));
}

// 0.9999 has the unit of 0.1, 1.0001 that of 1.
TEST(QuickRounding, UnitIsThatOfTheNumber)
{
  EXPECT_FALSE(IsRoundingKnown(0.99991L, 0.0000101L * 3, 3));
  EXPECT_TRUE(IsRoundingKnown(1.0001L, 0.0000101L * 3, 3));
}

TEST(QuickRounding, WhatIsNoNumberIsUnknown)
{
  const Number nan = std::numeric_limits<Number>::quiet_NaN();
  EXPECT_FALSE(IsRoundingKnown(nan, 0, 3));
  EXPECT_FALSE(IsRoundingKnown(1, nan, 3));
  EXPECT_FALSE(IsRoundingKnown(1, std::numeric_limits<Number>::infinity(), 3));
}

}  // namespace
}  // namespace varno::solve::quick
