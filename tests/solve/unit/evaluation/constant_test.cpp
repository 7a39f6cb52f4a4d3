// Constants against closed forms, and against MPFR's own constants.

#include "solve/evaluation/constant.h"

#include <gtest/gtest.h>

#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/evaluator.h"
#include "solve/number/exponent_range.h"
#include "tests/solve/support/comparison.h"
#include "tests/solve/support/equations.h"

namespace varno::solve {
namespace {

using support::Equations;
using support::Expression;
using support::Function;

Rational PowerOfTen(unsigned long exponent)
{
  Integer power;
  mpz_ui_pow_ui(power.get_mpz_t(), 10, exponent);
  return power;
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

// exp(e) - 1 = e + e^2/2 + ..., cos(e) - 1 = -e^2/2 + ...
TEST(EvaluateConstant, FollowsAsManyBitsAsItsNumbersAreSmall)
{
  Equations m;
  const Expression tiny = m.Number(1 / PowerOfTen(5000));
  const Expression first = m.Number(PowerOfTen(5000)) * (Function(Operation::kExp, tiny) - 1);
  const Expression second = m.Number(PowerOfTen(10000)) * (Function(Operation::kCos, tiny) - 1);
  const Expression quotient = 1 / (Function(Operation::kExp, tiny) - 1);
  EXPECT_TRUE(support::HasDigits(30, EvaluateConstant(m.Finished().graph, first.id, 120),
                                 support::FromText("1", 64)));
  EXPECT_TRUE(support::HasDigits(30, EvaluateConstant(m.Finished().graph, second.id, 120),
                                 support::FromText("-1/2", 64)));
  EXPECT_TRUE(support::HasDigits(30, EvaluateConstant(m.Finished().graph, quotient.id, 120),
                                 support::FromText("1e5000", 16000)));
}

// sqrt(2)^2 - 2 is 0, but not to any number of bits.
TEST(EvaluateConstant, TakesARadicandThatIsZeroForOne)
{
  Equations m;
  const Expression zero = support::Power(Function(Operation::kSqrt, m.Number(2)), 2) - 2;
  EXPECT_TRUE(
      EvaluateConstant(m.Finished().graph, Function(Operation::kSqrt, zero).id, 64).IsZero());
  EXPECT_THROW(EvaluateConstant(m.Finished().graph, (1 / zero).id, 64), DomainError);
}

TEST(EvaluateConstant, RefusesWhatTakesTooManyBits)
{
  const ScopedExponentRange range;
  Equations m;
  const Expression tiny = Function(Operation::kExp, m.Number(-300000));
  try {
    EvaluateConstant(m.Finished().graph, (1 / (Function(Operation::kExp, tiny) - 1)).id, 64);
    ADD_FAILURE() << "no error";
  } catch (const DomainError& error) {
    EXPECT_EQ(Outcome::kInDoubt, error.outcome);
  }
}

// A constant that cancels has all its bits beside what depends on the time.
TEST(ConstantsIn, AreComputedByThemselves)
{
  Equations m;
  const Rational large = PowerOfTen(60);
  const Expression half = large * (Function(Operation::kSqrt, m.Number(1 + 1 / large)) - 1);
  const Expression product = m.Time() * half;
  const auto constants = ConstantsIn(m.Finished().graph, {product.id}, 100);
  ASSERT_EQ(1u, constants.size());
  Evaluator evaluator(m.Finished().graph, {product.id}, 100, {}, constants);
  evaluator.Evaluate(support::FromText("2", 10), {});
  EXPECT_TRUE(support::HasDigits(28, evaluator[0], support::FromText("1", 64)));
}

}  // namespace
}  // namespace varno::solve
