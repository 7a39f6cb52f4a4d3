#include "solve/integration/path.h"

#include <cmath>

#include <gtest/gtest.h>

#include "solve/integration/run.h"
#include "solve/tape/compile.h"
#include "tests/solve/support/comparison.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;

/// x' = x with x = 1 at 0, by two runs: exp(t) on both sides of the start.
class PathTest : public testing::Test {
 protected:
  PathTest()
  {
    Equations m;
    const Expression x = m.Variable("x", 1);
    m.SetDerivative(x, x);
    tape = Compile(m.Finished());
  }

  Path Make(const Rational& from, const Rational& to, const std::vector<Moment>& early)
  {
    const RunSettings best = SettingsFor(25, 20);
    Real one(best.bits);
    mpfr_set_ui(one, 1, MPFR_RNDN);
    return {{.makeRun = RunsOf(tape),
             .interval = {Moment(Rational(0)), Moment(from), Moment(to)},
             .settings = {SettingsFor(22, 20), best},
             .startStates = {{one}, {one}},
             .watch = [](std::size_t, const DenseStep&) {},
             .poll = {},
             .compare = [](const Moment&, const DenseStep&, const DenseStep&) {},
             .threads = 1},
            early};
  }

  static void ExpectExponential(Path& path, const Moment& time)
  {
    Real expected(300);
    time.Evaluate(expected);
    mpfr_exp(expected, expected, MPFR_RNDN);
    const std::vector<SizedStates> states = path.StatesAt(time);
    ASSERT_EQ(states.size(), 2);
    for (const SizedStates& ofRun : states) {
      EXPECT_TRUE(support::HasDigits(20, ofRun.values[0], expected)) << time.ToDouble();
      // The largest of the terms that make the sum.
      EXPECT_GE(ofRun.sizes[0], std::log2(expected.ToDouble()) - 3);
    }
  }

  static std::vector<Moment> Times(const std::vector<Rational>& times)
  {
    std::vector<Moment> moments;
    for (const Rational& time : times) moments.emplace_back(time);
    return moments;
  }

  Tape tape;
};

TEST_F(PathTest, FromTheStartOn)
{
  Path path = Make(0, 7, {});
  for (const Moment& time : Times({0, Rational(1, 3), 3, 7})) ExpectExponential(path, time);
  EXPECT_EQ(path.Steps(), path.Best().Steps());
}

TEST_F(PathTest, ToBothSidesOfTheStart)
{
  const std::vector<Moment> early = Times({-8, -3, Rational(-1, 3)});
  Path path = Make(-8, 5, early);
  for (const Moment& time : early) ExpectExponential(path, time);
  for (const Moment& time : Times({0, 1, 5})) ExpectExponential(path, time);
  EXPECT_GT(path.Steps(), path.Best().Steps());
}

TEST_F(PathTest, BackwardsToBothSidesOfTheStart)
{
  const std::vector<Moment> early = Times({6, 2});
  Path path = Make(6, -4, early);
  for (const Moment& time : early) ExpectExponential(path, time);
  for (const Moment& time : Times({0, -4})) ExpectExponential(path, time);
}

TEST_F(PathTest, AllBeforeTheStart)
{
  const std::vector<Moment> early = Times({-5, -4, -2});
  Path path = Make(-5, -2, early);
  for (const Moment& time : early) ExpectExponential(path, time);
}

TEST_F(PathTest, BehindTheStart)
{
  Path path = Make(3, 4, {});
  for (const Moment& time : Times({3, Rational(7, 2), 4})) ExpectExponential(path, time);
}

TEST_F(PathTest, EndsOfSteps)
{
  Path path = Make(0, 20, {});
  Moment time;
  for (int i = 0; i < 4; ++i) {
    const Moment next = path.NextStepEnd(time);
    EXPECT_GT(next, time);
    EXPECT_EQ(next, path.Best().End());
    time = next;
  }
}

}  // namespace
}  // namespace varno::solve
