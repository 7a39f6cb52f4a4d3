// What a solution keeps: invariants, returns, and the way back.

#include <array>
#include <string>

#include <gtest/gtest.h>

#include "solve/evaluation/constant.h"
#include "solve/evaluation/evaluator.h"
#include "tests/solve/support/comparison.h"
#include "tests/solve/support/equations.h"
#include "tests/solve/support/integration.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;
using support::Function;
using support::HasDigits;
using support::Integrate;
using support::IsWithin;
using support::Power;

Rational Decimal(const std::string& text)
{
  const std::size_t point = text.find('.');
  const std::string digits = text.substr(0, point) + text.substr(point + 1);
  const Integer denominator("1" + std::string(text.size() - point - 1, '0'));
  Rational value(Integer(digits, 10), denominator);  // base 10: a leading 0 would mean base 8
  value.canonicalize();
  return value;
}

double Log2OfTen(double digits)
{
  return digits * 3.3219280948873623;
}

// Out and back gives the start, with the digits that the way does not amplify: exp(0.9 * 5) on the
// Lorenz attractor, and again on the way back, where the volume grows by exp(41/3 * 5) as well:
// 10^33.
TEST(Reversing, LorenzReturnsToItsStart)
{
  Equations m;
  const Expression x = m.Variable("x", 1), y = m.Variable("y", 1), z = m.Variable("z", 1);
  m.SetDerivative(x, 10 * (y - x));
  m.SetDerivative(y, x * (28 - z) - y);
  m.SetDerivative(z, x * y - Rational(8, 3) * z);
  const auto out = Integrate(m.Finished(), 0, 5, 60);
  const auto back = Integrate(m.Finished(), out.states, 5, 0, 60);
  Real one(64);
  mpfr_set_ui(one, 1, MPFR_RNDN);
  for (const Real& state : back.states) EXPECT_TRUE(HasDigits(27, state, one));
}

TEST(Reversing, KeplerReturnsToItsStart)
{
  Equations m;
  const Expression x = m.Variable("x", 1), y = m.Variable("y", 0), u = m.Variable("u", 0),
                   v = m.Variable("v", Rational(3, 4));
  const Expression cubed = Power(x * x + y * y, Rational(-3, 2));
  m.SetDerivative(x, u);
  m.SetDerivative(y, v);
  m.SetDerivative(u, -x * cubed);
  m.SetDerivative(v, -y * cubed);
  for (const int digits : {15, 50}) {
    const auto out = Integrate(m.Finished(), 0, 20, digits);
    const auto back = Integrate(m.Finished(), out.states, 20, 0, digits);
    for (std::size_t i = 0; i < 4; ++i) {
      const Real start = EvaluateConstant(m.Finished().graph, m.Finished().states[i].start, 64);
      EXPECT_TRUE(IsWithin(-Log2OfTen(digits), back.states[i], start)) << digits;
    }
  }
}

/// The restricted three-body problem in the frame that turns with earth and moon.
struct Arenstorf {
  Arenstorf()
  {
    const Rational mu = Decimal("0.012277471"), nu = 1 - mu;
    const Expression d = Power(Power(x + mu, 2) + y * y, Rational(-1, 2));
    const Expression e = Power(Power(x - nu, 2) + y * y, Rational(-1, 2));
    const Expression d3 = Power(d, 3), e3 = Power(e, 3);
    m.SetDerivative(x, u);
    m.SetDerivative(y, v);
    m.SetDerivative(u, x + 2 * v - nu * (x + mu) * d3 - mu * (x - nu) * e3);
    m.SetDerivative(v, y - 2 * u - nu * y * d3 - mu * y * e3);
    // Jacobi's constant
    jacobi = x * x + y * y + 2 * nu * d + 2 * mu * e - u * u - v * v;
  }

  Real Jacobi(const std::vector<Real>& states) const
  {
    Evaluator evaluator(m.Finished().graph, {jacobi.id}, 1500);
    evaluator.Evaluate(Real(), states);
    return evaluator[0];
  }

  Equations m;
  Expression x = m.Variable("x", Decimal("0.994")), y = m.Variable("y", 0), u = m.Variable("u", 0);
  Expression v = m.Variable("v", Decimal("-2.00158510637908252240537862224"));
  Expression jacobi;
};

// Start and period as in E. Hairer, S. P. Norsett, G. Wanner, Solving Ordinary Differential
// Equations I, II.0.
const Rational kArenstorfPeriod = Decimal("17.0652165601579625588917206249");

TEST(Invariants, JacobiConstantHolds)
{
  const Arenstorf orbit;
  for (const int digits : {15, 50}) {
    // The orbit is unstable: an error grows 10^9 times in a period.
    const auto arrival = Integrate(orbit.m.Finished(), 0, kArenstorfPeriod, digits);
    std::vector<Real> start;
    for (const State& state : orbit.m.Finished().states)
      start.push_back(EvaluateConstant(orbit.m.Finished().graph, state.start, 1500));
    EXPECT_TRUE(HasDigits(digits, orbit.Jacobi(arrival.states), orbit.Jacobi(start)));
  }
}

// The last digits of start and period are rounded; the orbit amplifies that.
TEST(Invariants, ArenstorfOrbitReturns)
{
  const Arenstorf orbit;
  const auto arrival = Integrate(orbit.m.Finished(), 0, kArenstorfPeriod, 40);
  for (std::size_t i = 0; i < 4; ++i) {
    const Real start =
        EvaluateConstant(orbit.m.Finished().graph, orbit.m.Finished().states[i].start, 200);
    EXPECT_TRUE(IsWithin(-Log2OfTen(20), arrival.states[i], start));
  }
}

// Three equal masses, start and period by C. Simo as in A. Chenciner, R. Montgomery, A remarkable
// periodic solution of the three-body problem, Annals of Mathematics 152, 2000, here with 14
// digits.
TEST(Invariants, FigureEightReturns)
{
  Equations m;
  const Rational x1 = Decimal("0.97000435669734"), y1 = Decimal("-0.24308753153583");
  const Rational u3 = Decimal("-0.93240737144104"), v3 = Decimal("-0.86473146092102");
  const Rational starts[3][4] = {
      {x1, y1, -u3 / 2, -v3 / 2}, {-x1, -y1, -u3 / 2, -v3 / 2}, {0, 0, u3, v3}};
  std::vector<std::array<Expression, 4>> bodies;
  for (const auto& start : starts) {
    auto& body = bodies.emplace_back();
    for (std::size_t i = 0; i < 4; ++i) body[i] = m.Variable("s", start[i]);
  }
  for (const auto& body : bodies) {
    Expression ax = m.Number(0), ay = m.Number(0);
    for (const auto& other : bodies) {
      if (&other == &body) continue;
      const Expression dx = other[0] - body[0], dy = other[1] - body[1];
      const Expression cubed = Power(dx * dx + dy * dy, Rational(-3, 2));
      ax = ax + dx * cubed;
      ay = ay + dy * cubed;
    }
    m.SetDerivative(body[0], body[2]);
    m.SetDerivative(body[1], body[3]);
    m.SetDerivative(body[2], ax);
    m.SetDerivative(body[3], ay);
  }
  const auto arrival = Integrate(m.Finished(), 0, Decimal("6.32591398292621"), 20);
  for (std::size_t i = 0; i < 12; ++i) {
    const Real start = EvaluateConstant(m.Finished().graph, m.Finished().states[i].start, 100);
    EXPECT_TRUE(IsWithin(-Log2OfTen(12), arrival.states[i], start)) << i;
  }
}

// Let go at rest with both arms horizontal, with many terms missing at the start: the energy a'^2 +
// b'^2/2 + a' b' cos(a - b) - 2 cos a - cos b stays 0, and the way back leads to the start.
class DoublePendulum : public testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(Digits, DoublePendulum, testing::Values(1, 15, 50, 100),
                         testing::PrintToStringParamName());

TEST_P(DoublePendulum, KeepsItsEnergyAndReturns)
{
  const int digits = GetParam();
  Equations m;
  const Expression right = m.Pi() / 2;
  const Expression a = m.Variable("a", right), b = m.Variable("b", right), u = m.Variable("u", 0),
                   v = m.Variable("v", 0);
  const auto sin = [](Expression x) { return Function(Operation::kSin, x); };
  const auto cos = [](Expression x) { return Function(Operation::kCos, x); };
  const Expression d = a - b, n = 3 - cos(2 * d);
  m.SetDerivative(a, u);
  m.SetDerivative(b, v);
  m.SetDerivative(u, (-3 * sin(a) - sin(a - 2 * b) - 2 * sin(d) * (v * v + u * u * cos(d))) / n);
  m.SetDerivative(v, 2 * sin(d) * (2 * u * u + 2 * cos(a) + v * v * cos(d)) / n);
  const Expression energy = u * u + v * v / 2 + u * v * cos(d) - 2 * cos(a) - cos(b);

  const auto there = Integrate(m.Finished(), 0, 8, digits);
  EXPECT_GT(there.steps, 8);
  Evaluator evaluator(m.Finished().graph, {energy.id}, there.states[0].Bits());
  evaluator.Evaluate(Real(2), there.states);
  EXPECT_TRUE(IsWithin(-Log2OfTen(digits), evaluator[0], Real(2)));

  const auto back = Integrate(m.Finished(), there.states, 8, 0, digits).states;
  Real start(there.states[0].Bits());
  mpfr_const_pi(start, MPFR_RNDN);
  mpfr_div_2ui(start, start, 1, MPFR_RNDN);
  for (const Real& angle : {back[0], back[1]})
    EXPECT_TRUE(IsWithin(-Log2OfTen(digits - 0.5), angle, start));
}

}  // namespace
}  // namespace varno::solve
