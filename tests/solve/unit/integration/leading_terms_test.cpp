#include "solve/integration/leading_terms.h"

#include <gtest/gtest.h>

#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;
using support::Function;
using support::Power;

/// Of the right-hand side of y' = ..., at t = 0, from terms up to t^3.
template <class RightHandSide>
std::optional<int> LeadingTerm(RightHandSide rightHandSide)
{
  const Tape tape = Compile(support::Quadrature(rightHandSide));
  const auto series = MakeSeries(tape, 100, 3);
  const std::vector<Real> states(tape.rightHandSides.size());
  series->Begin(Real(2), states, false, 0);
  series->ExtendTo(3);
  return LeadingTerms(tape, *series)[tape.rightHandSides[0]];
}

Expression Sin(Equations& m)
{
  return Function(Operation::kSin, m.Time());
}

TEST(LeadingTerms, AreShownOrFollowFromOperands)
{
  EXPECT_EQ(0, LeadingTerm([](Equations& m) { return Function(Operation::kCos, m.Time()); }));
  EXPECT_EQ(3, LeadingTerm([](Equations& m) { return Power(Sin(m), 3); }));
  EXPECT_EQ(1000, LeadingTerm([](Equations& m) { return Power(Sin(m), 1000); }));
  EXPECT_EQ(37, LeadingTerm([](Equations& m) { return Power(Sin(m), 37) / (1 + m.Time()); }));
  EXPECT_EQ(
      37, LeadingTerm([](Equations& m) { return Function(Operation::kAtan, Power(Sin(m), 37)); }));
  EXPECT_EQ(30, LeadingTerm([](Equations& m) { return Power(Sin(m), 40) + Power(Sin(m), 30); }));
}

// Terms of the same order may cancel; beyond a root nothing is known.
TEST(LeadingTerms, AreLeftOpen)
{
  EXPECT_EQ(std::nullopt, LeadingTerm([](Equations& m) {
              return Power(Sin(m), 40) - Power(Sin(m) * (1 + m.Time()), 40);
            }));
  EXPECT_EQ(std::nullopt, LeadingTerm([](Equations& m) { return 0 * m.Time() * Sin(m); }));
}

// y' = (x exp x)^50 with x = t: y begins with t^51.
TEST(LeadingTerms, StatesBeginOneLater)
{
  Equations m;
  const Expression x = m.Variable("x", 0), y = m.Variable("y", 0);
  m.SetDerivative(x, m.Number(1));
  m.SetDerivative(y, Power(x * Function(Operation::kExp, x), 50));
  const Tape tape = Compile(m.Finished());
  const auto series = MakeSeries(tape, 100, 3);
  series->Begin(Real(2), std::vector<Real>(2), false, 0);
  series->ExtendTo(3);
  EXPECT_EQ(51, LeadingTerms(tape, *series)[1]);
}

}  // namespace
}  // namespace varno::solve
