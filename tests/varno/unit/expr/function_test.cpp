#include "varno/expr/function.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/support/exact_text.h"
#include "tests/support/rational.h"
#include "tests/varno/support/evaluate.h"
#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/parsed_input.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"
#include "varno/expr/equation.h"
#include "varno/expr/number.h"
#include "varno/expr/time.h"
#include "varno/functions/functions.h"

namespace varno {

using namespace support;
namespace {

using Ref = Expr::Ref;

void SquareRoot(mpf_t& out, mpf_ptr x)
{
  mpf_sqrt(out, x);
}

void Truncate(mpf_t& out, mpf_ptr x)
{
  mpf_trunc(out, x);
}

struct Row {
  ExprType type;
  int code;
  const char* name;
  MpfFunction function;
  /// An argument inside the domain, not exact in binary.
  const char* argument;
};

constexpr Row kRows[] = {
    {kSin, 11, "sin", functions::sin, "0.7"},
    {kCos, 12, "cos", functions::cos, "0.7"},
    {kTan, 13, "tan", functions::tan, "0.7"},
    {kCotan, 14, "cotan", functions::cotan, "0.7"},
    {kASin, 15, "asin", functions::asin, "0.7"},
    {kACos, 16, "acos", functions::acos, "0.7"},
    {kATan, 17, "atan", functions::atan, "0.7"},
    {kACotan, 18, "acotan", functions::acotan, "0.7"},
    {kSinh, 19, "sinh", functions::sinh, "0.7"},
    {kCosh, 20, "cosh", functions::cosh, "0.7"},
    {kTanh, 21, "tanh", functions::tanh, "0.7"},
    {kCotanh, 22, "cotanh", functions::cotanh, "0.7"},
    {kASinh, 23, "asinh", functions::asinh, "0.7"},
    {kACosh, 24, "acosh", functions::acosh, "1.7"},
    {kATanh, 25, "atanh", functions::atanh, "0.7"},
    {kACotanh, 26, "acotanh", functions::acotanh, "1.7"},
    {kSqrt, 27, "sqrt", SquareRoot, "0.7"},
    {kExp, 28, "exp", functions::exp, "0.7"},
    {kLn, 29, "ln", functions::ln, "0.7"},
    {kTrunc, 30, "trunc", Truncate, "2.7"},
};

/// A variable with this value at the start and at the end of the step; its derivative is r.
Ref Variable(const char* name, const Mpf& value)
{
  const Ref variable(new Differential(name, Ref(new Equation("r", 0))));
  VariableOf(variable).SetStartValue(value);
  return variable;
}

constexpr const char* kNoTerms =
    "#(ERR) virtual void UnOp::GetDY(int, __mpf_struct (&)[1]) called!\n";
constexpr const char* kNoValue =
    "#(ERR) virtual void UnOp::Result(__mpf_struct (&)[1], bool) called!\n";

TEST(Function, KindsAreNumberedFromSinToTrunc)
{
  for (const Row& row : kRows) {
    EXPECT_EQ(row.type, row.code) << row.name;
    ASSERT_NE(FindElementaryFunction(row.type), nullptr) << row.name;
    EXPECT_EQ(FindElementaryFunction(row.type)->type, row.type);
    EXPECT_STREQ(FindElementaryFunction(row.type)->name, row.name);
  }
  for (const int code : {-1, 0, 1, 4, 5, 6, 7, 8, 9, 10, 31}) {
    EXPECT_EQ(FindElementaryFunction(static_cast<ExprType>(code)), nullptr) << code;
  }
}

TEST(Function, PrintsItsNameAndOperand)
{
  const ScopedGlobal global;
  for (const Row& row : kRows) {
    const Ref function(row.type, Variable("y", Mpf(1.0)));
    EXPECT_EQ(function->Type(), row.type);
    EXPECT_EQ(TextOf(function), std::string(row.name) + "([y])");
  }
}

TEST(Function, OfANumberIsANumber)
{
  for (const int precisionBits : {80, 256}) {
    const ScopedGlobal global;
    mpf_set_default_prec(static_cast<mp_bitcnt_t>(precisionBits));
    for (const Row& row : kRows) {
      SCOPED_TRACE(row.name);
      const Mpf x(row.argument);
      const Ref folded(row.type, Ref(new Number(x)));
      EXPECT_EQ(folded->Type(), kNumber);
      EXPECT_TRUE(IsExactly(Exact(Evaluate(row.function, x)), InitValueOf(folded)));
    }
  }
}

TEST(Function, OfANumberFollowsTheModeInForce)
{
  const ScopedGlobal global;
  const Ref number(new Number("-5"));
  EXPECT_TRUE(IsExactly(1, InitValueOf(Ref(kExp, number))));
  global->_SIMPLIFYSMALL = false;
  EXPECT_NEAR(Exact(InitValueOf(Ref(kExp, number))).get_d(), 0.006737947, 1e-9);
}

TEST(Function, OfANumberOutsideTheDomainEndsTheRun)
{
  const ScopedGlobal global;
  EXPECT_EXIT(Ref(kLn, Ref(new Number("-1"))), testing::ExitedWithCode(1),
              ExactText("\n#(COMP) ln(x): x < 0\n"));
}

TEST(Function, InitialValueIsThatOfTheFunctionAtTheInitialValueOfTheOperand)
{
  for (const int precisionBits : {80, 256}) {
    const ScopedGlobal global;
    mpf_set_default_prec(static_cast<mp_bitcnt_t>(precisionBits));
    for (const Row& row : kRows) {
      const Mpf x(row.argument);
      const Ref function(row.type, Variable("y", x));
      EXPECT_TRUE(IsExactly(Exact(Evaluate(row.function, x)), InitValueOf(function))) << row.name;
    }
  }
}

TEST(Function, InitialValueIsWorkedOutAtEveryRequest)
{
  const ScopedGlobal global;
  const Ref y = Variable("y", Mpf(1.0));
  const Ref root(kSqrt, y);
  EXPECT_TRUE(IsExactly(1, InitValueOf(root)));
  VariableOf(y).SetStartValue(Mpf(4.0));
  EXPECT_TRUE(IsExactly(2, InitValueOf(root)));
}

TEST(Function, InitialValueConvertsTheOperand)
{
  // The temporary equation of the inner function stays; the outer function is not converted.
  const ScopedGlobal global;
  ASSERT_TRUE(ParsedInput("w = sqrt(exp(u)); u' = 1 & 2;").accepted);
  const Ref root = VariableNamed("w").RightHandSide();
  const Mpf inner = Evaluate(functions::exp, Mpf(2.0));
  EXPECT_TRUE(IsExactly(Exact(Evaluate(SquareRoot, inner)), InitValueOf(root)));
  EXPECT_EQ(TextOf(root), "sqrt([%0])");
  EXPECT_EQ(PrintedRightHandSide("%0"), "[%0]");
  EXPECT_EQ(global->_EQUATIONS.size(), 3u);
}

TEST(Function, OnlySinHasADerivative)
{
  const ScopedGlobal global;
  ASSERT_TRUE(ParsedInput("y' = r & 1; r' = y;").accepted);
  const Ref y = VariableNamed("r").RightHandSide()->Convert();
  for (const Row& row : kRows) {
    const Ref function(row.type, y);
    if (row.type == kSin) {
      EXPECT_EQ(TextOf(function->Derivative()), "(r * cos([y]))");
    } else {
      EXPECT_TRUE(function->Derivative().IsEmpty()) << row.name;
    }
  }
}

TEST(Function, DerivativeOfTheSineOfTimeIsTheCosine)
{
  const ScopedGlobal global;
  const Ref sine(kSin, Ref(new Time));
  EXPECT_EQ(TextOf(sine->Derivative()), "cos(t)");
  global->_SIMPLIFYSMALL = false;
  const Ref unsimplified(kSin, Ref(new Time));
  EXPECT_EQ(TextOf(unsimplified->Derivative()), "( 1.00000000000e+00 * cos(t))");
}

TEST(Function, HasNoTerms)
{
  const ScopedGlobal global;
  for (const Row& row : kRows) {
    const Ref function(row.type, Variable("y", Mpf(1.0)));
    Mpf term;
    EXPECT_EXIT(function->GetTerm(0, term), testing::ExitedWithCode(1), ExactText(kNoTerms))
        << row.name;
  }
}

TEST(Function, HasNoValueApartFromSinAndTrunc)
{
  const ScopedGlobal global;
  for (const Row& row : kRows) {
    if (row.type == kSin || row.type == kTrunc) continue;
    const Ref function(row.type, Variable("y", Mpf(1.0)));
    Mpf value;
    EXPECT_EXIT(function->Value(value), testing::ExitedWithCode(1), ExactText(kNoValue))
        << row.name;
  }
}

TEST(Function, SinAndTruncTakeTheValueOfTheOperandAtTheEndOfTheStep)
{
  const ScopedGlobal global;
  mpf_set_str(global->_T, "2.7", 10);
  const Ref t(new Time);
  Mpf value;
  Ref(kSin, t)->Value(value);
  EXPECT_TRUE(IsExactly(Exact(Evaluate(functions::sin, global->_T)), value));
  Ref(kTrunc, t)->Value(value);
  EXPECT_TRUE(IsExactly(2, value));
}

TEST(Function, TruncRoundsTowardZero)
{
  const ScopedGlobal global;
  const struct {
    const char* t;
    int expected;
  } rows[] = {{"0.99", 0}, {"-0.99", 0}, {"2", 2}, {"-2", -2}, {"-2.7", -2}};
  for (const auto& [t, expected] : rows) {
    mpf_set_str(global->_T, t, 10);
    Mpf value;
    Ref(kTrunc, Ref(new Time))->Value(value);
    EXPECT_TRUE(IsExactly(expected, value)) << t;
  }
}

}  // namespace
}  // namespace varno
