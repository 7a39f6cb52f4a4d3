// Steps from and onto places without Taylor series, against closed forms.

#include "solve/integration/edge_leap.h"

#include <cmath>

#include <gtest/gtest.h>

#include "solve/evaluation/size.h"
#include "solve/tape/compile.h"
#include "tests/solve/support/equations.h"
#include "tests/solve/support/integration.h"

namespace varno::solve {
namespace {

using support::Arrival;
using support::Equations;
using support::Expression;
using support::Function;
using support::Integrate;
using support::Power;

constexpr mpfr_prec_t kBits = 200;

double RelativeError(const Real& actual, double expected)
{
  return std::abs(actual.ToDouble() / expected - 1);
}

/// The leap from t = 1, where these lines of a tape are 0, for a way of 1 ahead.
std::optional<Exemption> FromOne(const Model& model, bool backwards = false)
{
  const Tape tape = Compile(model);
  const LineRanges lines(tape, kBits);
  std::vector<LineId> zeroLines;
  for (const Line& line : tape.lines) {
    if (line.kind == LineKind::kSquareRoot || line.kind == LineKind::kPower)
      zeroLines.push_back(line.a);
    if (line.kind == LineKind::kQuotient) zeroLines.push_back(line.b);
  }
  Real one(kBits);
  mpfr_set_ui(one, 1, MPFR_RNDN);
  const std::vector<Real> states(tape.rightHandSides.size(), Real(kBits));
  return LeapFromEdge(tape, lines, SettingsFor(20, 20), {one, states, backwards, 0, 0}, zeroLines);
}

template <class RightHandSide>
std::optional<Exemption> FromOneFor(RightHandSide f, bool backwards = false)
{
  return FromOne(support::Quadrature([&](Equations& m) { return f(m.Time() - 1); }), backwards);
}

// The integral of sqrt(t - 1) over a step h is 2/3 h^1.5, at most a sixteenth of the tolerance
// beside that over the whole way; sqrt(h)/2, at which the root is held, is off by as much.
TEST(EdgeLeap, BoundsARoot)
{
  const auto leap = FromOneFor([](Expression u) { return Function(Operation::kSqrt, u); });
  ASSERT_TRUE(leap);
  ASSERT_EQ(1U, leap->held.size());
  const double root = std::exp2(leap->longestLog2 / 2),
               constant = leap->held.begin()->second.ToDouble();
  EXPECT_NEAR(0.5, constant / root, 1e-9);
  const double bound = Log2Size(leap->deviation.states[0]);
  EXPECT_GE(bound, 1.5 * leap->longestLog2 - 1 - 1e-9);
  EXPECT_LE(bound, leap->leastSizes[0] - SettingsFor(20, 20).toleranceBits - 4);
  EXPECT_GE(bound, leap->leastSizes[0] - SettingsFor(20, 20).toleranceBits - 5);
  EXPECT_LE(std::abs(leap->leastSizes[0]), 2);
}

TEST(EdgeLeap, GoesBackwards)
{
  const auto root = [](Expression u) { return Function(Operation::kSqrt, -u); };
  EXPECT_TRUE(FromOneFor(root, true));
}

// exp(-1/u) is held, not -1/u, which is unbounded.
TEST(EdgeLeap, HoldsTheLowestBoundedLine)
{
  const auto leap =
      FromOneFor([](Expression u) { return Function(Operation::kExp, Rational(-1) / u); });
  ASSERT_TRUE(leap);
  ASSERT_EQ(1U, leap->held.size());
  EXPECT_GT(leap->longestLog2, -8);
}

// Neither what oscillates, nor what is unbounded, nor a radicand that comes back to 0 on the way.
TEST(EdgeLeap, FindsNoneWithoutALimit)
{
  EXPECT_FALSE(FromOneFor([](Expression u) { return Function(Operation::kSin, Rational(1) / u); }));
  EXPECT_FALSE(
      FromOneFor([](Expression u) { return Rational(1) / Function(Operation::kSqrt, u); }));
  EXPECT_FALSE(FromOneFor([](Expression u) { return Function(Operation::kSqrt, u * u * u); }));
  // The radicand is 1/8 at the start.
  EXPECT_FALSE(
      FromOneFor([](Expression u) { return Function(Operation::kSqrt, u + Rational(1, 8)); }));
}

// The solution need not be unique where a state is 0.
TEST(EdgeLeap, FindsNoneForStates)
{
  Equations m;
  const Expression y = m.Variable("y", 0);
  m.SetDerivative(y, Function(Operation::kSqrt, y + m.Time() - 1));
  EXPECT_FALSE(FromOne(m.Finished()));
}

// y' = t^e from 0 to 2, the roots of several kinds
TEST(EdgeLeap, IntegratesPowersFromTheirRoot)
{
  for (const Rational& exponent :
       {Rational(1, 2), Rational(1, 3), Rational(1, 10), Rational(5, 2)}) {
    const Model model =
        support::Quadrature([&](Equations& m) { return Power(m.Time(), exponent); });
    const double power = exponent.get_d() + 1;
    EXPECT_LE(RelativeError(Integrate(model, 0, 2, 15).states[0], std::pow(2, power) / power),
              1e-15)
        << exponent.get_str();
  }
}

// Beside other states: y' = -y + sqrt(t), z' = y.
TEST(EdgeLeap, IntegratesBesideStates)
{
  Equations m;
  const Expression y = m.Variable("y", 1), z = m.Variable("z", 0);
  m.SetDerivative(y, -y + Function(Operation::kSqrt, m.Time()));
  m.SetDerivative(z, y);
  const Arrival arrival = Integrate(m.Finished(), 0, 1, 15);
  // by mpmath: quad(lambda s: exp(s-1)*sqrt(s), [0, 1]) + exp(-1), and 1 + 2/3 less that
  EXPECT_LE(RelativeError(arrival.states[0], 0.82979993425867390246), 1e-15);
  EXPECT_LE(RelativeError(arrival.states[1], 0.83686673240799276421), 1e-15);
}

}  // namespace
}  // namespace varno::solve
