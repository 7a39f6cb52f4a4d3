#include <gtest/gtest.h>

#include "solve/series/series.h"
#include "solve/tape/compile.h"
#include "tests/solve/support/comparison.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;
using support::FromText;
using support::Function;
using support::IsWithin;
using support::Power;
using support::Quadrature;

constexpr mpfr_prec_t kBits = 200;

Expression Sin(Expression u)
{
  return Function(Operation::kSin, u);
}

/// The right-hand side of a quadrature about the root at t = 0 of all quotients and square roots in
/// it, of the order that each of them has, in the order of the tape.
class RightHandSide {
 public:
  RightHandSide(const Model& model, const std::vector<int>& orders, const char* time = "0",
                bool backwards = false)
      : tape(Compile(model))
  {
    std::vector<CommonRoot> roots;
    for (LineId id = 0; id < tape.lines.size(); ++id) {
      const LineKind kind = tape.lines[id].kind;
      if (kind == LineKind::kQuotient || kind == LineKind::kSquareRoot ||
          kind == LineKind::kIntegralOfQuotient)
        roots.push_back({id, orders.at(roots.size())});
    }
    series = MakeSeriesAtRoot(tape, kBits, 10, false, roots);
    const std::vector<Real> start(1, Real(kBits));
    series->Begin(FromText(time, kBits), start, backwards, 0);
    series->ExtendTo(20);
  }

  Real Term(int k) const
  {
    Real term(kBits);
    series->Term(tape.rightHandSides[0], k, term);
    return term;
  }

 private:
  Tape tape;
  std::unique_ptr<Series> series;
};

void ExpectTerm(const Rational& expected, const Real& actual)
{
  Real exact(kBits);
  mpfr_set_q(exact, expected.get_mpq_t(), MPFR_RNDN);
  const double size = sgn(expected) == 0 ? 0 : support::Log2(exact);
  EXPECT_TRUE(IsWithin(size - kBits + 12, actual, exact)) << expected;
}

Rational Factorial(unsigned long n)
{
  Integer factorial;
  mpz_fac_ui(factorial.get_mpz_t(), n);
  return factorial;
}

// sin(t)/t = 1 - t^2/3! + t^4/5! - ...
TEST(SeriesAtRoot, DividesSinByTime)
{
  const RightHandSide f(Quadrature([](Equations& m) { return Sin(m.Time()) / m.Time(); }), {1});
  for (int k = 0; k <= 20; ++k) {
    const Rational size = 1 / Factorial(static_cast<unsigned long>(k) + 1);
    ExpectTerm(k % 2 != 0 ? Rational(0) : k % 4 == 0 ? size : -size, f.Term(k));
  }
}

// (1 - sin(t)/t)/t^2 = 1/3! - t^2/5! + ...: the inner quotient must be two terms ahead of the outer
TEST(SeriesAtRoot, DividesOneQuotientByAnother)
{
  const auto nested = [](Equations& m) {
    return (1 - Sin(m.Time()) / m.Time()) / Power(m.Time(), 2);
  };
  const RightHandSide f(Quadrature(nested), {1, 2});
  for (int k = 0; k <= 20; k += 2) {
    const Rational size = 1 / Factorial(static_cast<unsigned long>(k) + 3);
    ExpectTerm(k % 4 == 0 ? size : -size, f.Term(k));
  }
}

// A state is the divisor: x' = 1 from 0, so that (exp(x) - 1)/x = 1 + t/2! + t^2/3! + ...
TEST(SeriesAtRoot, DividesByAState)
{
  Equations m;
  const Expression y = m.Variable("y", 0), x = m.Variable("x", 0);
  m.SetDerivative(x, m.Number(1));
  m.SetDerivative(y, (Function(Operation::kExp, x) - 1) / x);
  const Tape tape = Compile(m.Finished());
  std::vector<CommonRoot> roots;
  for (LineId id = 0; id < tape.lines.size(); ++id) {
    if (tape.lines[id].kind == LineKind::kQuotient) roots.push_back({id, 1});
  }
  const auto series = MakeSeriesAtRoot(tape, kBits, 10, false, roots);
  const std::vector<Real> states(2, Real(kBits));
  series->Begin(Real(kBits), states, false, 0);
  series->ExtendTo(20);
  for (int k = 0; k <= 20; ++k) {
    Real term(kBits);
    series->Term(tape.rightHandSides[0], k, term);
    ExpectTerm(1 / Factorial(static_cast<unsigned long>(k) + 1), term);
  }
}

// sqrt(((1 - t)(3 - t))^2) is 2 u - u^2 behind t = 1, u = t - 1, and 2 u + u^2 before it, u = 1 -
// t.
TEST(SeriesAtRoot, TakesTheRootThatIsPositiveAhead)
{
  const Model model = Quadrature([](Equations& m) {
    return Function(Operation::kSqrt, Power((1 - m.Time()) * (3 - m.Time()), 2));
  });
  for (const bool backwards : {false, true}) {
    const RightHandSide f(model, {1}, "1", backwards);
    ExpectTerm(0, f.Term(0));
    ExpectTerm(2, f.Term(1));
    ExpectTerm(backwards ? 1 : -1, f.Term(2));
    for (int k = 3; k <= 20; ++k) ExpectTerm(0, f.Term(k));
  }
}

// acosh(cosh t) is |t|; its derivative is sinh t / sqrt(cosh^2 t - 1).
TEST(SeriesAtRoot, IntegratesAQuotient)
{
  const RightHandSide f(Quadrature([](Equations& m) {
                          return Function(Operation::kAcosh, Function(Operation::kCosh, m.Time()));
                        }),
                        {1, 1});
  for (int k = 0; k <= 20; ++k) ExpectTerm(k == 1 ? 1 : 0, f.Term(k));
}

}  // namespace
}  // namespace varno::solve
