// Bounds of what held lines do to a solution, against closed forms.

#include "solve/enclosure/tube.h"

#include <cmath>

#include <gtest/gtest.h>

#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;
using support::Function;

constexpr mpfr_prec_t kBits = 100;

/// The deviation over a step of a model's tape from its start values, rational numbers, at t = 0,
/// with every line of a function held.
std::optional<Deviation> Over(const Equations& equations, double length,
                              const std::vector<double>& start, bool backwards = false,
                              Operation function = Operation::kExp, double constant = 0)
{
  const Tape tape = Compile(equations.Finished());
  const LineRanges lines(tape, kBits);
  TubeStep step{Range(kBits), Range(kBits), {}, backwards};
  mpfi_interv_d(step.time, backwards ? -length : 0, backwards ? 0 : length);
  mpfi_set_d(step.length, length);
  for (const double value : start) {
    Range& state = step.start.emplace_back(kBits);
    mpfi_set_d(state, value);
  }
  HeldLines held;
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    const Line& line = tape.lines[id];
    if (line.function != function) continue;
    if (line.kind != LineKind::kIntegralOfProduct && line.kind != LineKind::kIntegralOfQuotient)
      continue;
    mpfr_set_d(held.try_emplace(id, kBits).first->second, constant, MPFR_RNDN);
  }
  return DeviationOver(tape, lines, step, held);
}

/// A line exp(u) with u = t - 20, between exp(-20) and exp(h - 20).
Expression Rising(Equations& m)
{
  return Function(Operation::kExp, m.Time() - 20);
}

// x' = 1 - x + e: solutions approach one another, so that the difference stays below the largest e,
// for steps of any length.
TEST(Tube, SolutionsThatApproachEachOther)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, 1 - x + Rising(m));
  const auto deviation = Over(m, 10, {1});
  ASSERT_TRUE(deviation);
  // exactly: exp(-20) (exp(10) - exp(-10)) / 2
  const double exact = std::exp(-20) * std::sinh(10), bound = deviation->states[0].ToDouble();
  EXPECT_LE(exact, bound);
  EXPECT_LE(bound, 2.01 * exact);
  EXPECT_NEAR(std::exp(-10), deviation->rightHandSides[0].ToDouble(), 1e-12);
}

// x' = x + e: what the line adds at the start has grown by exp(h) at the end.
TEST(Tube, UnstableDirectionsEnlargeTheDeviation)
{
  for (const bool backwards : {false, true}) {
    Equations m;
    const Expression x = m.Variable("x", 0);
    const Expression speed =
        x + Function(Operation::kExp, backwards ? m.Time() - 20 : -m.Time() - 20);
    m.SetDerivative(x, backwards ? -speed : speed);
    const auto deviation = Over(m, 8, {0}, backwards);
    ASSERT_TRUE(deviation);
    // exactly: exp(-20) sinh 8
    const double exact = std::exp(-20) * std::sinh(8), bound = deviation->states[0].ToDouble();
    EXPECT_LE(exact, bound);
    EXPECT_LE(bound, 2.01 * exact);
  }
}

// The line reaches y through x only, y' = 10^20 x: half of h^2 e 10^20.
TEST(Tube, DeviationsReachOtherStates)
{
  Equations m;
  const Expression x = m.Variable("x", 1), y = m.Variable("y", 0);
  const Rational large("100000000000000000000");
  m.SetDerivative(x, Rising(m));
  m.SetDerivative(y, large * x);
  const auto deviation = Over(m, 1, {1, 0});
  ASSERT_TRUE(deviation);
  EXPECT_GE(deviation->states[1].ToDouble(), 1e20 * std::exp(-20) * (std::exp(1) - 2));
  EXPECT_LE(deviation->states[1].ToDouble(), 1e20 * std::exp(-19) * 10);
  EXPECT_TRUE(deviation->rightHandSides[1].IsZero());
}

// The line multiplies a state that grows meanwhile: z = exp(3 t), times e.
TEST(Tube, FactorsCountWhereTheyAreLargest)
{
  Equations m;
  const Expression x = m.Variable("x", 1), z = m.Variable("z", 1);
  m.SetDerivative(x, z * Rising(m));
  m.SetDerivative(z, 3 * z);
  const auto deviation = Over(m, 1, {1, 1});
  ASSERT_TRUE(deviation);
  // exactly: exp(-20) (exp(4) - 1) / 4
  EXPECT_GE(deviation->states[0].ToDouble(), std::exp(-20) * (std::exp(4) - 1) / 4);
  EXPECT_LE(deviation->states[0].ToDouble(), std::exp(-20) * std::exp(4) * 10);
  EXPECT_TRUE(deviation->states[1].IsZero());
}

// x' = 1 - x + tanh(t - 20) with tanh held at -1 + 2^-50: what counts is how far it goes from that.
TEST(Tube, LinesHeldAtAConstantCountByTheirDistanceFromIt)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, 1 - x + Function(Operation::kTanh, m.Time() - 20));
  const double distance = std::exp2(-50);
  const auto deviation = Over(m, 10, {0}, false, Operation::kTanh, -1 + distance);
  ASSERT_TRUE(deviation);
  // 1 + tanh(-10) at the end
  const double expected = 2 / (1 + std::exp(20)) - distance;
  EXPECT_NEAR(expected, deviation->rightHandSides[0].ToDouble(), 1e-6 * expected);
  EXPECT_LE(deviation->states[0].ToDouble(), 1.01 * expected);
  // the integral of exp(s - 10) (1 + tanh(s - 20)), with 1 + tanh(u) = 2 exp(2 u) but for a part in
  // exp(20)
  EXPECT_GE(deviation->states[0].ToDouble(), 2.0 / 3 * std::exp(-20) * 0.999);
}

// Two lines together: both count.
TEST(Tube, LinesAddUp)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, Rising(m) + Function(Operation::kExp, 2 * m.Time() - 20));
  const auto deviation = Over(m, 1, {1});
  ASSERT_TRUE(deviation);
  EXPECT_NEAR(std::exp(-19) + std::exp(-18), deviation->states[0].ToDouble(), 1e-12);
}

// x' = x^2 from 1 has its pole at 1: no box holds it, and none that ends shortly before.
TEST(Tube, NoBoxHoldsAPole)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, x * x + Rising(m));
  EXPECT_FALSE(Over(m, 1, {1}));
  EXPECT_TRUE(Over(m, 0.0625, {1}));
}

}  // namespace
}  // namespace varno::solve
