// Solutions against closed forms by MPFR, and special functions by mpmath, at 15, 50 and 300
// digits.

#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "solve/evaluation/elementary.h"
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
using enum Operation;

/// Enough for 300 digits.
constexpr mpfr_prec_t kBits = 1200;

// Closed forms are written with these.
Real Exactly(const Rational& value)
{
  Real result(kBits);
  mpfr_set_q(result, value.get_mpq_t(), MPFR_RNDN);
  return result;
}

Real Of(Operation operation, const Real& a, const Real& b = Real())
{
  Real result(kBits);
  EXPECT_EQ(Outcome::kValue, Apply(operation, result, a, b));
  return result;
}

Real operator+(const Real& a, const Real& b)
{
  return Of(kAdd, a, b);
}
Real operator-(const Real& a, const Real& b)
{
  return Of(kSubtract, a, b);
}
Real operator*(const Real& a, const Real& b)
{
  return Of(kMultiply, a, b);
}
Real operator/(const Real& a, const Real& b)
{
  return Of(kDivide, a, b);
}
Real operator*(const Rational& a, const Real& b)
{
  return Exactly(a) * b;
}
Real operator+(const Rational& a, const Real& b)
{
  return Exactly(a) + b;
}
Real operator-(const Rational& a, const Real& b)
{
  return Exactly(a) - b;
}

class ClosedForms : public testing::TestWithParam<int> {
 protected:
  int Digits() const { return GetParam(); }
  std::vector<Real> Solve(const Equations& equations, const Rational& to,
                          const Rational& from = 0) const
  {
    return Integrate(equations.Finished(), from, to, Digits()).states;
  }
};

INSTANTIATE_TEST_SUITE_P(Digits, ClosedForms, testing::Values(15, 50, 300),
                         testing::PrintToStringParamName());

/// Those that would take minutes at 300 digits.
class LongClosedForms : public ClosedForms {};

INSTANTIATE_TEST_SUITE_P(Digits, LongClosedForms, testing::Values(15, 50),
                         testing::PrintToStringParamName());

// ---------------------------------------------------------------------------------------------
// Linear equations

TEST_P(ClosedForms, Exponential)
{
  Equations m;
  const Expression x = m.Variable("x", 3);
  m.SetDerivative(x, -2 * x);
  for (const Rational& t : {Rational(5), Rational(-5), Rational(1, 1000)}) {
    EXPECT_TRUE(HasDigits(Digits(), Solve(m, t)[0], Rational(3) * Of(kExp, Exactly(-2 * t)))) << t;
  }
}

TEST_P(ClosedForms, Oscillator)
{
  Equations m;
  const Expression x = m.Variable("x", 1), v = m.Variable("v", 0);
  m.SetDerivative(x, v);
  m.SetDerivative(v, -x);
  for (const Rational& t : {Rational(20), Rational(-20)}) {
    const auto states = Solve(m, t);
    EXPECT_TRUE(HasDigits(Digits(), states[0], Of(kCos, Exactly(t))));
    EXPECT_TRUE(HasDigits(Digits(), states[1], Rational(-1) * Of(kSin, Exactly(t))));
  }
}

// x'' = -2x - 2x' has the solution exp(-t) (cos t + sin t).
TEST_P(ClosedForms, DampedOscillator)
{
  Equations m;
  const Expression x = m.Variable("x", 1), v = m.Variable("v", 0);
  m.SetDerivative(x, v);
  m.SetDerivative(v, -2 * x - 2 * v);
  for (const Rational& t : {Rational(4), Rational(-4)}) {
    const Real expected = Of(kExp, Exactly(-t)) * (Of(kCos, Exactly(t)) + Of(kSin, Exactly(t)));
    EXPECT_TRUE(HasDigits(Digits(), Solve(m, t)[0], expected));
  }
}

// Eigenvalues 3 and -1: x = (exp 3t + exp -t)/2, y = (exp 3t - exp -t)/2
TEST_P(ClosedForms, SaddleWithBothDirections)
{
  Equations m;
  const Expression x = m.Variable("x", 1), y = m.Variable("y", 0);
  m.SetDerivative(x, x + 2 * y);
  m.SetDerivative(y, 2 * x + y);
  const auto states = Solve(m, 2);
  const Real up = Of(kExp, Exactly(6)), down = Of(kExp, Exactly(-2));
  EXPECT_TRUE(HasDigits(Digits(), states[0], Rational(1, 2) * (up + down)));
  EXPECT_TRUE(HasDigits(Digits(), states[1], Rational(1, 2) * (up - down)));
}

TEST_P(ClosedForms, ComponentsFortyOrdersApart)
{
  Equations m;
  const Expression x = m.Variable("x", 1), v = m.Variable("v", 0), y = m.Variable("y", 0),
                   z = m.Variable("z", 0);
  const Rational tiny = 1 / Rational("10000000000000000000000000000000000000000");
  m.SetDerivative(x, v);
  m.SetDerivative(v, -x);
  m.SetDerivative(y, tiny * x);
  m.SetDerivative(z, y / (tiny * tiny));
  const auto states = Solve(m, 3);
  EXPECT_TRUE(HasDigits(Digits(), states[2], tiny * Of(kSin, Exactly(3))));
  EXPECT_TRUE(HasDigits(Digits(), states[3], (1 / tiny) * (Rational(1) - Of(kCos, Exactly(3)))));
}

// ---------------------------------------------------------------------------------------------
// Rational and polynomial solutions

TEST_P(ClosedForms, Logistic)
{
  Equations m;
  const Expression x = m.Variable("x", Rational(1, 10));
  m.SetDerivative(x, x * (1 - x));
  for (const Rational& t : {Rational(5), Rational(-5)}) {
    EXPECT_TRUE(HasDigits(Digits(), Solve(m, t)[0],
                          Exactly(1) / (Rational(1) + Rational(9) * Of(kExp, Exactly(-t)))));
  }
}

// y' = y^2 has the solution 1/(1 - t).
TEST_P(ClosedForms, HyperbolaNearItsPole)
{
  Equations m;
  const Expression y = m.Variable("y", 1);
  m.SetDerivative(y, y * y);
  EXPECT_TRUE(HasDigits(Digits(), Solve(m, Rational(9, 10))[0], Exactly(10)));
  EXPECT_TRUE(HasDigits(Digits(), Solve(m, -9)[0], Exactly(Rational(1, 10))));
}

// y' = -2 t y^2 has the solution 1/(1 + t^2), with poles at +-i beside the way.
TEST_P(ClosedForms, WitchOfAgnesi)
{
  Equations m;
  const Expression y = m.Variable("y", Rational(1, 10));
  m.SetDerivative(y, -2 * m.Time() * y * y);
  EXPECT_TRUE(HasDigits(Digits(), Solve(m, 3, -3)[0], Exactly(Rational(1, 10))));
  EXPECT_TRUE(HasDigits(Digits(), Solve(m, Rational(-1, 3), -3)[0], Exactly(Rational(9, 10))));
}

// The thrown stone: x = 100 + 20 t - 5 t^2
TEST_P(ClosedForms, PolynomialTakesOneStep)
{
  Equations m;
  const Expression x = m.Variable("x", 100), v = m.Variable("v", 20);
  m.SetDerivative(x, v);
  m.SetDerivative(v, m.Number(-10));
  const Arrival arrival = Integrate(m.Finished(), 0, 7, Digits());
  EXPECT_TRUE(HasDigits(1000, arrival.states[0], Exactly(-5)));
  EXPECT_EQ(1, arrival.steps);
}

TEST_P(ClosedForms, ZeroSolutionStaysExactly)
{
  Equations m;
  const Expression x = m.Variable("x", 0), y = m.Variable("y", 0);
  m.SetDerivative(x, x * y + Function(kSin, x));
  m.SetDerivative(y, Function(kExp, x) * y);
  for (const Real& state : Solve(m, 100)) EXPECT_TRUE(state.IsZero());
}

// ---------------------------------------------------------------------------------------------
// Functions of t alone

TEST_P(ClosedForms, Quadratures)
{
  struct Integral {
    const char* name;
    Expression (*derivative)(Equations& m);
    Real (*value)(const Rational& t);
  };
  const Integral integrals[] = {
      {"sin", [](Equations& m) { return Function(kCos, m.Time()); },
       [](const Rational& t) { return Of(kSin, Exactly(t)); }},
      {"atan", [](Equations& m) { return 1 / (1 + m.Time() * m.Time()); },
       [](const Rational& t) { return Of(kAtan, Exactly(t)); }},
      {"asinh", [](Equations& m) { return 1 / Function(kSqrt, 1 + m.Time() * m.Time()); },
       [](const Rational& t) { return Of(kAsinh, Exactly(t)); }},
      {"erf",
       [](Equations& m) {
         return 2 / Function(kSqrt, m.Pi()) * Function(kExp, -(m.Time() * m.Time()));
       },
       [](const Rational& t) { return Of(kErf, Exactly(t)); }},
      {"exp(sin t)",
       [](Equations& m) {
         return Function(kCos, m.Time()) * Function(kExp, Function(kSin, m.Time()));
       },
       [](const Rational& t) { return Of(kExp, Of(kSin, Exactly(t))) - Exactly(1); }},
      {"t atan t - ln(1 + t^2)/2", [](Equations& m) { return Function(kAtan, m.Time()); },
       [](const Rational& t) {
         return t * Of(kAtan, Exactly(t)) - Rational(1, 2) * Of(kLn, Exactly(1 + t * t));
       }},
  };
  for (const Integral& integral : integrals) {
    Equations m;
    m.SetDerivative(m.Variable("y", 0), integral.derivative(m));
    for (const Rational& t : {Rational(31, 10), Rational(-31, 10)}) {
      EXPECT_TRUE(HasDigits(Digits(), Solve(m, t)[0], integral.value(t)))
          << integral.name << " at " << t;
    }
  }
}

TEST_P(ClosedForms, DistantStart)
{
  const Rational start("1000000000000000000000000000000");
  Equations m;
  m.SetDerivative(m.Variable("y", 0), Function(kCos, m.Time()));
  m.SetDerivative(m.Variable("z", 0), 1 / (1 + Power(m.Time() - start, 2)));
  const auto states = Solve(m, start + 2, start);
  EXPECT_TRUE(
      HasDigits(Digits(), states[0], Of(kSin, Exactly(start + 2)) - Of(kSin, Exactly(start))));
  EXPECT_TRUE(HasDigits(Digits(), states[1], Of(kAtan, Exactly(2))));
}

// ---------------------------------------------------------------------------------------------
// Symmetric solutions, of which terms are missing in blocks

// x = sin(t^m), v = cos(t^m) begin where only each m-th term, or each 2m-th, is not 0.
TEST_P(LongClosedForms, TermsMissingInBlocks)
{
  for (const int m : {2, 3, 4, 8, 16, 32}) {
    Equations equations;
    const Expression x = equations.Variable("x", 0), v = equations.Variable("v", 1);
    const Expression speed = m * Power(equations.Time(), m - 1);
    equations.SetDerivative(x, speed * v);
    equations.SetDerivative(v, -(speed * x));
    for (const Rational& t : {Rational(11, 10), Rational(-11, 10)}) {
      Real power(kBits);
      mpfr_pow_si(power, Exactly(t), m, MPFR_RNDN);
      const auto states = Solve(equations, t);
      EXPECT_TRUE(HasDigits(Digits(), states[0], Of(kSin, power))) << m << " at " << t;
      EXPECT_TRUE(HasDigits(Digits(), states[1], Of(kCos, power))) << m << " at " << t;
    }
  }
}

// The same without t in the equations, and as 1/(1 + t^m).
TEST_P(LongClosedForms, TermsMissingInBlocksOfAutonomousEquations)
{
  for (const int m : {2, 4, 8, 16, 32}) {
    Equations equations;
    const Expression s = equations.Variable("s", 0), y = equations.Variable("y", 1);
    equations.SetDerivative(s, equations.Number(1));
    equations.SetDerivative(y, -m * Power(s, m - 1) * y * y);
    for (const Rational& t : {Rational(6, 5), Rational(-6, 5)}) {
      Real power(kBits);
      mpfr_pow_si(power, Exactly(t), m, MPFR_RNDN);
      EXPECT_TRUE(HasDigits(Digits(), Solve(equations, t)[1], Exactly(1) / (Rational(1) + power)))
          << m << " at " << t;
    }
  }
}

// ---------------------------------------------------------------------------------------------
// Tiny and huge values

TEST_P(LongClosedForms, DecayOverThreeHundredOrders)
{
  Equations linear, bell;
  const Expression x = linear.Variable("x", 1), y = bell.Variable("y", 1);
  linear.SetDerivative(x, -x);
  bell.SetDerivative(y, -2 * bell.Time() * y);
  EXPECT_TRUE(HasDigits(Digits(), Solve(linear, 700)[0], Of(kExp, Exactly(-700))));
  EXPECT_TRUE(HasDigits(Digits(), Solve(bell, 27)[0], Of(kExp, Exactly(-729))));
}

TEST_P(LongClosedForms, TinyAndHugeStartValues)
{
  for (const int exponent : {-300, 300}) {
    Rational start(Integer("1" + std::string(300, '0')));
    if (exponent < 0) start = 1 / start;
    Equations m;
    const Expression x = m.Variable("x", start), y = m.Variable("y", start),
                     z = m.Variable("z", start);
    m.SetDerivative(x, -x);
    m.SetDerivative(y, -(y * y));
    m.SetDerivative(z, Function(kSqrt, z));
    const auto states = Solve(m, 2);
    EXPECT_TRUE(HasDigits(Digits(), states[0], start * Of(kExp, Exactly(-2)))) << exponent;
    EXPECT_TRUE(HasDigits(Digits(), states[1], Exactly(start / (1 + 2 * start)))) << exponent;
    // sqrt z = sqrt(start) + t/2; 10^300 and 10^-300 are squares.
    const Real root = Of(kSqrt, Exactly(start)) + Exactly(1);
    EXPECT_TRUE(HasDigits(Digits(), states[2], root * root)) << exponent;
  }
}

// ---------------------------------------------------------------------------------------------
// Special functions

const Real& Known(const std::string& name)
{
  static const std::map<std::string, Real> values = [] {
    std::map<std::string, Real> read;
    std::ifstream file(VARNO_TEST_DATA "/solutions.txt");
    for (std::string line; std::getline(file, line);) {
      if (line.starts_with('#')) continue;
      std::istringstream words(line);
      std::string found, value;
      words >> found >> value;
      read[found] = support::FromText(value, kBits);
    }
    return read;
  }();
  return values.at(name);
}

TEST_P(ClosedForms, RiccatiByAiryFunctions)
{
  Equations m;
  const Expression y = m.Variable("y", 0);
  m.SetDerivative(y, m.Time() - y * y);
  EXPECT_TRUE(HasDigits(Digits(), Solve(m, 2)[0], Known("airy_riccati(2)")));
  EXPECT_TRUE(HasDigits(Digits(), Solve(m, -1)[0], Known("airy_riccati(-1)")));
}

TEST_P(ClosedForms, RiccatiByBesselFunctions)
{
  Equations m;
  const Expression y = m.Variable("y", 0);
  m.SetDerivative(y, m.Time() * m.Time() + y * y);
  EXPECT_TRUE(HasDigits(Digits(), Solve(m, 1)[0], Known("bessel_riccati(1)")));
  EXPECT_TRUE(HasDigits(Digits(), Solve(m, Rational(15, 8))[0], Known("bessel_riccati(15/8)")));
}

// A free rigid body with moments of inertia 1, 2, 3 begins with angular velocities cn, sn, dn of
// parameter 1/3.
TEST_P(ClosedForms, RigidBodyByJacobiFunctions)
{
  Equations m;
  const Expression x = m.Variable("x", 1), y = m.Variable("y", 0), z = m.Variable("z", 1);
  m.SetDerivative(x, -(y * z));
  m.SetDerivative(y, z * x);
  m.SetDerivative(z, Rational(-1, 3) * x * y);
  const auto forwards = Solve(m, 7), backwards = Solve(m, -7);
  EXPECT_TRUE(HasDigits(Digits(), forwards[0], Known("cn(7|1/3)")));
  EXPECT_TRUE(HasDigits(Digits(), forwards[1], Known("sn(7|1/3)")));
  EXPECT_TRUE(HasDigits(Digits(), forwards[2], Known("dn(7|1/3)")));
  EXPECT_TRUE(HasDigits(Digits(), backwards[1], Rational(-1) * Known("sn(7|1/3)")));
}

TEST_P(ClosedForms, PendulumByJacobiFunctions)
{
  Equations m;
  const Expression a = m.Variable("a", 0), p = m.Variable("p", 1);
  m.SetDerivative(a, p);
  m.SetDerivative(p, -Function(kSin, a));
  const auto states = Solve(m, 9);
  EXPECT_TRUE(HasDigits(Digits(), states[0], Known("pendulum_angle(9)")));
  EXPECT_TRUE(HasDigits(Digits(), states[1], Known("pendulum_speed(9)")));
}

/// E - e sin E = M by Newton's method.
Real EccentricAnomaly(const Real& eccentricity, const Real& mean)
{
  Real anomaly = mean;
  for (int i = 0; i < 40; ++i) {
    const Real residual = anomaly - eccentricity * Of(kSin, anomaly) - mean;
    anomaly = anomaly - residual / (Rational(1) - eccentricity * Of(kCos, anomaly));
  }
  return anomaly;
}

/// Once around a centre from the pericentre: x = cos E - e, y = sqrt(1 - e^2) sin E
Equations Kepler(const Rational& e)
{
  Equations m;
  const Expression x = m.Variable("x", 1 - e), y = m.Variable("y", 0), u = m.Variable("u", 0);
  const Expression v = m.Variable("v", Function(kSqrt, m.Number((1 + e) / (1 - e))));
  const Expression cubed = Power(x * x + y * y, Rational(3, 2));
  m.SetDerivative(x, u);
  m.SetDerivative(y, v);
  m.SetDerivative(u, -x / cubed);
  m.SetDerivative(v, -y / cubed);
  return m;
}

void ExpectOnEllipse(int digits, const std::vector<Real>& states, const Rational& e,
                     const Rational& t)
{
  const Real anomaly = EccentricAnomaly(Exactly(e), Exactly(t));
  EXPECT_TRUE(HasDigits(digits, states[0], Of(kCos, anomaly) - Exactly(e))) << e;
  EXPECT_TRUE(HasDigits(digits, states[1], Of(kSqrt, Exactly(1 - e * e)) * Of(kSin, anomaly))) << e;
}

TEST_P(ClosedForms, KeplerByHisEquation)
{
  const Rational e(1, 2), t(-3, 4);
  ExpectOnEllipse(Digits(), Solve(Kepler(e), t), e, t);
}

TEST_P(LongClosedForms, KeplerByHisEquation)
{
  for (const Rational& e : {Rational(1, 2), Rational(99, 100)}) {
    for (const Rational& t : {Rational(7), Rational(-7)})
      ExpectOnEllipse(Digits(), Solve(Kepler(e), t), e, t);
  }
}

}  // namespace
}  // namespace varno::solve
