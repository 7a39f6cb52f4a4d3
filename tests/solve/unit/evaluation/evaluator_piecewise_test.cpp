// Kinks, jumps and conditions by MPFR, with exact times and arguments that may lie on a jump.

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/evaluator.h"
#include "tests/solve/support/comparison.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;
using support::Function;

constexpr mpfr_prec_t kBits = 200;
constexpr EdgeRule kRule{.noiseBits = 90, .zeroBits = 100, .mayDeclareZero = true};

Expression If(Expression condition, Expression u, Expression v)
{
  return {u.graph, u.graph->Make(Operation::kIf, condition.id, u.id, v.id, {})};
}

/// The value of an expression at a time that is a fraction, and at x; x has the size 1.
double ValueAt(Equations& m, Expression expression, const Rational& time,
               const std::string& x = "0", const EdgeRule& rule = kRule)
{
  Evaluator evaluator(m.Finished().graph, {expression.id}, kBits);
  Real rounded(kBits);
  mpfr_set_q(rounded, time.get_mpq_t(), MPFR_RNDN);
  const std::vector<Real> states{support::FromText(x, kBits)};
  const std::vector<double> sizes{0};
  evaluator.EvaluateSized(rounded, states, sizes, rule, &time);
  return evaluator[0].ToDouble();
}

TEST(EvaluatorPiecewise, FunctionsOfATimeThatIsAFractionAreExact)
{
  Equations m;
  const Expression t = m.Time();
  const Expression tenths = t / Rational(1, 10);
  for (int k = -30; k <= 30; ++k) {
    const Rational time(k, 10);
    EXPECT_EQ(ValueAt(m, Function(Operation::kFloor, tenths), time), k);
    EXPECT_EQ(ValueAt(m, Function(Operation::kCeil, tenths), time), k);
    EXPECT_EQ(ValueAt(m, Function(Operation::kTrunc, tenths), time), k);
    EXPECT_EQ(ValueAt(m, Function(Operation::kSign, t - Rational(13, 10)), time),
              k < 13 ? -1 : static_cast<int>(k > 13));
    EXPECT_EQ(ValueAt(m, Function(Operation::kLess, t, m.Number(Rational(13, 10))), time),
              static_cast<int>(k < 13));
    EXPECT_EQ(ValueAt(m, Function(Operation::kLessOrEqual, t, m.Number(Rational(13, 10))), time),
              static_cast<int>(k <= 13));
  }
}

TEST(EvaluatorPiecewise, OnlyTheChosenBranchIsLookedAt)
{
  Equations m;
  const Expression x = m.Variable("x", 0), zero = m.Number(0);
  const Expression logarithm = Function(Operation::kLn, x);
  const Expression isPositive = Function(Operation::kLess, zero, x);
  const Expression chosen = If(isPositive, logarithm, 7 + 0 * x);
  EXPECT_EQ(ValueAt(m, chosen, 0, "-3"), 7);
  EXPECT_EQ(ValueAt(m, chosen, 0, "1"), 0);
  EXPECT_THROW(ValueAt(m, If(isPositive, zero + x, logarithm), 0, "-3"), DomainError);

  // x > 0 and ln(x) < 1; x <= 0 or ln(x) < 1
  const Expression isBelow = Function(Operation::kLess, logarithm, m.Number(1));
  const Expression both = Function(Operation::kAnd, isPositive, isBelow);
  const Expression either =
      Function(Operation::kOr, Function(Operation::kLessOrEqual, x, zero), isBelow);
  EXPECT_EQ(ValueAt(m, both, 0, "-3"), 0);
  EXPECT_EQ(ValueAt(m, both, 0, "2"), 1);
  EXPECT_EQ(ValueAt(m, both, 0, "3"), 0);
  EXPECT_EQ(ValueAt(m, either, 0, "-3"), 1);
  EXPECT_EQ(ValueAt(m, either, 0, "2"), 1);
  EXPECT_EQ(ValueAt(m, either, 0, "3"), 0);
}

TEST(EvaluatorPiecewise, ArgumentsWithinTheirRoundingAreAtTheJump)
{
  Equations m;
  const Expression x = m.Variable("x", 0), one = m.Number(1);
  const std::string below = "0.9999999999999999999999999999999999999999";  // 1 - 1e-40
  EXPECT_EQ(ValueAt(m, Function(Operation::kFloor, x), 0, below), 1);
  EXPECT_EQ(ValueAt(m, Function(Operation::kTrunc, x), 0, below), 1);
  EXPECT_EQ(ValueAt(m, Function(Operation::kCeil, x + 1), 0, below), 2);
  EXPECT_EQ(ValueAt(m, Function(Operation::kLess, x, one), 0, below), 0);
  EXPECT_EQ(ValueAt(m, Function(Operation::kLessOrEqual, one, x), 0, below), 1);
  EXPECT_EQ(ValueAt(m, Function(Operation::kSign, x), 0, "1e-40"), 0);
  EXPECT_EQ(ValueAt(m, Function(Operation::kTrunc, x), 0, "-1e-40"), 0);
  // Kinks are no jumps.
  EXPECT_EQ(ValueAt(m, Function(Operation::kAbs, x), 0, "-1e-40"), 1e-40);

  const std::string near = "0.99999999999999999999999999999";  // 1 - 1e-29
  for (const Operation function : {Operation::kFloor, Operation::kCeil, Operation::kTrunc})
    EXPECT_THROW(ValueAt(m, Function(function, x), 0, near), EdgeInDoubt);
  EXPECT_THROW(ValueAt(m, Function(Operation::kLess, x, one), 0, near), EdgeInDoubt);
  EdgeRule cautious = kRule;
  cautious.mayDeclareZero = false;
  EXPECT_THROW(ValueAt(m, Function(Operation::kFloor, x), 0, below, cautious), EdgeInDoubt);
  EXPECT_EQ(ValueAt(m, Function(Operation::kFloor, x), 0, "0.999999", cautious), 0);
}

TEST(EvaluatorPiecewise, TellsWhetherAnArgumentIsAtAJump)
{
  Equations m;
  const Expression x = m.Variable("x", 0);
  Evaluator evaluator(m.Finished().graph, {Function(Operation::kFloor, x).id}, kBits);
  const Real time(kBits);
  const std::vector<double> sizes{0};
  evaluator.EvaluateSized(time, std::vector{support::FromText("1e-40", kBits)}, sizes, kRule);
  EXPECT_TRUE(evaluator.IsAtJump());
  evaluator.EvaluateSized(time, std::vector{support::FromText("0.5", kBits)}, sizes, kRule);
  EXPECT_FALSE(evaluator.IsAtJump());
}

/// sin^2 + cos^2 of 1, which no number of bits tells from 1.
Expression One(Equations& m)
{
  const Expression s = Function(Operation::kSin, m.Number(1)),
                   c = Function(Operation::kCos, m.Number(1));
  return s * s + c * c;
}

TEST(EvaluateConstantPiecewise, IsOnTheJumpWhereThousandsOfBitsDoNotTell)
{
  Equations m;
  const auto value = [&m](Expression expression) {
    return EvaluateConstant(m.Finished().graph, expression.id, 64).ToDouble();
  };
  EXPECT_EQ(value(Function(Operation::kFloor, One(m))), 1);
  EXPECT_EQ(value(Function(Operation::kCeil, One(m))), 1);
  EXPECT_EQ(value(Function(Operation::kLess, One(m), m.Number(1))), 0);
  EXPECT_EQ(value(Function(Operation::kSign, One(m) - 1)), 0);
  // 1 - 1e-300 needs many bits.
  const Expression tiny = support::Power(m.Number(10) + 0 * m.Pi(), -300);
  EXPECT_EQ(value(Function(Operation::kFloor, One(m) - tiny)), 0);
}

}  // namespace
}  // namespace varno::solve
