#include "solve/integration/watched_roots.h"

#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "solve/evaluation/size.h"
#include "solve/integration/line_sizes.h"
#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;
using support::Function;
using support::Power;

/// A line for each of some functions of t, and their series about 0: the right-hand sides of
/// y_i' = f_i(t) are watched.
class Functions {
 public:
  Functions() : settings(SettingsFor(20, 20)) {}

  bool mayBeZero = true;

  Expression Time() { return equations.Time(); }
  void Add(Expression f)
  {
    const Expression y = equations.Variable("y" + std::to_string(count++), 0);
    equations.SetDerivative(y, f);
  }

  std::optional<WatchedRootsAhead> FirstRoots(double length, int zeroTerms = 0,
                                              const Nearness& nearness = {})
  {
    const Tape tape = Compile(equations.Finished());
    const auto series = MakeSeries(tape, settings.bits, settings.order);
    const std::vector<Real> states(tape.rightHandSides.size(), Real(settings.bits));
    series->Begin(Real(2), states, false, 0);
    series->ExtendTo(settings.order);
    Real step(53);
    mpfr_set_d(step, length, MPFR_RNDN);
    const std::vector<double> sizes = LineSizes(tape, *series);
    std::vector<WatchedLine> watched;
    for (const LineId line : tape.rightHandSides) watched.push_back({line, zeroTerms, mayBeZero});
    return FirstWatchedRoots(tape, {*series, sizes, step, settings}, watched, nearness);
  }

 private:
  Equations equations;
  RunSettings settings;
  int count = 0;
};

Expression Sin(Expression u)
{
  return Function(Operation::kSin, u);
}

TEST(FirstWatchedRoots, FindsACrossingWithItsSigns)
{
  Functions f;
  f.Add(Function(Operation::kCos, f.Time()));  // cos t = 0 at pi/2
  const auto ahead = f.FirstRoots(2);
  ASSERT_TRUE(ahead);
  EXPECT_NEAR(ahead->place.ToDouble(), std::numbers::pi / 2, 1e-15);
  EXPECT_LT(Log2Size(ahead->error), -60);
  ASSERT_EQ(ahead->roots.size(), 1);
  EXPECT_TRUE(ahead->roots[0].IsCrossing());
  EXPECT_EQ(ahead->roots[0].signBefore, 1);
  EXPECT_EQ(ahead->roots[0].signAfter, -1);
}

TEST(FirstWatchedRoots, FindsNoneWhereThereIsNone)
{
  Functions f;
  f.Add(Function(Operation::kCos, f.Time()));
  f.Add(f.Time() + Rational(1, 100));
  EXPECT_FALSE(f.FirstRoots(1.5));
}

TEST(FirstWatchedRoots, TellsATouchFromACrossing)
{
  Functions f;
  const Expression u = f.Time() - Rational(1, 3);
  f.Add(u * u);
  const auto ahead = f.FirstRoots(1);
  ASSERT_TRUE(ahead);
  // The place is that of the extremum, which is known to full digits.
  EXPECT_NEAR(ahead->place.ToDouble(), 1.0 / 3, 1e-15);
  EXPECT_LT(Log2Size(ahead->error), -50);
  ASSERT_EQ(ahead->roots.size(), 1);
  EXPECT_FALSE(ahead->roots[0].IsCrossing());
  EXPECT_EQ(ahead->roots[0].signBefore, 1);
  EXPECT_EQ(ahead->roots[0].signAfter, 1);
  EXPECT_EQ(ahead->roots[0].mostRoots, 2);
}

TEST(FirstWatchedRoots, MissesNoTwoRootsInOneStep)
{
  // (t - 0.4)(t - 0.6): the signs at both ends of the step are the same.
  Functions f;
  f.Add((f.Time() - Rational(2, 5)) * (f.Time() - Rational(3, 5)));
  const auto ahead = f.FirstRoots(1);
  ASSERT_TRUE(ahead);
  EXPECT_NEAR(ahead->place.ToDouble(), 0.4, 1e-15);
  EXPECT_TRUE(ahead->roots[0].IsCrossing());
}

TEST(FirstWatchedRoots, NamesAllLinesThatAreZeroInOnePlace)
{
  Functions f;
  f.Add(f.Time() - Rational(9, 10));
  f.Add(f.Time() - Rational(1, 3));
  f.Add(1 - 3 * f.Time());
  f.Add(Sin(f.Time() - Rational(1, 3)));
  const auto ahead = f.FirstRoots(1);
  ASSERT_TRUE(ahead);
  ASSERT_EQ(ahead->roots.size(), 3);
  EXPECT_EQ(ahead->roots[0].index, 1);
  EXPECT_EQ(ahead->roots[0].signAfter, 1);
  EXPECT_EQ(ahead->roots[1].index, 2);
  EXPECT_EQ(ahead->roots[1].signAfter, -1);
  EXPECT_EQ(ahead->roots[2].index, 3);
}

TEST(FirstWatchedRoots, DividesOutARootAtTheStart)
{
  // sin t has the root 0, which is known, and none else up to 3.
  Functions f;
  f.Add(Sin(f.Time()));
  EXPECT_TRUE(f.FirstRoots(1));
  EXPECT_FALSE(f.FirstRoots(1, 1));
  const auto next = f.FirstRoots(3.5, 1);
  ASSERT_TRUE(next);
  EXPECT_NEAR(next->place.ToDouble(), std::numbers::pi, 1e-13);
}

TEST(FirstWatchedRoots, TakesASimpleRootAtTheEndForACrossing)
{
  Functions f;
  f.Add(f.Time() * 4 - Rational(3));
  const auto ahead = f.FirstRoots(0.75);
  ASSERT_TRUE(ahead);
  EXPECT_TRUE(ahead->roots[0].IsCrossing());
  EXPECT_EQ(ahead->place.ToDouble(), 0.75);
}

TEST(FirstWatchedRoots, TakesALineThatIsZeroThroughoutForNone)
{
  Functions f;
  f.Add((f.Time() * f.Time() - Power(f.Time(), 2)) * f.Time());
  EXPECT_FALSE(f.FirstRoots(1));
}

/// exp(t) exp(-t) - 1 + 2^-1000 (t - 1/2), of which 20 digits see -2^-1001 and 0 t.
Expression BelowRounding(Functions& f)
{
  const Expression t = f.Time();
  const Expression one = Function(Operation::kExp, t) * Function(Operation::kExp, t * -1);
  return one - Rational(1) + (t - Rational(1, 2)) * Rational(Integer(1), Integer(1) << 1000);
}

TEST(FirstWatchedRoots, LeavesOpenWhatIsBelowRounding)
{
  Functions f;
  f.Add(BelowRounding(f));
  const auto ahead = f.FirstRoots(1);
  ASSERT_TRUE(ahead);
  EXPECT_EQ(ahead->roots[0].signBefore, 0);
  EXPECT_EQ(ahead->place.ToDouble(), 0);
}

TEST(FirstWatchedRoots, LeavesOpenALineOfASignWhoseTermsAreAllZero)
{
  Functions f;
  f.Add((f.Time() * f.Time() - Power(f.Time(), 2)) * f.Time());
  f.mayBeZero = false;
  EXPECT_TRUE(f.FirstRoots(1));
}

/// How many roots are first among those of t - 1/2 and t - 1/2 - 2^-30, in a step of 1.
int RootsInOnePlace(const Nearness& nearness, bool& isInDoubt)
{
  Functions f;
  f.Add(f.Time() - Rational(1, 2));
  f.Add(f.Time() - Rational(1, 2) - Rational(1, 1 << 30));
  const auto ahead = f.FirstRoots(1, 0, nearness);
  if (!ahead) return 0;
  isInDoubt = ahead->isInDoubt;
  return static_cast<int>(ahead->roots.size());
}

TEST(FirstWatchedRoots, TellsRootsApartAsNearAsTheirErrors)
{
  bool isInDoubt = true;
  EXPECT_EQ(RootsInOnePlace({}, isInDoubt), 1);
  EXPECT_FALSE(isInDoubt);
  EXPECT_EQ(RootsInOnePlace({.same = -31, .doubt = -31}, isInDoubt), 1);
  EXPECT_FALSE(isInDoubt);
}

TEST(FirstWatchedRoots, TakesRootsNearerThanTheStatesAreKnownForOnePlace)
{
  bool isInDoubt = true;
  EXPECT_EQ(RootsInOnePlace({.same = -29, .doubt = -29}, isInDoubt), 2);
  EXPECT_FALSE(isInDoubt);
}

TEST(FirstWatchedRoots, DoubtsRootsThatMoreDigitsMayTellApart)
{
  bool isInDoubt = false;
  EXPECT_EQ(RootsInOnePlace({.same = -31, .doubt = -29}, isInDoubt), 1);
  EXPECT_TRUE(isInDoubt);
}

TEST(FirstWatchedRoots, TakesThreeRootsInOnePlaceForACrossing)
{
  Functions f;
  f.Add(Power(f.Time() - Rational(1, 2), 3) * -2);
  const auto ahead = f.FirstRoots(1);
  ASSERT_TRUE(ahead);
  EXPECT_EQ(ahead->roots[0].signBefore, 1);
  EXPECT_EQ(ahead->roots[0].signAfter, -1);
  EXPECT_EQ(ahead->roots[0].mostRoots, 3);
}

}  // namespace
}  // namespace varno::solve
