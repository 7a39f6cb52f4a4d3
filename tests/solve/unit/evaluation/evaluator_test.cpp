#include "solve/evaluation/evaluator.h"

#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "solve/evaluation/domain_error.h"
#include "tests/solve/support/comparison.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;
using support::Function;

TEST(Evaluator, ComputesSeveralExpressionsOfTimeAndStates)
{
  Equations m;
  const Expression x = m.Variable("x", 0), y = m.Variable("y", 0);
  const Expression sum = x * m.Time() + y, quotient = sum / (x - Rational(1, 2));
  const Expression unused = 1 / (x - x);
  (void)unused;
  Evaluator evaluator(m.Finished().graph, {quotient.id, sum.id, x.id}, 100);
  const std::vector<Real> states{support::FromText("3/2", 64), support::FromText("-1/4", 200)};
  evaluator.Evaluate(support::FromText("3", 10), states);
  EXPECT_EQ(0, mpfr_cmp_d(evaluator[0], 4.25));
  EXPECT_EQ(0, mpfr_cmp_d(evaluator[1], 4.25));
  EXPECT_EQ(0, mpfr_cmp_d(evaluator[2], 1.5));
}

TEST(Evaluator, NamesTheOperationWithoutAValue)
{
  Equations m;
  const Expression x = m.Variable("x", 0);
  const Expression quotient = 7 / x, root = Function(Operation::kSqrt, x - 5);
  const std::vector<Real> states(1, Real(64));
  for (const auto& [expression, argument] : {std::pair(quotient, 0.0), std::pair(root, -5.0)}) {
    Evaluator evaluator(m.Finished().graph, {(2 * expression + 1).id}, 100);
    try {
      evaluator.Evaluate(Real(), states);
      ADD_FAILURE() << "no error";
    } catch (const DomainError& error) {
      EXPECT_EQ(Outcome::kUndefined, error.outcome);
      EXPECT_EQ(expression.id, error.node);
      EXPECT_EQ(argument, error.argument.ToDouble());
    }
  }
}

TEST(EvaluateConstant, HoldsItsBits)
{
  Equations m;
  const Expression value = support::Power(1 + m.Pi(), Rational(1, 3));
  Real expected(1000);
  mpfr_const_pi(expected, MPFR_RNDN);
  mpfr_add_ui(expected, expected, 1, MPFR_RNDN);
  mpfr_cbrt(expected, expected, MPFR_RNDN);
  EXPECT_TRUE(support::IsWithin(support::Log2(expected) - 700,
                                EvaluateConstant(m.Finished().graph, value.id, 702), expected));
}

// (sqrt(1 + e) - 1)/e = 1/2 - e/8 + ...: 200 bits cancel.
TEST(EvaluateConstant, SeesThroughCancellation)
{
  Equations m;
  const Rational large("1000000000000000000000000000000000000000000000000000000000000");
  const Expression value = large * (Function(Operation::kSqrt, m.Number(1 + 1 / large)) - 1);
  EXPECT_TRUE(support::HasDigits(30, EvaluateConstant(m.Finished().graph, value.id, 120),
                                 support::FromText("1/2", 64)));
}

TEST(EvaluateConstant, SinOfPiIsZero)
{
  Equations m;
  EXPECT_TRUE(
      EvaluateConstant(m.Finished().graph, Function(Operation::kSin, m.Pi()).id, 64).IsZero());
}

}  // namespace
}  // namespace varno::solve
