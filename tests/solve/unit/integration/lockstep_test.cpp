#include "solve/integration/lockstep.h"

#include <stdexcept>

#include <gtest/gtest.h>

#include "solve/evaluation/domain_error.h"
#include "solve/integration/run.h"
#include "solve/tape/compile.h"
#include "tests/solve/support/comparison.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;

std::vector<std::vector<Real>> Starts(const std::vector<double>& values, mpfr_prec_t bits)
{
  std::vector<std::vector<Real>> starts;
  for (const double value : values) {
    starts.push_back({Real(bits)});
    mpfr_set_d(starts.back()[0], value, MPFR_RNDN);
  }
  return starts;
}

/// Runs of x' = f(x), with what is seen of them.
class LockstepTest : public testing::Test {
 protected:
  template <class RightHandSide>
  Lockstep Make(RightHandSide rightHandSide, const std::vector<double>& starts, const Moment& reach,
                int threads = 1)
  {
    Equations m;
    const Expression x = m.Variable("x", 1);
    m.SetDerivative(x, rightHandSide(x));
    tape = Compile(m.Finished());
    const RunSettings best = SettingsFor(25, 20);
    std::vector<RunSettings> settings(starts.size(), SettingsFor(22, 20));
    settings.back() = best;
    return {RunsOf(tape),
            settings,
            Moment(Rational(0)),
            Starts(starts, best.bits),
            reach,
            [this](std::size_t, const DenseStep&) {
              if (++watched == limit) throw std::runtime_error("limit");
            },
            {},
            [this](const Moment& time, const DenseStep& a, const DenseStep& b) {
              compared.push_back(time);
              const Real first = a.StatesAt(time)[0], second = b.StatesAt(time)[0];
              largestApart = std::max(largestApart, std::abs(first.ToDouble() - second.ToDouble()));
            },
            threads};
  }

  Tape tape;
  std::vector<Moment> compared;
  double largestApart = 0;
  int watched = 0, limit = -1;
};

Expression Decay(Expression x)
{
  return -x;
}

// x' = x^2 from x0 ends at 1/x0.
Expression Square(Expression x)
{
  return x * x;
}

TEST_F(LockstepTest, ReachesATimeWithTheLatestStepOfEach)
{
  Lockstep lockstep = Make(Decay, {1, 1}, Moment(10));
  const Moment time(Rational(7, 3));
  lockstep.Reach(time);
  Real expected(300);
  time.Evaluate(expected);
  mpfr_neg(expected, expected, MPFR_RNDN);
  mpfr_exp(expected, expected, MPFR_RNDN);
  for (std::size_t run = 0; run < lockstep.RunCount(); ++run) {
    EXPECT_FALSE(lockstep.Latest(run).IsBehind(time));
    EXPECT_LE(lockstep.Latest(run).Begin(), time);
    EXPECT_TRUE(support::HasDigits(20, lockstep.Latest(run).StatesAt(time)[0], expected));
  }
}

// Once the other one has come so far; in order.
TEST_F(LockstepTest, ComparesAtEveryEndOfAStepOfTheBestRun)
{
  Lockstep lockstep = Make(Decay, {1, 1}, Moment(50));
  lockstep.Reach(Moment(50));
  EXPECT_EQ(watched, lockstep.Latest(0).Steps() + lockstep.Latest(1).Steps());
  EXPECT_GE(static_cast<std::int64_t>(compared.size()), lockstep.Latest(1).Steps() - 1);
  EXPECT_TRUE(std::ranges::is_sorted(compared));
  EXPECT_LT(largestApart, 1e-15);
}

TEST_F(LockstepTest, SeesDifferentSolutions)
{
  Lockstep lockstep = Make(Decay, {1, 1.25}, Moment(10));
  lockstep.Reach(Moment(10));
  EXPECT_GT(largestApart, 0.01);
}

TEST_F(LockstepTest, AllEndAlike)
{
  Lockstep lockstep = Make(Square, {1, 1}, Moment(2));
  EXPECT_THROW(lockstep.Reach(Moment(2)), Singularity);
}

TEST_F(LockstepTest, OneThatGoesOnContradictsTheOther)
{
  for (const bool firstEnds : {false, true}) {
    Lockstep lockstep =
        firstEnds ? Make(Square, {1, 0.25}, Moment(2)) : Make(Square, {0.25, 1}, Moment(2));
    EXPECT_THROW(lockstep.Reach(Moment(2)), Disagreement);
  }
}

TEST_F(LockstepTest, ReachesTheNextEndOfAStepOfTheBestRun)
{
  Lockstep lockstep = Make(Decay, {1, 1}, Moment(50));
  Moment time;
  for (int i = 0; i < 5; ++i) {
    lockstep.ReachNextStep(time);
    EXPECT_GT(lockstep.Best().End(), time);
    EXPECT_EQ(lockstep.Best().Steps(), i + 1);
    time = lockstep.Best().End();
  }
}

TEST_F(LockstepTest, NextStepsStopWhereARunEnds)
{
  Lockstep lockstep = Make(Square, {1, 1}, Moment(2));
  const auto goOn = [&lockstep] {
    for (;;) lockstep.ReachNextStep(lockstep.Best().End());
  };
  EXPECT_THROW(goOn(), Singularity);
}

TEST_F(LockstepTest, TheWatchMayEndIt)
{
  limit = 3;
  Lockstep lockstep = Make(Decay, {1, 1}, Moment(50));
  EXPECT_THROW(lockstep.Reach(Moment(50)), std::runtime_error);
  EXPECT_EQ(watched, 3);
}

// With threads, what is watched and compared is the same, in the same order.
TEST_F(LockstepTest, ThreadsChangeNothing)
{
  const Moment reach(2000);
  const auto run = [&](int threads) {
    watched = 0;
    compared.clear();
    const auto oscillating = [](Expression x) {
      return support::Function(Operation::kSin, x) + Rational(3, 2);
    };
    Lockstep lockstep = Make(oscillating, {1, 1}, reach, threads);
    lockstep.Reach(reach);
    return lockstep.Best().StatesAt(reach)[0];
  };
  const Real serial = run(1);
  const std::vector<Moment> comparedBefore = compared;
  const int watchedBefore = watched;
  const Real threaded = run(2);
  EXPECT_NE(mpfr_equal_p(serial, threaded), 0);
  EXPECT_EQ(watched, watchedBefore);
  EXPECT_EQ(compared, comparedBefore);
}

}  // namespace
}  // namespace varno::solve
