// Lines that count as constants where that has no effect, and only there.

#include "solve/integration/exemption.h"

#include <cmath>
#include <string>

#include <gtest/gtest.h>

#include "solve/integration/run.h"
#include "solve/number/exponent_range.h"
#include "solve/tape/compile.h"
#include "tests/solve/support/comparison.h"
#include "tests/solve/support/equations.h"
#include "tests/solve/support/integration.h"

namespace varno::solve {
namespace {

using support::Arrival;
using support::Equations;
using support::Expression;
using support::Function;
using support::HasDigits;
using support::Integrate;
using support::Power;

/// exp(-(t - centre)^2)
Expression Pulse(Equations& m, const Rational& centre, const Rational& steepness = 1)
{
  return Function(Operation::kExp, -Power(steepness * (m.Time() - centre), 2));
}

const double kRootOfPi = std::sqrt(std::acos(-1));

double RelativeError(const Real& actual, double expected)
{
  return std::abs(actual.ToDouble() / expected - 1);
}

// ---------------------------------------------------------------------------------------------
// Steps

// x(100) = 1 to all digits; the pulse is crossed by some 75 steps, of 3170 without exemption.
TEST(Exemption, SystemAtRestWaitsForAPulse)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, 1 - x + Pulse(m, 50));
  const Arrival arrival = Integrate(m.Finished(), 0, 100, 15);
  EXPECT_EQ(1, arrival.states[0].ToDouble());
  EXPECT_LE(arrival.steps, 125);
}

TEST(Exemption, PulsesFarApart)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, 1 - x + Pulse(m, 50) + Pulse(m, 5000));
  const Arrival arrival = Integrate(m.Finished(), 0, 5002, 15);
  const double expected = 1 + std::exp(0.25 - 2) * kRootOfPi / 2 * (std::erf(1.5) + 1);
  EXPECT_LE(RelativeError(arrival.states[0], expected), 1e-15);
  EXPECT_LE(arrival.steps, 800);
}

TEST(Exemption, Backwards)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, Pulse(m, -5, 10));
  const Arrival arrival = Integrate(m.Finished(), 0, -10, 15);
  EXPECT_LE(RelativeError(arrival.states[0], 1 - kRootOfPi / 10), 1e-15);
  EXPECT_LE(arrival.steps, 100);
}

// The integral passes the roots of sin^40 in steps that do not shrink with the distance.
TEST(Exemption, RootsOfHighOrderDoNotShortenSteps)
{
  Equations m;
  m.SetDerivative(m.Variable("y", 0), Power(Function(Operation::kSin, m.Time()), 40));
  const Arrival arrival = Integrate(m.Finished(), 0, 10, 15);
  EXPECT_LE(RelativeError(arrival.states[0], 1.18159089360392951), 1e-14);  // quadrature by mpmath
  EXPECT_LE(arrival.steps, 220);
}

/// function(steepness (u - 2))
Expression Switch(Operation function, Expression u, long steepness = 10000)
{
  return Function(function, steepness * (u - 2));
}

// At t = 3 what is beyond the switch has made good for as much before it: -1 is left. Without
// exemption it takes half a million steps by tanh and as many millions by erf.
TEST(Exemption, FunctionsRestFarFromTheirSwitch)
{
  for (const Operation function : {Operation::kTanh, Operation::kErf}) {
    for (const bool backwards : {false, true}) {
      Equations m;
      const int direction = backwards ? -1 : 1;
      m.SetDerivative(m.Variable("y", 0),
                      Rational(direction) * Switch(function, Rational(direction) * m.Time()));
      const Arrival arrival = Integrate(m.Finished(), 0, 3 * direction, 15);
      EXPECT_LE(RelativeError(arrival.states[0], -1), 1e-15) << FunctionName(function);
      EXPECT_LE(arrival.steps, 250) << FunctionName(function);
    }
  }
}

// The switch depends on a state, and feeds another one that decays:
// y = exp(-2) - 1 at t = 2, but for 1/200 of the width of the switch, pi^2/24 10^-8.
TEST(Exemption, SwitchesOfStates)
{
  Equations m;
  const Expression x = m.Variable("x", 0), y = m.Variable("y", 0);
  m.SetDerivative(x, m.Number(1));
  m.SetDerivative(y, -y + Switch(Operation::kTanh, x));
  const Arrival arrival = Integrate(m.Finished(), 0, 4, 15);
  // exp(-4) (integral of exp(s) tanh(10^4 (s - 2)) from 0 to 4) by mpmath
  EXPECT_LE(RelativeError(arrival.states[1], 0.747645071302420704089), 1e-15);
  EXPECT_LE(arrival.steps, 300);
}

// What is zero, what is held and what moves: a pulse, a switch, a harmonic.
TEST(Exemption, PulsesBesideSwitches)
{
  Equations m;
  const Expression y = m.Variable("y", 0);
  m.SetDerivative(y, Switch(Operation::kErf, m.Time()) + Pulse(m, 1, 10000) +
                         Function(Operation::kCos, m.Time()));
  const Arrival arrival = Integrate(m.Finished(), 0, 3, 15);
  EXPECT_LE(RelativeError(arrival.states[0], -1 + kRootOfPi / 10000 + std::sin(3)), 1e-15);
  EXPECT_LE(arrival.steps, 700);
}

// ---------------------------------------------------------------------------------------------
// What must not be lost

// Where the state is 0 the pulse is all there is: x(1) = integral of exp(s - 1 - (s - 6)^2), from
// 0 to 1.
TEST(Exemption, TinyIsNotNothing)
{
  Equations m;
  const Expression x = m.Variable("x", 0);
  m.SetDerivative(x, -x + Pulse(m, 6));
  // by mpmath
  EXPECT_LE(RelativeError(Integrate(m.Finished(), 0, 1, 15).states[0], 1.24262334919295717235e-12),
            1e-15);
}

// A factor that grows by exp(150) until the pulse comes: the integral of exp(3 t - (t - 50)^2) is
// exp(150 + 9/4) sqrt(pi).
TEST(Exemption, PulseTimesAGrowingState)
{
  Equations m;
  const Expression x = m.Variable("x", 1), z = m.Variable("z", 1);
  m.SetDerivative(x, z * Pulse(m, 50));
  m.SetDerivative(z, 3 * z);
  EXPECT_LE(
      RelativeError(Integrate(m.Finished(), 0, 70, 15).states[0], std::exp(152.25) * kRootOfPi),
      1e-13);  // what exp loses in double precision
}

// Inside of functions and roots: sin and atan of the pulse in the middle of other terms.
TEST(Exemption, PulseInsideFunctions)
{
  for (const Operation function :
       {Operation::kSin, Operation::kAtan, Operation::kTanh, Operation::kErf, Operation::kAsinh}) {
    Equations with, alone;
    const Expression x = with.Variable("x", 1), y = alone.Variable("y", 1);
    with.SetDerivative(x, Function(function, Pulse(with, 8, 3)));
    // The same, beginning where the pulse is not small any more.
    alone.SetDerivative(y, Function(function, Pulse(alone, 0, 3)));
    EXPECT_TRUE(HasDigits(15, Integrate(with.Finished(), 0, 16, 15).states[0],
                          Integrate(alone.Finished(), -3, 3, 15).states[0]))
        << FunctionName(function);
  }
}

// Where each line alone lies just below the tolerance all of them together do not.
TEST(Exemption, ManyLinesTogether)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  Expression sum = m.Number(0);
  for (int i = 0; i < 40; ++i) sum = sum + Pulse(m, 50 + Rational(i, 1000));
  m.SetDerivative(x, 1 - x + sum);
  double expected = 1;
  for (int i = 0; i < 40; ++i) {
    const double centre = 50 + i / 1000.0;
    expected += std::exp(0.25 - (52 - centre)) * kRootOfPi / 2 * (std::erf(52 - centre - 0.5) + 1);
  }
  EXPECT_LE(RelativeError(Integrate(m.Finished(), 0, 52, 15).states[0], expected), 1e-14);
}

// ---------------------------------------------------------------------------------------------
// An exemption is an error

// From x(0) = 1, where the one variable would rest.
void ExpectRunsLeaveOneToEitherSide(const Equations& m)
{
  const Tape tape = Compile(m.Finished());
  RunSettings settings = SettingsFor(20, 20);
  Real one(settings.bits);
  mpfr_set_ui(one, 1, MPFR_RNDN);
  for (const bool disturbed : {false, true}) {
    settings.disturbed = disturbed;
    solve::Run run(tape, settings, Moment(Rational(0)), {one}, Moment(Rational(4)));
    run.Step();
    Real moved = run.StatesAt(run.End())[0];
    mpfr_sub_ui(moved, moved, 1, MPFR_RNDN);
    EXPECT_EQ(disturbed ? 1 : -1, mpfr_sgn(static_cast<mpfr_srcptr>(moved)));
    EXPECT_LT(support::Log2(moved), -settings.toleranceBits);
  }
}

// x rests at 1, an unstable place: both runs leave it to either side, by no more than the
// tolerance.
TEST(Exemption, RunsMoveByItsBoundToEitherSide)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, x - 1 + Pulse(m, 50, 100));
  ExpectRunsLeaveOneToEitherSide(m);
}

// The same at rest beside a function that is held: x = 1 is none of x' = x + tanh(100 (t - 2)),
// which leaves it by exp(-400), and each run by what it may be wrong by.
TEST(Exemption, RunsMoveByBoundsOfHeldFunctions)
{
  Equations m;
  const Expression x = m.Variable("x", 1);
  m.SetDerivative(x, x + Switch(Operation::kTanh, m.Time(), 100));
  ExpectRunsLeaveOneToEitherSide(m);
}

// Over thousands of exempt steps the errors stay where those of the steps are: cos t beside a pulse
// that never comes.
TEST(Exemption, ErrorsDoNotAddUp)
{
  const ScopedExponentRange range;  // the pulse begins with exp(-10^12)
  Equations m;
  const Expression x = m.Variable("x", 1), v = m.Variable("v", 0);
  m.SetDerivative(x, v);
  m.SetDerivative(v, -x + Pulse(m, 1000000));
  const Arrival arrival = Integrate(m.Finished(), 0, 3000, 15);
  Real expected(200);
  mpfr_set_ui(expected, 3000, MPFR_RNDN);
  mpfr_cos(expected, expected, MPFR_RNDN);
  EXPECT_TRUE(HasDigits(17, arrival.states[0], expected));
  EXPECT_LE(arrival.steps, 4000);
}

}  // namespace
}  // namespace varno::solve
