#include <string>
#include <string_view>

#include <gmp.h>
#include <gtest/gtest.h>

#include "tests/varno/support/parsed_input.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"
#include "varno/expr/equation.h"
#include "varno/expr/number.h"
#include "varno/functions/functions.h"

namespace varno {

namespace {

/// The expression tree of a text, printed; what the parser reported when it is none.
std::string Tree(const std::string& text)
{
  const ParsedInput input("x = " + text + ';');
  return input.accepted ? PrintedRightHandSide("x") : input.log;
}

/// The value of a constant expression.
Mpf Constant(const std::string& text)
{
  const ParsedInput input("x(0) = " + text + ';');
  EXPECT_TRUE(input.accepted) << input.log;
  return Expr::Global->_STARTVALUES.at("x");
}

std::string ErrorLine(const std::string& message, const std::string& token, int line)
{
  return "#(ERR) ERROR: " + message + " \"" + token + "\" at line #" + std::to_string(line) + '\n';
}

struct TextAndTree {
  const char* text;
  const char* tree;
};

void ExpectTrees(std::initializer_list<TextAndTree> rows)
{
  for (const auto& [text, tree] : rows) EXPECT_EQ(Tree(text), tree) << text;
}

struct WrongInput {
  std::string text;
  std::string token;
  int line = 1;
};

void ExpectParseErrors(std::initializer_list<WrongInput> rows)
{
  for (const auto& [text, token, line] : rows) {
    const ParsedInput input(text);
    EXPECT_FALSE(input.accepted) << text;
    EXPECT_EQ(input.log, ErrorLine("parse error", token, line)) << text;
  }
}

class Grammar : public testing::Test {
 protected:
  const ScopedGlobal global;
};

// ------------------------------------------------------------------------------
// Expressions

TEST_F(Grammar, OperatorsOfOneRankGoFromLeftToRight)
{
  ExpectTrees({
      {"a - b - c", "((a - b) - c)"},
      {"a + b - c + d", "(((a + b) - c) + d)"},
      {"a / b / c", "((a / b) / c)"},
      {"a * b / c * d", "(((a * b) / c) * d)"},
  });
}

TEST_F(Grammar, ProductsBindTighterThanSums)
{
  ExpectTrees({
      {"a + b * c", "(a + (b * c))"},
      {"a - b * c", "(a - (b * c))"},
      {"a * b - c / d", "((a * b) - (c / d))"},
      {"a + b / c + d", "((a + (b / c)) + d)"},
  });
}

TEST_F(Grammar, ASignBindsTighterThanAProduct)
{
  ExpectTrees({
      {"-a * b", "((-a) * b)"},
      {"-a / b", "((-a) / b)"},
      {"a * -b", "(a * (-b))"},
      {"-a - -b", "((-a) - (-b))"},
      {"--a", "(-(-a))"},
      {"-sin(a) * b", "((-sin(a)) * b)"},
  });
}

TEST_F(Grammar, APlusSignAndParenthesesLeaveNoTrace)
{
  ExpectTrees({
      {"+a", "a"},
      {"+-+a", "(-a)"},
      {"a + +b", "(a + b)"},
      {"((a))", "a"},
  });
}

TEST_F(Grammar, ParenthesesChangeTheOrder)
{
  ExpectTrees({
      {"a - (b - c)", "(a - (b - c))"},
      {"(a + b) * c", "((a + b) * c)"},
      {"-(a * b)", "(-(a * b))"},
      {"a / (b * c)", "(a / (b * c))"},
  });
}

TEST_F(Grammar, FunctionsApplyToAnExpressionInParentheses)
{
  ExpectTrees({
      {"sin(a)", "sin(a)"},
      {"cos(a)", "cos(a)"},
      {"tan(a)", "tan(a)"},
      {"cotan(a)", "cotan(a)"},
      {"asin(a)", "asin(a)"},
      {"acos(a)", "acos(a)"},
      {"atan(a)", "atan(a)"},
      {"acotan(a)", "acotan(a)"},
      {"sinh(a)", "sinh(a)"},
      {"cosh(a)", "cosh(a)"},
      {"tanh(a)", "tanh(a)"},
      {"cotanh(a)", "cotanh(a)"},
      {"asinh(a)", "asinh(a)"},
      {"acosh(a)", "acosh(a)"},
      {"atanh(a)", "atanh(a)"},
      {"argcotanh(a)", "acotanh(a)"},
      {"sqrt(a)", "sqrt(a)"},
      {"exp(a)", "exp(a)"},
      {"ln(a)", "ln(a)"},
      {"trunc(a)", "trunc(a)"},
      {"exp(-a + ln(b) * c)", "exp(((-a) + (ln(b) * c)))"},
  });
}

TEST_F(Grammar, SynonymsMakeTheSameFunction)
{
  ExpectTrees({
      {"tg(a)", "tan(a)"},
      {"cotg(a)", "cotan(a)"},
      {"arctg(a)", "atan(a)"},
      {"argsinh(a)", "asinh(a)"},
      {"argcotgh(a)", "acotanh(a)"},
  });
}

TEST_F(Grammar, TimeNumbersAndPiAreLeaves)
{
  ExpectTrees({
      {"t", "t"},
      {"2", " 2.00000000000e+00"},
      {"2.5e-3", " 2.50000000000e-03"},
      {"pi", " 3.14159265358e+00"},
      {"2 * t", "( 2.00000000000e+00 * t)"},
  });
}

TEST_F(Grammar, ConstantPartsFoldWhileTheTreeIsBuilt)
{
  ExpectTrees({
      {"1 + 2", " 3.00000000000e+00"},
      {"a + 2 * 3", "(a +  6.00000000000e+00)"},
      {"-2 * a", "(-2.00000000000e+00 * a)"},
      {"sqrt(9) / a", "( 3.00000000000e+00 / a)"},
      // From left to right: (a + 1) + 2 has no constant part.
      {"a + 1 + 2", "((a +  1.00000000000e+00) +  2.00000000000e+00)"},
  });
}

TEST_F(Grammar, BigIntegersAreExact)
{
  const char* const digits = "123456789012345678901";
  ASSERT_EQ(Tree(digits), " 1.23456789012e+20");
  Number& leaf = static_cast<Number&>(*VariableNamed("x").RightHandSide());
  EXPECT_EQ(mpf_cmp(leaf.Constant(), Mpf(digits)), 0);
  EXPECT_EQ(mpf_cmp(Constant(digits), Mpf(digits)), 0);
}

TEST_F(Grammar, AReferenceKeepsTheDerivativeOrderAndPrintsTheName)
{
  const struct {
    const char* text;
    int order;
  } rows[] = {{"y", 0}, {"y'", 1}, {"y''", 2}, {"y'3", 3}};
  for (const auto& [text, order] : rows) {
    ASSERT_EQ(Tree(text), "y");
    const Expr& leaf = *VariableNamed("x").RightHandSide();
    ASSERT_EQ(leaf.Type(), kEquation);
    EXPECT_EQ(static_cast<const Equation&>(leaf).DerivativeOrder(), order) << text;
  }
}

// ------------------------------------------------------------------------------
// Constant expressions

TEST_F(Grammar, ConstantExpressionsHaveTheSamePrecedences)
{
  const struct {
    const char* text;
    double value;
  } rows[] = {
      {"1 + 2 * 3", 7},
      {"(1 + 2) * 3", 9},
      {"8 - 4 - 2", 2},
      {"8 / 4 / 2", 1},
      {"-2 * 3", -6},
      {"2 * -3", -6},
      {"--2", 2},
      {"2 - -2", 4},
      {"+2", 2},
      {"-(1 / 2)", -0.5},
      {"1e2 + .5", 100.5},
      {"6 / 4 * 2", 3},
      {"0", 0},
      {"-0", 0},
      {"sqrt(16) * 2 - 1", 7},
      {"trunc(-1.5)", -1},
  };
  for (const auto& [text, value] : rows) EXPECT_EQ(mpf_cmp_d(Constant(text), value), 0) << text;
}

TEST_F(Grammar, ConstantExpressionsAreComputedAtThePrecisionInForce)
{
  mpf_set_default_prec(300);
  Mpf third(1.0);
  mpf_div_ui(third, third, 3);
  EXPECT_EQ(mpf_cmp(Constant("1 / 3"), third), 0);
}

TEST_F(Grammar, PiInAConstantIsThatOfTheRecord)
{
  Mpf half;
  mpf_div_ui(half, Expr::Global->_PI, 2);
  EXPECT_EQ(mpf_cmp(Constant("pi"), Expr::Global->_PI), 0);
  EXPECT_EQ(mpf_cmp(Constant("pi / 2"), half), 0);
}

TEST_F(Grammar, FunctionsOfConstantsAreEvaluated)
{
  const struct {
    const char* name;
    double argument;
    void (*function)(mpf_t& result, mpf_ptr x);
  } rows[] = {
      {"sin", 0.5, functions::sin},
      {"cos", 0.5, functions::cos},
      {"tan", 0.5, functions::tan},
      {"cotan", 0.5, functions::cotan},
      {"asin", 0.5, functions::asin},
      {"acos", 0.5, functions::acos},
      {"atan", 0.5, functions::atan},
      {"acotan", 0.5, functions::acotan},
      {"sinh", 0.5, functions::sinh},
      {"cosh", 0.5, functions::cosh},
      {"tanh", 0.5, functions::tanh},
      {"cotanh", 0.5, functions::cotanh},
      {"asinh", 0.5, functions::asinh},
      {"acosh", 1.5, functions::acosh},
      {"atanh", 0.5, functions::atanh},
      {"argcotanh", 1.5, functions::acotanh},
      {"exp", 0.5, functions::exp},
      {"ln", 1.5, functions::ln},
      {"sqrt", 0.5, [](mpf_t& result, mpf_ptr x) { mpf_sqrt(result, x); }},
      {"trunc", 1.5, [](mpf_t& result, mpf_ptr x) { mpf_trunc(result, x); }},
  };
  for (const auto& [name, argument, function] : rows) {
    Mpf expected(argument);
    function(expected, expected);
    const std::string text = std::string(name) + '(' + std::to_string(argument) + ')';
    EXPECT_EQ(mpf_cmp(Constant(text), expected), 0) << text;
  }
}

TEST_F(Grammar, AConstantExpressionHasNoNamesNoTimeAndNoStepFunction)
{
  ExpectParseErrors({
      {"y' = y & t;", "t"},
      {"y' = y & z;", "z"},
      {"y' = y & 1 + sin(t);", "t"},
      {"y' = y & [t < 1 : 2];", "["},
      {"y(0) = y;", "y"},
  });
}

// ------------------------------------------------------------------------------
// Statements

TEST_F(Grammar, TheExampleOfTheUsageTextMakesTwoDifferentialEquations)
{
  ASSERT_TRUE(ParsedInput("y1'= t  & 0;\ny2'= y1 & 1;\n").accepted);
  ASSERT_EQ(global->_EQUATIONS.size(), 2U);
  EXPECT_EQ(VariableNamed("y1").Type(), kDifferential);
  EXPECT_EQ(VariableNamed("y2").Type(), kDifferential);
  EXPECT_EQ(PrintedRightHandSide("y1"), "t");
  EXPECT_EQ(PrintedRightHandSide("y2"), "y1");
  EXPECT_EQ(mpf_cmp_ui(global->_STARTVALUES.at("y1"), 0), 0);
  EXPECT_EQ(mpf_cmp_ui(global->_STARTVALUES.at("y2"), 1), 0);
}

TEST_F(Grammar, AnEquationWithoutADerivativeMarkIsAlgebraic)
{
  ASSERT_TRUE(ParsedInput("x = sin(t) * 2; y'0 = t;").accepted);
  EXPECT_EQ(VariableNamed("x").Type(), kAlgebraic);
  EXPECT_EQ(PrintedRightHandSide("x"), "(sin(t) *  2.00000000000e+00)");
  EXPECT_EQ(VariableNamed("y").Type(), kAlgebraic);
}

TEST_F(Grammar, AnEquationWithoutAnInitialValueStoresNone)
{
  ASSERT_TRUE(ParsedInput("x = 1; y' = 2; z'' = 3;").accepted);
  EXPECT_TRUE(global->_STARTVALUES.empty());
}

TEST_F(Grammar, AnEquationOfOrderNIsASystemOfNVariables)
{
  ASSERT_TRUE(ParsedInput("y''' = y * t & 2;").accepted);
  const EquationTable& equations = global->_EQUATIONS;
  ASSERT_EQ(equations.size(), 3U);
  EXPECT_EQ(VariableNamed("y").RightHandSide(), equations.at("y'"));
  EXPECT_EQ(VariableNamed("y'").RightHandSide(), equations.at("y''"));
  EXPECT_EQ(PrintedRightHandSide("y''"), "(y * t)");
  for (const auto& [name, variable] : equations) EXPECT_EQ(variable->Type(), kDifferential) << name;
}

TEST_F(Grammar, TheInitialValueOfAnEquationOfOrderNBelongsToTheVariableItself)
{
  ASSERT_TRUE(ParsedInput("y''' = y & 2;").accepted);
  ASSERT_EQ(global->_STARTVALUES.size(), 1U);
  EXPECT_EQ(mpf_cmp_ui(global->_STARTVALUES.at("y"), 2), 0);
}

TEST_F(Grammar, ADerivativeOrderMayBeANumber)
{
  ASSERT_TRUE(ParsedInput("y'2 = y; y'1(0) = 4;").accepted);
  EXPECT_EQ(VariableNamed("y").RightHandSide(), global->_EQUATIONS.at("y'"));
  EXPECT_EQ(mpf_cmp_ui(global->_STARTVALUES.at("y'"), 4), 0);
}

TEST_F(Grammar, StartStatementsGiveValuesAndDerivativesAtZero)
{
  const ParsedInput input("y(0) = 1; y'(0.0) = 2; y''(0e5) = -(1 / 2);");
  EXPECT_TRUE(input.accepted);
  EXPECT_EQ(input.log, "");
  ASSERT_EQ(global->_STARTVALUES.size(), 3U);
  EXPECT_EQ(mpf_cmp_d(global->_STARTVALUES.at("y"), 1), 0);
  EXPECT_EQ(mpf_cmp_d(global->_STARTVALUES.at("y'"), 2), 0);
  EXPECT_EQ(mpf_cmp_d(global->_STARTVALUES.at("y''"), -0.5), 0);
  EXPECT_TRUE(global->_EQUATIONS.empty());
}

TEST_F(Grammar, AStartPointOtherThanZeroIsReportedAndAccepted)
{
  const std::string message = "Start condition must be defined for zero, not for other value";
  const ParsedInput input("y'(1) = 2;\ny(0.5)\n= 3;");
  EXPECT_TRUE(input.accepted);
  EXPECT_EQ(input.log, ErrorLine(message, "1", 1) + ErrorLine(message, "0.5", 2));
  EXPECT_EQ(mpf_cmp_ui(global->_STARTVALUES.at("y'"), 2), 0);
  EXPECT_EQ(mpf_cmp_ui(global->_STARTVALUES.at("y"), 3), 0);
}

TEST_F(Grammar, AWrongStartPointIsReportedBeforeAnErrorBehindIt)
{
  const ParsedInput input("y'(1 = 2;");
  EXPECT_FALSE(input.accepted);
  EXPECT_EQ(input.log,
            ErrorLine("Start condition must be defined for zero, not for other value", "1", 1) +
                ErrorLine("parse error", "=", 1));
}

TEST_F(Grammar, AStartPointIsAnUnsignedNumber)
{
  ExpectParseErrors({
      {"y(-0) = 1;", "-"},
      {"y(pi) = 1;", "pi"},
      {"y(0 * 1) = 1;", "*"},
      {"y() = 1;", ")"},
  });
}

TEST_F(Grammar, AnyNumberOfStatementsIsAccepted)
{
  std::string text;
  for (int i = 0; i < 20'000; ++i) text += "y(0) = " + std::to_string(i) + ";\n";
  EXPECT_TRUE(ParsedInput(text).accepted);
  EXPECT_EQ(mpf_cmp_ui(global->_STARTVALUES.at("y"), 19'999), 0);
}

// ------------------------------------------------------------------------------
// Errors

TEST_F(Grammar, AnInputWithoutStatementsIsAnErrorAtItsEnd)
{
  ExpectParseErrors({
      {"", ""},
      {"\n\n", "", 3},
      {"// comment", "", 2},
      {"/* comment", ""},
  });
}

TEST_F(Grammar, AnErrorNamesTheFirstTokenThatNoRuleAllows)
{
  ExpectParseErrors({
      {"y' = x^2;", "^"},
      {"y' = ;", ";"},
      {"= 1;", "="},
      {"1 = y;", "1"},
      {"y = 1;;", ";"},
      {"y' = (a;", ";"},
      {"y' = a);", ")"},
      {"y' = a b;", "b"},
      {"y' = 2y;", "y"},
      {"y' = a ** b;", "*"},
      {"y' = a +;", ";"},
      {"y' = a, b;", ","},
      {"y' = a < b;", "<"},
      {"y' = a & 1 & 2;", "&"},
      {"y(0) = 1 & 2;", "&"},
      {"y(0) 1;", "1"},
      {"y' = 0x10;", "x10"},
      {"y' = 1.5.5;", ".5"},
  });
}

TEST_F(Grammar, KeywordsAreNotNames)
{
  ExpectParseErrors({
      {"t' = 1;", "t"},
      {"sin = 1;", "sin"},
      {"pi = 3;", "pi"},
      {"t(0) = 1;", "t"},
      {"x = t';", "'"},
  });
}

TEST_F(Grammar, AFunctionWantsOneArgumentInParentheses)
{
  ExpectParseErrors({
      {"x = sin a;", "a"},
      {"x = sin();", ")"},
      {"x = sin(a, b);", ","},
      {"x = sin;", ";"},
      {"x = acotanh(2);", "("},
  });
}

TEST_F(Grammar, ADerivativeMarkStandsBehindAName)
{
  ExpectParseErrors({
      {"'y = 1;", "'"},
      {"y' ' = 1;", "'"},
      {"y''2 = 1;", "2"},
      {"x = (y)';", "'"},
      {"x = 2'3;", "'3"},
  });
}

TEST_F(Grammar, AnErrorNamesTheLineOfItsToken)
{
  ExpectParseErrors({
      {"x = 1;\n\nz = = 2;\n", "=", 3},
      {"x = 1\ny = 2;", "y", 2},
      {"x /* 1\n2\n3 */ 4;", "4", 3},
      {"x = // 1\n)", ")", 2},
  });
}

TEST_F(Grammar, AnErrorAtTheEndOfTheInputHasAnEmptyToken)
{
  ExpectParseErrors({
      {"y' = y", ""},
      {"y' = y\n", "", 2},
      {"y' = y // end", "", 2},
      {"y' = y; x", ""},
      {"x = (1", ""},
  });
}

TEST_F(Grammar, BytesOutsideTheLanguageAreErrors)
{
  for (const char* const text :
       {"@", "#", "$", "!", "?", "{", "\"", "\\", "~", "\x01", "\x7f", "\x80", "\xff"}) {
    ExpectParseErrors({{std::string("x = 1 ") + text + " 2;", text}});
  }
  ExpectParseErrors({
      {std::string("x = 1\0;", 7), ""},
      {"x = \u00e4;", "\xc3"},
  });
}

TEST_F(Grammar, OnlyTheFirstErrorIsReported)
{
  ExpectParseErrors({{"x = ^;\ny = ^;\nz = ^;\n", "^"}});
}

TEST_F(Grammar, StatementsBeforeAnErrorHaveBeenEntered)
{
  EXPECT_FALSE(ParsedInput("x = a; y' = b & 3; z = ;").accepted);
  EXPECT_EQ(PrintedRightHandSide("x"), "a");
  EXPECT_EQ(mpf_cmp_ui(global->_STARTVALUES.at("y"), 3), 0);
  EXPECT_EQ(global->_EQUATIONS.size(), 2U);
}

TEST_F(Grammar, AnEquationOrStartStatementOfAnOrderAboveTenThousandIsTooLarge)
{
  const struct {
    std::string text;
    std::string token;
  } rows[] = {
      {"y'10001 = 1;", "'10001"},
      {"y'10001(0) = 1;", "'10001"},
      {"y'99999999999999999999 = 1;", "'99999999999999999999"},
      {'y' + std::string(10'001, '\'') + " = 1;", std::string(10'001, '\'')},
  };
  for (const auto& [text, token] : rows) {
    const ParsedInput input(text);
    EXPECT_FALSE(input.accepted) << text;
    EXPECT_EQ(input.log, ErrorLine("derivative order too large", token, 1)) << text;
  }
}

TEST_F(Grammar, AReferenceOfAnyOrderIsTheVariable)
{
  for (const std::string& order :
       {std::string("'10000"), std::string("'10001"), std::string("'99999999999999999999"),
        std::string(10'001, '\'')}) {
    EXPECT_EQ(Tree('y' + order), "y") << order;
  }
}

TEST_F(Grammar, TheStackHoldsTenThousandSymbols)
{
  constexpr int kDepth = 9'990;
  EXPECT_EQ(Tree(std::string(kDepth, '(') + 'a' + std::string(kDepth, ')')), "a");
}

TEST_F(Grammar, DeeperNestingThanTheStackHoldsIsReported)
{
  const ParsedInput input("x = 1;\ny = " + std::string(20'000, '('));
  EXPECT_FALSE(input.accepted);
  EXPECT_EQ(input.log, ErrorLine("parser stack overflow", "(", 2));
}

// ------------------------------------------------------------------------------
// Step functions

TEST_F(Grammar, StepFunctionsWriteTheirWordsInTheOrderOfReduction)
{
  const struct {
    const char* text;
    const char* words;
  } rows[] = {
      {"[t < 1 : 2]", "steplimit2 stepfrep2 stepfT "},
      {"[a < 1 : 2]", "steplimit2 stepfrep2 stepf "},
      {"[t < 1, 2 : 3]", "steplimit2 steplimit1 stepfrep2 stepfT "},
      {"[t < 1, 2, 3 : 4]", "steplimit2 steplimit1 steplimit1 stepfrep2 stepfT "},
      {"[t < 1 : 2; 3 : 4]", "steplimit2 steplimit2 stepfrep2 stepfrep1 stepfT "},
      {"[a < -1 + 2 : sin(0); 3, pi : 4; 5 : 6]",
       "steplimit2 steplimit2 steplimit1 steplimit2 stepfrep2 stepfrep1 stepfrep1 stepf "},
      {"a * [t < 1 : 2] + [b < 1 : 2]", "steplimit2 stepfrep2 stepfT steplimit2 stepfrep2 stepf "},
  };
  for (const auto& [text, words] : rows) {
    const ParsedInput input(std::string("x = ") + text + ';');
    EXPECT_TRUE(input.accepted) << text;
    EXPECT_EQ(input.log, words) << text;
  }
}

TEST_F(Grammar, TheWordOfAStepFunctionComesBeforeAnErrorBehindIt)
{
  const struct {
    const char* text;
    std::string words;
    const char* token;
  } rows[] = {
      {"x = [t < 1 2 : 3];", "steplimit2 ", "2"},
      {"x = [t < 1, 2; 3];", "steplimit2 steplimit1 ", ";"},
      {"x = [t < 1 : 2 3];", "steplimit2 stepfrep2 ", "3"},
      {"x = [t < 1 : 2;];", "steplimit2 ", "]"},
      {"x = [t < 1 : 2] 3;", "steplimit2 stepfrep2 stepfT ", "3"},
      {"x = [t < y : 2];", "", "y"},
      {"x = [t > 1 : 2];", "", ">"},
      {"x = [t' < 1 : 2];", "", "'"},
      {"x = [1 < 1 : 2];", "", "1"},
  };
  for (const auto& [text, words, token] : rows) {
    const ParsedInput input(text);
    EXPECT_FALSE(input.accepted) << text;
    EXPECT_EQ(input.log, words + ErrorLine("parse error", token, 1)) << text;
  }
}

TEST_F(Grammar, TheEquationWithTheStepFunctionIsMarkedAndNoOther)
{
  ASSERT_TRUE(
      ParsedInput("a = 1; b = t + [t < 1 : 2]; c = 1; d'' = [t < 1 : 2]; e' = 1;").accepted);
  for (const auto& [name, variable] : global->_EQUATIONS) {
    EXPECT_EQ(VariableOf(variable).UsesStepFunction(), name == "b" || name == "d'") << name;
  }
}

TEST_F(Grammar, AStepFunctionBeforeAnErrorDoesNotMarkTheNextInput)
{
  ASSERT_FALSE(ParsedInput("x = [t < 1 : 2] 3;").accepted);
  ASSERT_TRUE(ParsedInput("x = 1;").accepted);
  EXPECT_FALSE(VariableNamed("x").UsesStepFunction());
}

}  // namespace

}  // namespace varno
