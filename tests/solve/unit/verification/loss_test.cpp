#include "solve/verification/loss.h"

#include <cmath>
#include <functional>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

/// A difference that grows like this, seen at 200 places up to a distance.
Loss Seen(double until, const std::function<double(double)>& decimals)
{
  Loss loss;
  for (int i = 1; i <= 200; ++i) loss.Add(until * i / 200, decimals(until * i / 200));
  return loss;
}

// Errors that grow like 10^(0.4 t)
TEST(Loss, GoesOnEvenlyWhereErrorsGrowExponentially)
{
  const Loss loss = Seen(20, [](double t) { return -22 + 0.4 * t + 0.5 * std::sin(t); });
  EXPECT_NEAR(loss.SoFar(), 8, 1);
  EXPECT_NEAR(loss.Ahead(100), 32, 5);
  EXPECT_NEAR(loss.Ahead(1000), 392, 60);
  EXPECT_TRUE(loss.IsSteady());
}

// Errors that grow like t^3
TEST(Loss, GrowsLittleWhereErrorsGrowLikeAPower)
{
  const Loss loss = Seen(100, [](double t) { return -22 + 3 * std::log10(t); });
  EXPECT_NEAR(loss.Ahead(10'000), 6, 2);
  EXPECT_FALSE(loss.IsSteady());
}

TEST(Loss, AnEncounterDoesNotComeAgain)
{
  for (const double place : {10.0, 30.0, 40.0}) {
    const Loss loss = Seen(45, [place](double t) { return t < place ? -22 : -12; });
    EXPECT_EQ(loss.SoFar(), 10);
    EXPECT_EQ(loss.Ahead(450), 0) << place;
    EXPECT_FALSE(loss.IsSteady());
  }
}

// 20 decimals on the way onto a singularity at 1, 10 more at it; from there on steps are long.
TEST(Loss, CountsWhatALongStepLosesAtItsBegin)
{
  Loss loss;
  for (int i = 1; i <= 100; ++i) loss.Add(1 - std::pow(0.8, i), -50 + 0.2 * i);
  loss.Add(1.4, -20);
  EXPECT_FALSE(loss.IsSteady());
}

TEST(Loss, CountsFromTheLatterHalf)
{
  // Quiet at first, then as above.
  const Loss loss = Seen(80, [](double t) { return -22 + 0.4 * std::max(0.0, t - 40); });
  EXPECT_NEAR(loss.Ahead(160), 32, 3);
}

TEST(Loss, WhatShrinksAgainWasLostAllTheSame)
{
  Loss loss;
  for (int i = 1; i <= 100; ++i) loss.Add(i, i < 50 ? -20 + 0.1 * i : -20);
  EXPECT_NEAR(loss.SoFar(), 4.8, 0.01);
  EXPECT_EQ(loss.Ahead(1000), 0);
}

TEST(Loss, SaysNothingAfterFewSteps)
{
  Loss loss;
  EXPECT_EQ(loss.SoFar(), 0);
  EXPECT_EQ(loss.Ahead(10), 0);
  EXPECT_FALSE(loss.IsSteady());
  for (int i = 1; i < 8; ++i) loss.Add(i, -20 + i);
  EXPECT_EQ(loss.Ahead(100), 0);
}

TEST(Loss, ManyStepsAreThinnedOut)
{
  Loss loss;
  for (int i = 1; i <= 1'000'000; ++i) loss.Add(i * 1e-4, -22 + 0.4e-4 * i);
  EXPECT_NEAR(loss.SoFar(), 40, 0.01);
  EXPECT_NEAR(loss.Ahead(200), 40, 0.5);
}

// Two runs may agree exactly for a while.
TEST(Loss, NoDifferenceIsNoSample)
{
  Loss loss;
  loss.Add(1, -INFINITY);
  loss.Add(2, -20);
  loss.Add(3, -INFINITY);
  EXPECT_EQ(loss.SoFar(), 0);
}

}  // namespace
}  // namespace varno::solve
