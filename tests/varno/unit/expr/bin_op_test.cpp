#include "varno/expr/bin_op.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/support/rational.h"
#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/scoped_global.h"
#include "tests/varno/support/series_node.h"
#include "varno/expr/differential.h"
#include "varno/expr/equation.h"
#include "varno/expr/multiply.h"

namespace varno {

using namespace support;
namespace {

using Ref = Expr::Ref;

class BinOpTest : public testing::Test {
 protected:
  ScopedGlobal global;
};

TEST_F(BinOpTest, EachOperationCombinesValuesInOrder)
{
  // Initial values 3 and 4, values at the end of the step 3 + 5 + 8 = 16 and 4 - 2 = 2.
  const Ref a = Series({3.0, 5.0, 8.0});
  const Ref b = Series({4.0, -2.0});
  const struct {
    ExprType type;
    Rational initialValue, value;
  } rows[] = {
      {kPlus, 7, 18},
      {kMinus, -1, 14},
      {kMultiply, 12, 32},
      {kDivide, Rational(3, 4), 8},
  };
  for (const auto& row : rows) {
    const Ref operation(row.type, a, b);
    EXPECT_TRUE(IsExactly(row.initialValue, InitValueOf(operation))) << row.type;
    EXPECT_TRUE(IsExactly(row.value, ValueOf(operation))) << row.type;
  }
}

TEST_F(BinOpTest, TheValueComesFromTheOperandsValuesAndNotFromTheTerms)
{
  const Ref a = Series({1.0, 1.0});
  const Ref square(kMultiply, a, a);
  EXPECT_TRUE(IsExactly(4, ValueOf(square)));
  EXPECT_TRUE(SeriesOf(a).computedTerms.empty());
  EXPECT_EQ(SeriesOf(a).computedValues, 1);
}

TEST_F(BinOpTest, PrintingPutsParenthesesAroundEveryOperation)
{
  const Ref x = MakeVariable("x", 0.0);
  const Ref y = MakeVariable("y", 0.0);
  const Ref tree(kDivide, Ref(kPlus, x, Ref(kMultiply, y, y)), Ref(kMinus, x, Constant(2)));
  EXPECT_EQ(TextOf(tree), "(([x] + ([y] * [y])) / ([x] -  2.00000000000e+00))");
}

TEST_F(BinOpTest, ConversionRebuildsTheOperationOverConvertedOperands)
{
  const struct {
    ExprType type;
    const char *text, *converted;
  } rows[] = {
      {kPlus, "(x + y)", "([x] + [y])"},
      {kMinus, "(x - y)", "([x] - [y])"},
      {kMultiply, "(x * y)", "([x] * [y])"},
      {kDivide, "(x / y)", "([x] / [y])"},
  };
  MakeVariable("x", 0.0);
  MakeVariable("y", 0.0);
  for (const auto& row : rows) {
    const Ref operation(row.type, Ref(new Equation("x", 0)), Ref(new Equation("y", 0)));
    const Ref converted = operation->Convert();
    EXPECT_EQ(converted->Type(), row.type);
    EXPECT_EQ(TextOf(converted), row.converted);
    EXPECT_EQ(TextOf(operation), row.text);
  }
}

TEST_F(BinOpTest, ConversionSimplifies)
{
  const Ref x = MakeVariable("x", 0.0);
  global->_SIMPLIFYSMALL = false;
  const Ref product(kMultiply, Constant(1), x);
  EXPECT_EQ(product->Type(), kMultiply);
  global->_SIMPLIFYSMALL = true;
  EXPECT_TRUE(product->Convert() == x);
}

TEST_F(BinOpTest, ConversionTakesTheRightOperandFirst)
{
  // The exponential gives one temporary variable for each operand: %0 for the one converted first.
  for (const ExprType type : {kPlus, kMinus, kMultiply, kDivide}) {
    const ScopedGlobal inner;
    const Ref x = MakeVariable("x", 0.0);
    const Ref left(kExp, x);
    const Ref right(kExp, x);
    const std::string symbol(1, FindBinaryOperator(type)->symbol);
    EXPECT_EQ(TextOf(Ref(type, left, right)->Convert()), "([%1] " + symbol + " [%0])");
  }
}

TEST_F(BinOpTest, OnlyTheFourOperationsAreBinary)
{
  for (int code = -1; code <= kTrunc + 1; ++code) {
    const BinaryOperator* const row = FindBinaryOperator(ExprType{code});
    EXPECT_EQ(row != nullptr, code >= kPlus && code <= kDivide) << code;
    if (row != nullptr) {
      EXPECT_EQ(row->type, code);
    }
  }
}

}  // namespace
}  // namespace varno
