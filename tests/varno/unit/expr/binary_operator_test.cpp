#include "varno/expr/binary_operator.h"

#include <gmp.h>
#include <gtest/gtest.h>

#include "arith/mpf.h"
#include "tests/support/exact_text.h"
#include "tests/support/rational.h"
#include "tests/support/scoped_precision.h"

namespace varno {

using namespace support;
using arith::Mpf;

namespace {

TEST(BinaryOperator, ThereIsOneForEachOfTheFourOperations)
{
  const ScopedPrecision precision(80);
  const Mpf a(7.0), b(-2.0);
  const struct {
    ExprType type;
    char symbol;
    Rational value;
  } rows[] = {
      {kPlus, '+', 5},
      {kMinus, '-', 9},
      {kMultiply, '*', -14},
      {kDivide, '/', Rational(-7, 2)},
  };
  for (const auto& row : rows) {
    const BinaryOperator* const found = FindBinaryOperator(row.type);
    ASSERT_NE(found, nullptr) << row.symbol;
    EXPECT_EQ(found->type, row.type);
    EXPECT_EQ(found->symbol, row.symbol);
    Mpf result;
    found->apply(result, a, b);
    EXPECT_TRUE(IsExactly(row.value, result)) << row.symbol;
  }
}

TEST(BinaryOperator, ThereIsNoneForOtherKinds)
{
  for (const ExprType type : {kNothing, kUnMinus, kNumber, kDifferential, kSin, kTrunc}) {
    EXPECT_EQ(FindBinaryOperator(type), nullptr) << type;
  }
}

TEST(BinaryOperator, AResultOutOfRangeEndsTheRun)
{
  const Mpf huge("1e5552999999999999999");
  Mpf result;
  EXPECT_EXIT(FindBinaryOperator(kMultiply)->apply(result, huge, huge), testing::ExitedWithCode(1),
              ExactText("#(ERR) A number is out of range: its decimal exponent is beyond "
                        "+-5553000000000000000\n"));
}

}  // namespace
}  // namespace varno
