#include "solve/switching/piecewise_run.h"

#include <cmath>

#include <gtest/gtest.h>

#include "solve/evaluation/evaluator.h"
#include "solve/integration/singularity.h"
#include "solve/switching/dynamics.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;
using support::Function;

/// A run of a model from its start values at 0.
class PiecewiseRunTest : public testing::Test {
 protected:
  void Begin(const Model& given)
  {
    model = given;
    dynamics.emplace(model, std::nullopt);
    const RunSettings settings = SettingsFor(40, 20);
    std::vector<Real> states;
    for (const State& state : model.states)
      states.push_back(EvaluateConstant(model.graph, state.start, settings.bits));
    run = dynamics->Runs(15)(settings, Moment(Rational(0)), std::move(states), Moment(Rational(10)),
                             {});
  }
  /// Steps until something happens.
  const Switch& NextSwitch()
  {
    do {
      run->Step();
    } while (run->Latest().switched == nullptr && run->Latest().steps < 1000);
    return *run->Latest().switched;
  }

  Model model;
  std::optional<Dynamics> dynamics;
  std::unique_ptr<Stepper> run;
};

// x'' = -sign(x) from 1: x = 1 - t^2/2 is 0 at sqrt(2), and the next zeros come 2 sqrt(2) later.
TEST_F(PiecewiseRunTest, GoesOverToTheOtherSideOfAJump)
{
  Equations m;
  const Expression x = m.Variable("x", 1), v = m.Variable("v", 0);
  m.SetDerivative(x, v);
  m.SetDerivative(v, -Function(Operation::kSign, x));
  Begin(m.Finished());
  EXPECT_NEAR(NextSwitch().time.ToDouble(), std::sqrt(2.0), 1e-15);
  EXPECT_TRUE(run->Latest().states[0].IsZero());
  EXPECT_FALSE(run->Latest().switched->jumps);
  EXPECT_NEAR(NextSwitch().time.ToDouble(), 3 * std::sqrt(2.0), 1e-15);
}

// x' = 1/3 - sign(x) from 1 has 0 at 3/2, where both sides point back.
TEST_F(PiecewiseRunTest, EndsWhereItWouldSlide)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, Rational(1, 3) - Function(Operation::kSign, x));
  Begin(m.Finished());
  try {
    while (run->Latest().steps < 1000) run->Step();
    FAIL();
  } catch (const Singularity& end) {
    EXPECT_EQ(end.kind, SingularityKind::kSliding);
    EXPECT_EQ(end.time, Moment(Rational(3, 2)));
    // The step up to there is given first.
    EXPECT_EQ(run->Latest().end, Moment(Rational(3, 2)));
  }
}

// y = 10 t - 5 t^2 falls through 0 at 2 with -10, and leaves with half of that.
TEST_F(PiecewiseRunTest, AssignsAtAnEventAndFiresItOnce)
{
  Equations m;
  const Expression y = m.Variable("y", 0), v = m.Variable("v", 10);
  m.SetDerivative(y, v);
  m.SetDerivative(v, m.Number(-10));
  Model ball = m.Finished();
  Event bounce{.name = "bounce",
               .expression = y.id,
               .crossing = Crossing::kFalling,
               .stops = false,
               .assignments = {},
               .place = {}};
  const NodeId half = ball.graph.Number(Rational(-1, 2), {});
  bounce.assignments.push_back({1, ball.graph.Make(Operation::kMultiply, half, v.id, {}), {}});
  ball.events.push_back(bounce);
  Begin(ball);
  const Switch first = NextSwitch();
  EXPECT_EQ(first.time, Moment(Rational(2)));
  EXPECT_EQ(first.events.at(0).states[1].ToDouble(), -10);
  EXPECT_EQ(run->Latest().states[1].ToDouble(), 5);
  EXPECT_TRUE(run->Latest().states[0].IsZero());
  EXPECT_EQ(NextSwitch().time, Moment(Rational(3)));
}

// h' = -sqrt(max(h, 0)) from 1: h = (1 - t/2)^2 touches 0 at 2, where it has no series, and stays
// there.
TEST_F(PiecewiseRunTest, StaysAtALimitThatIsTouchedWhereItsBranchEnds)
{
  Equations m;
  const Expression h = m.Variable("h", 1);
  const Expression level = Function(Operation::kMax, h, m.Number(0));
  m.SetDerivative(h, -Function(Operation::kSqrt, level));
  Begin(m.Finished());
  EXPECT_NEAR(NextSwitch().time.ToDouble(), 2, 1e-15);
  EXPECT_TRUE(run->Latest().states[0].IsZero());
  while (run->Latest().IsBehind(Moment(Rational(10)))) run->Step();
  EXPECT_TRUE(run->Latest().states[0].IsZero());
}

// y' = sqrt(max(1 - t, 0)) from 0 goes on from the branch point at 1 with 2/3.
TEST_F(PiecewiseRunTest, LandsOnABranchPointThatSwitchesItsBranchOff)
{
  Equations m;
  const Expression y = m.Variable("y", 0);
  const Expression rest = Function(Operation::kMax, m.Number(1) - m.Time(), m.Number(0));
  m.SetDerivative(y, Function(Operation::kSqrt, rest));
  Begin(m.Finished());
  EXPECT_EQ(NextSwitch().time, Moment(Rational(1)));
  EXPECT_NEAR(run->Latest().states[0].ToDouble(), 2.0 / 3, 1e-15);
  while (run->Latest().IsBehind(Moment(Rational(10)))) run->Step();
}

// sign(x + 1) with x = cos t: x touches -1 at pi and does not cross it.
TEST_F(PiecewiseRunTest, DoesNotSwitchWhereAConditionTouchesItsLimit)
{
  Equations m;
  const Expression x = m.Variable("x", 1), v = m.Variable("v", 0), y = m.Variable("y", 0);
  m.SetDerivative(x, v);
  m.SetDerivative(v, -x);
  m.SetDerivative(y, Function(Operation::kSign, x + Rational(1)));
  Begin(m.Finished());
  while (run->Latest().IsBehind(Moment(Rational(10)))) {
    run->Step();
    EXPECT_EQ(run->Latest().switched, nullptr);
  }
  EXPECT_NEAR(run->Latest().StatesAt(Moment(Rational(10)))[2].ToDouble(), 10, 1e-15);
}

}  // namespace
}  // namespace varno::solve
