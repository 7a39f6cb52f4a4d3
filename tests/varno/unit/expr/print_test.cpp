#include <string>

#include <gtest/gtest.h>

#include "tests/varno/support/parsed_input.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"
#include "varno/expr/algebraic.h"
#include "varno/expr/differential.h"
#include "varno/expr/equation.h"
#include "varno/expr/number.h"
#include "varno/expr/time.h"

namespace varno {

namespace {

class Print : public testing::Test {
 protected:
  static Expr::Ref NewNumber(double constant) { return Expr::Ref(new Number(constant)); }

  const ScopedGlobal global;
  const Expr::Ref y{new Differential("y", Expr::Ref())};
  const Expr::Ref z{new Algebraic("z", Expr::Ref())};
};

TEST_F(Print, AnEmptyHandleIsNull)
{
  EXPECT_EQ(Printed(*Expr::Ref()), "[NULL]");
  EXPECT_EQ(Printed(*Expr::Ref(kPlus, Expr::Ref(), y)), "([NULL] + [y])");
}

TEST_F(Print, VariablesStandInBracketsOrBracesAndReferencesAlone)
{
  EXPECT_EQ(Printed(*y), "[y]");
  EXPECT_EQ(Printed(*z), "{z}");
  EXPECT_EQ(Printed(Differential("y'", Expr::Ref())), "[y']");
  EXPECT_EQ(Printed(Equation("y", 1)), "y");
}

TEST_F(Print, AVariableIsNeverItsExpression)
{
  VariableOf(y).SetRightHandSide(Expr::Ref(kPlus, y, z));
  EXPECT_EQ(Printed(*y), "[y]");
  VariableOf(y).SetRightHandSide(Expr::Ref());
}

TEST_F(Print, TimeAndNumbers)
{
  EXPECT_EQ(Printed(Time()), "t");
  EXPECT_EQ(Printed(*NewNumber(-2.5)), "-2.50000000000e+00");
  global->_PRINTCHARS = 3;
  EXPECT_EQ(Printed(*NewNumber(-2.5)), std::string(6, ' ') + "-2.500e+00");
}

TEST_F(Print, EveryOperationHasItsOwnParentheses)
{
  const struct {
    ExprType type;
    const char* text;
  } rows[] = {
      {kPlus, "([y] + {z})"},
      {kMinus, "([y] - {z})"},
      {kMultiply, "([y] * {z})"},
      {kDivide, "([y] / {z})"},
  };
  for (const auto& [type, text] : rows) EXPECT_EQ(Printed(*Expr::Ref(type, y, z)), text);
  EXPECT_EQ(Printed(*Expr::Ref(kUnMinus, y)), "(-[y])");
  EXPECT_EQ(Printed(*Expr::Ref(kMultiply, Expr::Ref(kUnMinus, y), Expr::Ref(kPlus, z, y))),
            "((-[y]) * ({z} + [y]))");
}

TEST_F(Print, EveryFunctionHasItsName)
{
  const char* const names[] = {"sin",    "cos",     "tan",  "cotan", "asin",   "acos",  "atan",
                               "acotan", "sinh",    "cosh", "tanh",  "cotanh", "asinh", "acosh",
                               "atanh",  "acotanh", "sqrt", "exp",   "ln",     "trunc"};
  int type = kSin;
  for (const char* const name : names) {
    const Expr::Ref function(static_cast<ExprType>(type++), y);
    EXPECT_EQ(Printed(*function), name + std::string("([y])"));
  }
  EXPECT_EQ(type, kTrunc + 1);
}

TEST_F(Print, FoldedNumbersAreOneNumber)
{
  EXPECT_EQ(Printed(*Expr::Ref(kPlus, NewNumber(1), NewNumber(2))), " 3.00000000000e+00");
}

}  // namespace

}  // namespace varno
