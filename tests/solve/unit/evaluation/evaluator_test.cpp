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

}  // namespace
}  // namespace varno::solve
