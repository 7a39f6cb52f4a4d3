#include "solve/integration/step_feed.h"

#include <stdexcept>

#include <gtest/gtest.h>

#include "solve/evaluation/domain_error.h"
#include "solve/integration/run.h"
#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;

/// x' = v, v' = -x from (1, 0)
Tape Oscillator()
{
  Equations m;
  const Expression x = m.Variable("x", 1), v = m.Variable("v", 0);
  m.SetDerivative(x, v);
  m.SetDerivative(v, -x);
  return Compile(m.Finished());
}

/// x' = x^2 from 1, with a pole at 1
Tape Pole()
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, x * x);
  return Compile(m.Finished());
}

std::vector<Real> Start(std::size_t count, mpfr_prec_t bits)
{
  std::vector<Real> states(count, Real(bits));
  mpfr_set_ui(states[0], 1, MPFR_RNDN);
  return states;
}

class StepFeedTest : public testing::Test {
 protected:
  StepFeed Feed(const Tape& tape, const Moment& reach, Poll poll = {})
  {
    return {RunsOf(tape),
            settings,
            Moment(Rational(0)),
            Start(tape.rightHandSides.size(), settings.bits),
            reach,
            std::move(poll)};
  }

  RunSettings settings = SettingsFor(22, 20);
};

TEST_F(StepFeedTest, StepsMadeAheadAreTheSame)
{
  const Tape tape = Oscillator();
  const Moment reach(500);
  StepFeed plain = Feed(tape, reach), ahead = Feed(tape, reach);
  const Moment middle(Rational(1, 3));
  for (int step = 0; plain.Latest().IsBehind(reach); ++step) {
    if (step == 3) ahead.GoAhead();
    plain.Advance();
    ahead.Advance();
    const DenseStep &a = plain.Latest(), &b = ahead.Latest();
    ASSERT_EQ(a.End(), b.End());
    EXPECT_EQ(a.Begin(), b.Begin());
    EXPECT_EQ(a.Steps(), b.Steps());
    EXPECT_EQ(a.StateSizes(), b.StateSizes());
    const Moment within = a.Begin() + (a.End() - a.Begin()) * Rational(1, 3);
    for (const Moment& time : {within, a.End()}) {
      EXPECT_NE(mpfr_equal_p(a.StatesAt(time)[0], b.StatesAt(time)[0]), 0);
      EXPECT_NE(mpfr_equal_p(a.StatesAt(time)[1], b.StatesAt(time)[1]), 0);
    }
  }
}

// The step stays what it is while others are made: nobody writes over its series.
TEST_F(StepFeedTest, ACopyOfAStepStays)
{
  const Tape tape = Oscillator();
  StepFeed feed = Feed(tape, Moment(100));
  feed.Advance();
  const DenseStep kept = feed.Latest();
  const Moment within = kept.Begin() + (kept.End() - kept.Begin()) * Rational(1, 2);
  const Real before = kept.StatesAt(within)[0];
  feed.GoAhead();
  for (int i = 0; i < 30; ++i) feed.Advance();
  EXPECT_NE(mpfr_equal_p(kept.StatesAt(within)[0], before), 0);
}

TEST_F(StepFeedTest, TheEndComesBehindTheStepsBeforeIt)
{
  const Tape tape = Pole();
  StepFeed plain = Feed(tape, Moment(2)), ahead = Feed(tape, Moment(2));
  ahead.GoAhead();
  const auto stepsToEnd = [](StepFeed& feed) {
    int steps = 0;
    try {
      for (;; ++steps) feed.Advance();
    } catch (const Singularity& end) {
      EXPECT_NEAR(end.time.ToDouble(), 1, 1e-15);
    }
    return steps;
  };
  EXPECT_EQ(stepsToEnd(ahead), stepsToEnd(plain));
  EXPECT_THROW(ahead.Advance(), Singularity);  // and stays
}

TEST_F(StepFeedTest, WhoWaitsIsAskedWhetherToGoOn)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, support::Function(Operation::kSin, x * x * x));
  const Tape tape = Compile(m.Finished());
  settings = SettingsFor(3000, 20);  // a step takes minutes
  StepFeed feed = Feed(tape, Moment(2), [] { throw std::runtime_error("enough"); });
  feed.GoAhead();
  EXPECT_THROW(feed.Advance(), std::runtime_error);
  // The feed ends here, in the middle of the step.
}

TEST_F(StepFeedTest, ASerialStepIsAskedToo)
{
  const Tape tape = Oscillator();
  settings = SettingsFor(2000, 20);
  StepFeed feed = Feed(tape, Moment(2), [] { throw std::runtime_error("enough"); });
  EXPECT_THROW(feed.Advance(), std::runtime_error);
}

TEST_F(StepFeedTest, UnusedStepsAheadAreNoBurden)
{
  const Tape tape = Oscillator();
  StepFeed feed = Feed(tape, Moment(1'000'000));
  feed.GoAhead();
  feed.Advance();
}

}  // namespace
}  // namespace varno::solve
