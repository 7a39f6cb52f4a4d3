#include "solve/quick/run.h"

#include <cmath>
#include <functional>
#include <vector>

#include <gtest/gtest.h>

#include "programs.h"
#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"

namespace varno::solve::quick {
namespace {

using support::Equations;
using support::Expression;
using HardwareRun = Run;  // in tests Run is something else

constexpr RunSettings kSettings{.toleranceBits = 60, .order = 20, .disturbed = false};
constexpr RunSettings kDisturbed{.toleranceBits = 60, .order = 20, .disturbed = true};

/// Makes steps up to a place; false where one is refused.
bool GoTo(HardwareRun& run, Number place)
{
  while (run.Latest().end < place) {
    if (run.Steps() > 2000 || !run.Step()) return false;
  }
  return true;
}

TEST(QuickRun, FollowsAClosedForm)
{
  const Program program = Oscillator();
  HardwareRun run(program, kSettings, {0, false, 20}, {1, 0});
  std::vector<Number> states(2);
  for (Number place = 1; place <= 20; ++place) {
    ASSERT_TRUE(GoTo(run, place));
    run.Latest().StatesAt(place, states);
    EXPECT_NEAR(static_cast<double>(states[0] - std::cos(place)), 0, 1e-17);
    EXPECT_NEAR(static_cast<double>(states[1] + std::sin(place)), 0, 1e-17);
    EXPECT_GE(run.Latest().sizes[0], std::fabs(states[0]));
  }
}

TEST(QuickRun, GoesBackwards)
{
  const Program program = Equation(1, [](Equations& m, Expression y) { return m.Time() * y; });
  HardwareRun run(program, kSettings, {2, true, 3}, {1});
  ASSERT_TRUE(GoTo(run, 3));
  std::vector<Number> states(1);
  run.Latest().StatesAt(3, states);  // t = -1
  EXPECT_NEAR(static_cast<double>(states[0] / std::exp(-1.5L)), 1, 1e-17);
}

TEST(QuickRun, APolynomialTakesOneStep)
{
  const Program program = Equation(1, [](Equations& m, Expression) { return m.Time() * m.Time(); });
  HardwareRun run(program, kSettings, {0, false, 64}, {1});
  ASSERT_TRUE(GoTo(run, 64));
  EXPECT_EQ(run.Steps(), 1);
}

TEST(QuickRun, DisturbedOneMovesByRounding)
{
  const Program program = Oscillator();
  HardwareRun run(program, kSettings, {0, false, 20}, {1, 0});
  HardwareRun disturbed(program, kDisturbed, {0, false, 20}, {1, 0});
  ASSERT_TRUE(GoTo(run, 20) && GoTo(disturbed, 20));
  std::vector<Number> states(2), moved(2);
  run.Latest().StatesAt(20, states);
  disturbed.Latest().StatesAt(20, moved);
  const Number apart = std::fabs(states[0] - moved[0]) + std::fabs(states[1] - moved[1]);
  EXPECT_GT(apart, 5 * kUnit);
  EXPECT_LT(apart, 20'000 * kUnit);
}

// y = 1/(1 - t)
TEST(QuickRun, RefusesToGoOnWhereStepsShrink)
{
  const Program program = Equation(1, [](Equations&, Expression y) { return y * y; });
  HardwareRun run(program, kSettings, {0, false, 2}, {1});
  EXPECT_FALSE(GoTo(run, 2));
  EXPECT_LT(run.Latest().end, 1);
  EXPECT_LT(run.Steps(), 200);
}

// A tank that is empty at t = 2: sqrt(h) is 1 - t/2, and then 0.
TEST(QuickRun, DoesNotStepOverARootOfARadicand)
{
  const Program program =
      Equation(1, [](Equations&, Expression h) { return -support::Function(Operation::kSqrt, h); });
  HardwareRun run(program, kSettings, {0, false, 3}, {1});
  EXPECT_FALSE(GoTo(run, 3));
  EXPECT_LT(run.Latest().end, 2);
}

// 1/(t - 1)^2 has its pole in the way.
TEST(QuickRun, DoesNotStepOverAPole)
{
  const Program program =
      Equation(0, [](Equations& m, Expression) { return 1 / ((m.Time() - 1) * (m.Time() - 1)); });
  HardwareRun run(program, kSettings, {0, false, 3}, {0});
  EXPECT_FALSE(GoTo(run, 3));
  EXPECT_LT(run.Latest().end, 1);
}

TEST(QuickRun, RefusesLinesThatAreFlat)
{
  // y = 1 for ever, but what has no terms may be a function that is still to rise
  const Program rest = Equation(1, [](Equations&, Expression y) { return 1 - y; });
  EXPECT_FALSE(HardwareRun(rest, kSettings, {0, false, 1}, {1}).Step());
  const Program pulse = Equation(1, [](Equations& m, Expression) {
    const Expression s = support::Function(Operation::kSin, m.Time());
    return Power(s, Rational(40));
  });
  EXPECT_FALSE(HardwareRun(pulse, kSettings, {0, false, 1}, {1}).Step());
}

TEST(QuickRun, RefusesPulsesBeyondTheRange)
{
  const Program program = Equation(1, [](Equations& m, Expression) {
    const Expression u = 10 * (m.Time() - 5);
    return support::Function(Operation::kExp, -(u * u));
  });
  EXPECT_FALSE(HardwareRun(program, kSettings, {0, false, 10}, {1}).Step());
}

// 10^15 (sqrt(1 + 10^-15 y) - 1) is y/2, of which four digits are left.
TEST(QuickRun, RefusesDerivativesThatAreTheRestOfACancellation)
{
  Rational large = 1;
  for (int i = 0; i < 15; ++i) large *= 10;
  const Program program = Equation(1, [&](Equations&, Expression y) {
    return large * (support::Function(Operation::kSqrt, 1 + y / large) - 1);
  });
  EXPECT_FALSE(HardwareRun(program, kSettings, {0, false, 1}, {1}).Step());
}

// (pi t - 1) exp(-t) / (pi t - 1) is exp(-t), but for its common root.
TEST(QuickRun, DoesNotStepOverACommonRoot)
{
  const Program program = Equation(1, [](Equations& m, Expression) {
    const Expression u = m.Pi() * m.Time() - 1;
    return u * support::Function(Operation::kExp, -m.Time()) / u;
  });
  HardwareRun run(program, kDisturbed, {0, false, 1}, {1});
  EXPECT_FALSE(GoTo(run, 1));
  EXPECT_LT(run.Latest().end, 0.3183);
}

// The cosine falls, but here its series has the sign of another function.
TEST(QuickRun, DefectShowsAWrongRecurrence)
{
  Program program = Equation(
      1, [](Equations& m, Expression) { return support::Function(Operation::kCos, m.Time()); });
  EXPECT_TRUE(HardwareRun(program, kSettings, {0.5L, false, 1}, {1}).Step());
  for (Program::Step& step : program.steps) {
    if (step.function == Operation::kCos) step.negative = !step.negative;
  }
  EXPECT_TRUE(HardwareRun(program, kDisturbed, {0.5L, false, 1}, {1}).Step());
  EXPECT_FALSE(HardwareRun(program, kSettings, {0.5L, false, 1}, {1}).Step());
}

TEST(QuickRun, RefusesTimesThatAreNotExact)
{
  const Program program = Equation(
      1, [](Equations& m, Expression y) { return y * m.Time() / Rational(Integer(1) << 40); });
  EXPECT_TRUE(HardwareRun(program, kSettings, {0x1p40L, false, 1}, {1}).Step());
  EXPECT_FALSE(HardwareRun(program, kSettings, {0x1p40L, false, 0x1p-30L}, {1}).Step());
}

}  // namespace
}  // namespace varno::solve::quick
