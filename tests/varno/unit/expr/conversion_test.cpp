#include "varno/expr/conversion.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/exact_text.h"
#include "tests/support/rational.h"
#include "tests/varno/support/evaluate.h"
#include "tests/varno/support/node_probe.h"
#include "tests/varno/support/parsed_input.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"
#include "varno/expr/initialization.h"
#include "varno/functions/functions.h"

namespace varno {

using namespace support;
namespace {

using Texts = std::vector<std::string>;

void Read(const std::string& input)
{
  EXPECT_TRUE(ParsedInput(input).accepted) << input;
}

/// Prepares equations as a run does before the integration.
void ReadAndConvert(const std::string& input)
{
  Read(input);
  InitializeEquations();
}

/// The names in the order of the equation table.
Texts Names()
{
  Texts names;
  for (const auto& [name, variable] : Expr::Global->_EQUATIONS) names.push_back(name);
  return names;
}

Mpf StartValueOf(const std::string& name)
{
  return InitValueOf(Expr::Global->_EQUATIONS.at(name));
}

// --- One function of a variable: what each conversion makes ---

struct Row {
  const char* function;
  /// A start value inside the domain and not exact in binary.
  const char* u0;
  /// The initial values of %0, %1, ... at u0.
  std::vector<MpfFunction> initialValues;
  /// The right-hand sides of %0, %1, ... for the argument u with u' = v.
  Texts rightHandSides;
  /// The same for the argument t + 1/2, with u' = 1.
  Texts simplified;
  const char* returned;
};

void NegativeSine(mpf_t& out, mpf_ptr x)
{
  functions::sin(out, x);
  mpf_neg(out, out);
}

void Root(mpf_t& out, mpf_ptr x)
{
  mpf_sqrt(out, x);
}

void Twice(mpf_t& out, mpf_ptr x)
{
  mpf_add(out, x, x);
}

void MinusTwice(mpf_t& out, mpf_ptr x)
{
  Twice(out, x);
  mpf_neg(out, out);
}

void OnePlusSquare(mpf_t& out, mpf_ptr x)
{
  mpf_mul(out, x, x);
  mpf_add_ui(out, out, 1);
}

void OneMinusSquare(mpf_t& out, mpf_ptr x)
{
  mpf_mul(out, x, x);
  mpf_ui_sub(out, 1, out);
}

void RootOfOneMinusSquare(mpf_t& out, mpf_ptr x)
{
  OneMinusSquare(out, x);
  mpf_sqrt(out, out);
}

const Row kRows[] = {
    {"sin",
     "1/3",
     {functions::sin, functions::cos},
     {"([%1] * [v])", "((-[%0]) * [v])"},
     {"[%1]", "(-[%0])"},
     "[%0]"},
    {"cos",
     "1/3",
     {functions::cos, NegativeSine},
     {"([%1] * [v])", "((-[%0]) * [v])"},
     {"[%1]", "(-[%0])"},
     "[%0]"},
    {"tan",
     "1/3",
     {functions::tan},
     {"([v] + (([%0] * [%0]) * [v]))"},
     {"( 1.00000000000e+00 + ([%0] * [%0]))"},
     "[%0]"},
    {"cotan",
     "1/3",
     {functions::cotan},
     {"(-([v] + (([%0] * [%0]) * [v])))"},
     {"(-( 1.00000000000e+00 + ([%0] * [%0])))"},
     "[%0]"},
    {"asin",
     "1/3",
     {functions::asin, RootOfOneMinusSquare},
     {"([v] / [%1])", "((-[u]) * ([v] / [%1]))"},
     {"( 1.00000000000e+00 / [%1])", "((-(t +  5.00000000000e-01)) * ( 1.00000000000e+00 / [%1]))"},
     "[%0]"},
    {"atan",
     "1/3",
     {Twice, OnePlusSquare, functions::atan},
     {"([v] *  2.00000000000e+00)", "([%0] * [v])", "([v] / [%1])"},
     {" 2.00000000000e+00", "[%0]", "( 1.00000000000e+00 / [%1])"},
     "[%2]"},
    {"acotan",
     "1/3",
     {Twice, OnePlusSquare, functions::acotan},
     {"([v] *  2.00000000000e+00)", "([%0] * [v])", "((-[v]) / [%1])"},
     {" 2.00000000000e+00", "[%0]", "(-1.00000000000e+00 / [%1])"},
     "[%2]"},
    {"sinh",
     "1/3",
     {functions::sinh, functions::cosh},
     {"([%1] * [v])", "([%0] * [v])"},
     {"[%1]", "[%0]"},
     "[%0]"},
    {"cosh",
     "1/3",
     {functions::cosh, functions::sinh},
     {"([%1] * [v])", "([%0] * [v])"},
     {"[%1]", "[%0]"},
     "[%0]"},
    {"tanh",
     "1/3",
     {functions::tanh},
     {"([v] - (([%0] * [%0]) * [v]))"},
     {"( 1.00000000000e+00 - ([%0] * [%0]))"},
     "[%0]"},
    {"cotanh",
     "1/3",
     {functions::cotanh},
     {"([v] - (([%0] * [%0]) * [v]))"},
     {"( 1.00000000000e+00 - ([%0] * [%0]))"},
     "[%0]"},
    {"atanh",
     "1/3",
     {MinusTwice, OneMinusSquare, functions::atanh},
     {"([v] * -2.00000000000e+00)", "([%0] * [v])", "([v] / [%1])"},
     {"-2.00000000000e+00", "[%0]", "( 1.00000000000e+00 / [%1])"},
     "[%2]"},
    {"argcotanh",
     "4/3",
     {MinusTwice, OneMinusSquare, functions::acotanh},
     {"([v] * -2.00000000000e+00)", "([%0] * [v])", "([v] / [%1])"},
     {},
     "[%2]"},
    {"sqrt",
     "1/3",
     {Root},
     {"(([v] / [%0]) *  5.00000000000e-01)"},
     {"(( 1.00000000000e+00 / [%0]) *  5.00000000000e-01)"},
     "[%0]"},
    {"exp", "1/3", {functions::exp}, {"([v] * [%0])"}, {"[%0]"}, "[%0]"},
    {"ln", "1/3", {functions::ln}, {"([v] / [%0])"}, {"( 1.00000000000e+00 / [%0])"}, "[%0]"},
};

std::string TemporaryName(std::size_t number)
{
  return '%' + std::to_string(number);
}

class Conversions : public testing::TestWithParam<int> {};

INSTANTIATE_TEST_SUITE_P(Bits, Conversions, testing::Values(80, 256),
                         testing::PrintToStringParamName());

TEST_P(Conversions, MakeTheirVariablesInOrder)
{
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.function);
    const ScopedGlobal global;
    mpf_set_default_prec(static_cast<mp_bitcnt_t>(GetParam()));
    Read("u' = v & " + std::string(row.u0) + "; v' = u & 2; w' = " + row.function + "(u);");
    const Mpf u0 = StartValueOf("u");
    InitializeEquations();

    EXPECT_EQ(PrintedRightHandSide("w"), row.returned);
    ASSERT_EQ(Names().size(), row.initialValues.size() + 3);
    for (std::size_t i = 0; i < row.initialValues.size(); ++i) {
      const std::string name = TemporaryName(i);
      SCOPED_TRACE(name);
      EXPECT_EQ(PrintedRightHandSide(name), row.rightHandSides[i]);
      const Mpf expected = Evaluate(row.initialValues[i], u0);
      EXPECT_TRUE(IsExactly(Exact(expected), StartValueOf(name)));
    }
  }
}

TEST_P(Conversions, SimplifyWhereTheArgumentGrowsLikeTime)
{
  for (const Row& row : kRows) {
    if (row.simplified.empty()) continue;
    SCOPED_TRACE(row.function);
    const ScopedGlobal global;
    mpf_set_default_prec(static_cast<mp_bitcnt_t>(GetParam()));
    ReadAndConvert("w' = " + std::string(row.function) + "(t + 1/2);");
    ASSERT_EQ(Names().size(), row.simplified.size() + 1);
    for (std::size_t i = 0; i < row.simplified.size(); ++i) {
      const std::string name = TemporaryName(i);
      EXPECT_EQ(PrintedRightHandSide(name), row.simplified[i]) << name;
      const Mpf expected = Evaluate(row.initialValues[i], Mpf(0.5));
      EXPECT_TRUE(IsExactly(Exact(expected), StartValueOf(name))) << name;
    }
  }
}

TEST(Conversion, KeepsFactorsOfOneWithoutSimplification)
{
  const ScopedGlobal global;
  global->_SIMPLIFYSMALL = false;
  ReadAndConvert("w' = sin(t);");
  EXPECT_EQ(PrintedRightHandSide("%0"), "([%1] *  1.00000000000e+00)");
  EXPECT_EQ(PrintedRightHandSide("%1"), "((-[%0]) *  1.00000000000e+00)");
}

TEST(Conversion, ATemporaryVariableHasItsValueAtOnceAndInTheFirstStep)
{
  const ScopedGlobal global;
  const Expr::Ref variable = MakeTemporaryVariable(Mpf("0.75"));
  EXPECT_EQ(TextOf(variable), "[%0]");
  EXPECT_TRUE(IsExactly({3, 4}, InitValueOf(variable)));
  EXPECT_TRUE(VariableOf(variable).RightHandSide().IsEmpty());

  ++global->_STEPNO;
  Mpf term;
  variable->GetTerm(0, term);
  EXPECT_TRUE(IsExactly({3, 4}, term));
}

TEST(Conversion, ASinSharesTheQuotientBetweenItsRightHandSides)
{
  const ScopedGlobal global;
  ReadAndConvert("w' = asin(t);");
  // One handle is the right-hand side of %0, the other the factor in that of %1.
  EXPECT_EQ(VariableNamed("%0").RightHandSide()->RefCount(), 2);
}

// --- Derivatives of the argument ---

TEST(Conversion, MultipliesByTheConvertedDerivativeOfTheArgument)
{
  const ScopedGlobal global;
  ReadAndConvert("w' = exp(2 * t);");
  EXPECT_EQ(PrintedRightHandSide("%0"), "( 2.00000000000e+00 * [%0])");
  EXPECT_TRUE(IsExactly(1, StartValueOf("%0")));
}

TEST(Conversion, ConvertsReferencesInTheDerivative)
{
  // u stands behind e in the table: its right-hand side is not yet converted.
  const ScopedGlobal global;
  ReadAndConvert("e' = exp(u); u' = u * v & 0.5; v' = 1 & 2;");
  EXPECT_EQ(PrintedRightHandSide("%0"), "(([u] * [v]) * [%0])");
}

TEST(Conversion, ASinTakesTheDerivativeAsItStands)
{
  // On purpose: where u is not yet converted, a reference by name remains.
  const ScopedGlobal global;
  ReadAndConvert("e' = asin(u); u' = v & 0.5; v' = 1 & 2;");
  EXPECT_EQ(PrintedRightHandSide("%0"), "(v / [%1])");
  EXPECT_EQ(PrintedRightHandSide("%1"), "((-[u]) * (v / [%1]))");
}

TEST(Conversion, ASinOfItsOwnVariableTakesItself)
{
  const ScopedGlobal global;
  ReadAndConvert("y' = asin(y) & 0.5;");
  EXPECT_EQ(PrintedRightHandSide("y"), "[%0]");
  EXPECT_EQ(PrintedRightHandSide("%0"), "(asin([y]) / [%1])");
}

TEST(Conversion, LnOfTimePlusOneStartsAtZeroAndDividesByItself)
{
  const ScopedGlobal global;
  ReadAndConvert("w' = ln(t + 1);");
  EXPECT_EQ(Names(), (Texts{"%0", "w"}));
  EXPECT_EQ(StartValueOf("%0").Sign(), 0);
  EXPECT_EQ(PrintedRightHandSide("%0"), "( 1.00000000000e+00 / [%0])");
}

// --- Several functions ---

TEST(Conversion, NumbersTheRightOperandFirst)
{
  const ScopedGlobal global;
  ReadAndConvert("w' = sin(t) + exp(t);");
  EXPECT_EQ(PrintedRightHandSide("w"), "([%1] + [%0])");
  EXPECT_EQ(PrintedRightHandSide("%0"), "[%0]");
  EXPECT_EQ(PrintedRightHandSide("%1"), "[%2]");
}

TEST(Conversion, NumbersTheArgumentBeforeTheFunction)
{
  const ScopedGlobal global;
  ReadAndConvert("w' = sin(exp(t));");
  EXPECT_EQ(PrintedRightHandSide("w"), "[%1]");
  EXPECT_EQ(PrintedRightHandSide("%0"), "[%0]");
  EXPECT_EQ(PrintedRightHandSide("%1"), "([%2] * [%0])");
  EXPECT_EQ(PrintedRightHandSide("%2"), "((-[%1]) * [%0])");
}

TEST(Conversion, NumbersEquationsInTheOrderOfTheTable)
{
  const ScopedGlobal global;
  ReadAndConvert("b' = exp(t); a' = sin(t);");
  EXPECT_EQ(PrintedRightHandSide("a"), "[%0]");
  EXPECT_EQ(PrintedRightHandSide("b"), "[%2]");
}

TEST(Conversion, TheSameFunctionTwiceMakesTwoSets)
{
  const ScopedGlobal global;
  ReadAndConvert("w' = sin(t) * sin(t);");
  EXPECT_EQ(Names(), (Texts{"%0", "%1", "%2", "%3", "w"}));
  EXPECT_EQ(PrintedRightHandSide("w"), "([%2] * [%0])");
}

TEST(Conversion, HyperbolicTangentAndCotangentDifferInTheirInitialValuesOnly)
{
  const ScopedGlobal global;
  ReadAndConvert("a' = tanh(t + 2); b' = cotanh(t + 2);");
  EXPECT_EQ(PrintedRightHandSide("%0"), "( 1.00000000000e+00 - ([%0] * [%0]))");
  EXPECT_EQ(PrintedRightHandSide("%1"), "( 1.00000000000e+00 - ([%1] * [%1]))");
  EXPECT_EQ(mpf_cmp(StartValueOf("%0"), Evaluate(functions::tanh, Mpf(2.0))), 0);
  EXPECT_EQ(mpf_cmp(StartValueOf("%1"), Evaluate(functions::cotanh, Mpf(2.0))), 0);
}

TEST(Conversion, RunsAfreshEveryTime)
{
  const ScopedGlobal global;
  Read("w' = tanh(t);");
  const Expr::Ref function = VariableNamed("w").RightHandSide();
  EXPECT_EQ(TextOf(function->Convert()), "[%0]");
  EXPECT_EQ(TextOf(function->Convert()), "[%1]");
  EXPECT_EQ(TextOf(function), "tanh(t)");
  EXPECT_EQ(Names(), (Texts{"%0", "%1", "w"}));
}

TEST(Conversion, NamesAboveNineSortBeforeThoseAboveOne)
{
  const ScopedGlobal global;
  ReadAndConvert(
      "_' = exp(t) + exp(t) + exp(t) + exp(t) + exp(t) + exp(t) + exp(t) + exp(t) + exp(t) +"
      "     exp(t) + exp(t) + exp(t); A' = 1;");
  EXPECT_EQ(Names(), (Texts{"%0", "%1", "%10", "%11", "%2", "%3", "%4", "%5", "%6", "%7", "%8",
                            "%9", "A", "_"}));
  EXPECT_EQ(PrintedRightHandSide("%11"), "[%11]");
}

TEST(Conversion, CountsOverTheWholeRun)
{
  const ScopedGlobal global;
  ReadAndConvert("a' = exp(t);");
  Read("b' = exp(t);");
  VariableNamed("b").SetRightHandSide(VariableNamed("b").RightHandSide()->Convert());
  EXPECT_EQ(PrintedRightHandSide("b"), "[%1]");
}

// --- Print flags ---

TEST(Conversion, TemporaryVariablesArePrintedByDefault)
{
  const ScopedGlobal global;
  ReadAndConvert("w' = sin(t);");
  EXPECT_TRUE(VariableNamed("%0").IsPrinted());
  EXPECT_TRUE(VariableNamed("%1").IsPrinted());
}

TEST(Conversion, ThePrintListsSelectTemporaryVariables)
{
  const ScopedGlobal global;
  global->_PRINTLIST = "w:%1:";
  ReadAndConvert("w' = sin(t);");
  EXPECT_FALSE(VariableNamed("%0").IsPrinted());
  EXPECT_TRUE(VariableNamed("%1").IsPrinted());
}

TEST(Conversion, TheNoPrintListExcludesTemporaryVariables)
{
  const ScopedGlobal global;
  global->_NOPRINTLIST = "%0:";
  ReadAndConvert("w' = sin(t);");
  EXPECT_FALSE(VariableNamed("%0").IsPrinted());
  EXPECT_TRUE(VariableNamed("%1").IsPrinted());
}

// --- Conversions that meet themselves ---

TEST(ConversionMeetingItself, UsesTheVariablesMadeOnTheWay)
{
  const ScopedGlobal global;
  ReadAndConvert("y' = sin(y) & 0.5;");
  EXPECT_EQ(Names(), (Texts{"%0", "%1", "y"}));
  EXPECT_EQ(PrintedRightHandSide("y"), "[%0]");
  EXPECT_EQ(PrintedRightHandSide("%0"), "([%1] * [%0])");
  EXPECT_EQ(PrintedRightHandSide("%1"), "((-[%0]) * [%0])");
  EXPECT_TRUE(IsExactly(Exact(Evaluate(functions::sin, Mpf(0.5))), StartValueOf("%0")));
}

TEST(ConversionMeetingItself, TakesInitialValuesFromTheUnconvertedArgument)
{
  const ScopedGlobal global;
  ReadAndConvert("y' = sin(exp(y)) & 0.5;");
  EXPECT_EQ(Names(), (Texts{"%0", "%1", "%2", "y"}));
  EXPECT_EQ(PrintedRightHandSide("y"), "[%0]");
  EXPECT_EQ(PrintedRightHandSide("%0"), "([%1] * ([%0] * [%2]))");
  EXPECT_EQ(PrintedRightHandSide("%1"), "((-[%0]) * ([%0] * [%2]))");
  EXPECT_EQ(PrintedRightHandSide("%2"), "([%0] * [%2])");

  const Mpf e = Evaluate(functions::exp, Mpf(0.5));
  EXPECT_TRUE(IsExactly(Exact(e), StartValueOf("%2")));
  EXPECT_TRUE(IsExactly(Exact(Evaluate(functions::sin, e)), StartValueOf("%0")));
  EXPECT_TRUE(IsExactly(Exact(Evaluate(functions::cos, e)), StartValueOf("%1")));
}

TEST(ConversionMeetingItself, KeepsTheNodesThatAreAtWork)
{
  // The initial value of tan replaces the operand sinh while sinh is being converted.
  const ScopedGlobal global;
  ReadAndConvert("y' = tanh(tan(sinh(y))) & 0.25;");
  EXPECT_EQ(Names(), (Texts{"%0", "%1", "%2", "%3", "y"}));
  EXPECT_EQ(PrintedRightHandSide("y"), "[%2]");
  EXPECT_EQ(PrintedRightHandSide("%0"), "([%1] * [%2])");
  EXPECT_EQ(PrintedRightHandSide("%1"), "([%0] * [%2])");
  const std::string tangent = "(([%1] * [%2]) + (([%3] * [%3]) * ([%1] * [%2])))";
  EXPECT_EQ(PrintedRightHandSide("%3"), tangent);
  EXPECT_EQ(PrintedRightHandSide("%2"), "(" + tangent + " - (([%2] * [%2]) * " + tangent + "))");
}

TEST(ConversionMeetingItself, UsesTheVariablesMadeWhileAskingForItsInitialValue)
{
  // The right exponential asks for y', so that the cosine meets itself. Its initial value makes the
  // innermost exponential ask for y' once more, and there the cosine makes its variables, behind
  // %0 of that exponential. No second set follows: %3 and %4 are the other exponentials.
  const ScopedGlobal global;
  ReadAndConvert("y' = cos(exp(exp(y)) + exp(y)) & 0.25;");
  EXPECT_EQ(Names(), (Texts{"%0", "%1", "%2", "%3", "%4", "y"}));
  EXPECT_EQ(PrintedRightHandSide("y"), "[%1]");
  EXPECT_EQ(PrintedRightHandSide("%0"), "([%1] * [%0])");
  EXPECT_EQ(PrintedRightHandSide("%3"), "([%1] * [%3])");
  EXPECT_EQ(PrintedRightHandSide("%4"), "(([%1] * [%0]) * [%4])");
  const std::string argument = "((([%1] * [%0]) * [%4]) + ([%1] * [%3]))";
  EXPECT_EQ(PrintedRightHandSide("%1"), "([%2] * " + argument + ")");
  EXPECT_EQ(PrintedRightHandSide("%2"), "((-[%1]) * " + argument + ")");
}

TEST(ConversionMeetingItself, GoesThroughOtherEquations)
{
  const ScopedGlobal global;
  ReadAndConvert("x' = sin(y) & 0.25; y' = cos(x) & 0.5;");
  // x first: its sine asks for y', whose cosine asks for x' again.
  EXPECT_EQ(PrintedRightHandSide("x"), "[%0]");
  EXPECT_EQ(PrintedRightHandSide("%0"), "([%1] * [%2])");
  EXPECT_EQ(PrintedRightHandSide("%1"), "((-[%0]) * [%2])");
  EXPECT_EQ(PrintedRightHandSide("%2"), "([%3] * [%0])");
  EXPECT_EQ(PrintedRightHandSide("%3"), "((-[%2]) * [%0])");
  // Then y: its cosine has met itself, too, and answers with the variable that it has.
  EXPECT_EQ(PrintedRightHandSide("y"), "[%2]");
  EXPECT_EQ(Names(), (Texts{"%0", "%1", "%2", "%3", "x", "y"}));

  EXPECT_TRUE(IsExactly(Exact(Evaluate(functions::cos, Mpf(0.25))), StartValueOf("%2")));
  EXPECT_TRUE(IsExactly(Exact(Evaluate(functions::sin, Mpf(0.5))), StartValueOf("%0")));
}

TEST(ConversionMeetingItself, LetsEarlierFunctionsAnswerFromThenOn)
{
  // a and b share the sine of t, which b makes anew; c meets itself, and d finds the variables that
  // b has made last.
  const ScopedGlobal global;
  ReadAndConvert("z' = sin(t); a' = exp(z); b' = exp(z); c' = exp(c); d' = exp(z);");
  EXPECT_EQ(PrintedRightHandSide("a"), "[%2]");
  EXPECT_EQ(PrintedRightHandSide("%2"), "([%0] * [%2])");
  EXPECT_EQ(PrintedRightHandSide("b"), "[%5]");
  EXPECT_EQ(PrintedRightHandSide("%5"), "([%3] * [%5])");
  EXPECT_EQ(PrintedRightHandSide("c"), "[%6]");
  EXPECT_EQ(PrintedRightHandSide("d"), "[%7]");
  EXPECT_EQ(PrintedRightHandSide("%7"), "([%3] * [%7])");
  EXPECT_EQ(PrintedRightHandSide("z"), "[%3]");
  EXPECT_EQ(Names().size(), 13u);
}

// --- How many variables functions of one another make: two for each sine or hyperbolic cosine ---

/// y' = sin(1*y)+sin(2*y)+...
std::string SumOfSines(int count)
{
  std::string text;
  for (int k = 1; k <= count; ++k) {
    text += (k == 1 ? "y' = sin(" : " + sin(") + std::to_string(k) + "*y)";
  }
  return text + " & 1;";
}

TEST(ConversionMeetingItself, MakesOneSetOfVariablesForEachFunctionOfASum)
{
  for (const int count : {1, 2, 3, 4, 8, 30}) {
    const ScopedGlobal global;
    ReadAndConvert(SumOfSines(count));
    EXPECT_EQ(Names().size(), 1u + 2u * static_cast<unsigned>(count));
  }
}

TEST(ConversionMeetingItself, MakesOneSetOfVariablesForEachFunctionOfCoupledOscillators)
{
  const ScopedGlobal global;
  std::string text;
  for (int i = 1; i <= 4; ++i) {
    text += "x" + std::to_string(i) + "' = 0";
    for (int j = 1; j <= 4; ++j) {
      if (j != i) text += " + cosh(x" + std::to_string(i) + " - x" + std::to_string(j) + ")";
    }
    text += " & " + std::to_string(i) + "/10;\n";
  }
  ReadAndConvert(text);
  EXPECT_EQ(Names().size(), 4u + 2u * 12u);
}

/// A chain of pendula with strong friction, each pulled by its neighbours.
TEST(ConversionMeetingItself, MakesOneSetOfVariablesForEachFunctionOfAChainOfPendula)
{
  constexpr int kPendula = 50;
  const ScopedGlobal global;
  const auto x = [](int i) { return "x" + std::to_string(i); };
  std::string text;
  for (int i = 1; i <= kPendula; ++i) {
    text += x(i) + "' = 1 - sin(" + x(i) + ")";
    if (i < kPendula) text += " + sin(" + x(i + 1) + " - " + x(i) + ")";
    if (i > 1) text += " - sin(" + x(i) + " - " + x(i - 1) + ")";
    text += " & " + std::to_string(i) + "/50;\n";
  }
  ReadAndConvert(text);
  // Each pendulum has its own sine, each pair of neighbours two.
  EXPECT_EQ(Names().size(), 50u + 2u * (50u + 2u * 49u));
}

// --- Functions of algebraic variables ---

TEST(ConversionOverAlgebraicVariables, UsesTheConvertedDefinitionOfAnEarlierOne)
{
  const ScopedGlobal global;
  ReadAndConvert("a = exp(t); y' = exp(a);");
  EXPECT_EQ(PrintedRightHandSide("a"), "[%0]");
  EXPECT_EQ(PrintedRightHandSide("y"), "[%1]");
  EXPECT_EQ(PrintedRightHandSide("%1"), "([%0] * [%1])");
  EXPECT_TRUE(IsExactly(Exact(Evaluate(functions::exp, Mpf(1.0))), StartValueOf("%1")));
}

TEST(ConversionOverAlgebraicVariables, DerivesTheSineOfALaterOne)
{
  const ScopedGlobal global;
  ReadAndConvert("y' = exp(z); z = sin(t);");
  // z' = cos(t), %0 and %1, for exp, %2; only then z itself, %3 and %4
  EXPECT_EQ(PrintedRightHandSide("y"), "[%2]");
  EXPECT_EQ(PrintedRightHandSide("%2"), "([%0] * [%2])");
  EXPECT_TRUE(IsExactly(1, StartValueOf("%0")));
  EXPECT_TRUE(IsExactly(1, StartValueOf("%2")));
  EXPECT_EQ(PrintedRightHandSide("z"), "[%3]");
}

TEST(ConversionOverAlgebraicVariables, FindsNoDerivativeOfOtherFunctionsInALaterOne)
{
  const ScopedGlobal global;
  ReadAndConvert("y' = exp(z); z = cos(t);");
  // The initial value of z converts nothing but its argument.
  EXPECT_EQ(PrintedRightHandSide("y"), "[%0]");
  EXPECT_EQ(PrintedRightHandSide("%0"), "([NULL] * [%0])");
  EXPECT_TRUE(IsExactly(Exact(Evaluate(functions::exp, Mpf(1.0))), StartValueOf("%0")));
}

TEST(ConversionOverAlgebraicVariables, SeesNothingBehindReferencesInALaterOne)
{
  // The references in z are not yet replaced: they have neither a derivative nor a value.
  const ScopedGlobal global;
  ReadAndConvert("y' = exp(z); z = 2 * u; u' = 1 & 3;");
  EXPECT_EQ(PrintedRightHandSide("%0"), "(( 2.00000000000e+00 * [NULL]) * [%0])");
  EXPECT_TRUE(IsExactly(1, StartValueOf("%0")));
}

TEST(ConversionOverAlgebraicVariables, SeesTheStartValueOfALaterDifferentialVariable)
{
  const ScopedGlobal global;
  ReadAndConvert("y' = exp(z); z' = 1; z(0) = 3;");
  EXPECT_TRUE(IsExactly(Exact(Evaluate(functions::exp, Mpf("3"))), StartValueOf("%0")));
}

TEST(ConversionOverAlgebraicVariables, AVariableThatDependsOnItselfEndsTheRun)
{
  const struct {
    const char* input;
    const char* message;
  } rows[] = {
      {"a = a + t; y' = exp(a);", "#(ERR) Algebraic equation \"a\" depends on itself\n"},
      {"a = b * t; b = a; y' = exp(b);", "#(ERR) Algebraic equation \"b\" depends on itself\n"},
      // from left to right: a itself before b
      {"a = a; b = a - b; y' = exp(b);", "#(ERR) Algebraic equation \"a\" depends on itself\n"},
      // trunc has no derivative that could lead back, but an initial value
      {"a = trunc(a); y' = exp(a);", "#(ERR) Algebraic equation \"a\" depends on itself\n"},
  };
  for (const auto& [input, message] : rows) {
    const ScopedGlobal global;
    Read(input);
    EXPECT_EXIT(InitializeEquations(), testing::ExitedWithCode(1), ExactText(message)) << input;
  }
}

// --- Functions without a conversion ---

TEST(Conversion, OfACosASinhAndACoshIsNotImplemented)
{
  const struct {
    const char* input;
    const char* message;
  } rows[] = {
      {"w' = acos(t);", "#(ERR) ACos::ConvertExpr() is not implemented\n"},
      {"w' = asinh(t);", "#(ERR) ASinh::ConvertExpr() is not implemented\n"},
      {"w' = acosh(t);", "#(ERR) ACosh::ConvertExpr() is not implemented\n"},
      {"w = acos(t);", "#(ERR) ACos::ConvertExpr() is not implemented\n"},
      {"w' = sin(asinh(t)) + 1;", "#(ERR) ASinh::ConvertExpr() is not implemented\n"},
      // before the argument, which is not defined either
      {"w' = acosh(nowhere);", "#(ERR) ACosh::ConvertExpr() is not implemented\n"},
  };
  for (const auto& [input, message] : rows) {
    const ScopedGlobal global;
    Read(input);
    EXPECT_EXIT(InitializeEquations(), testing::ExitedWithCode(1), ExactText(message)) << input;
  }
}

TEST(Conversion, OfFunctionsOverConstantsIsNotNeeded)
{
  const ScopedGlobal global;
  ReadAndConvert("a = acos(1/2); b = asinh(2); c = acosh(2); d = trunc(2.5);");
  EXPECT_EQ(Names(), (Texts{"a", "b", "c", "d"}));
}

TEST(Conversion, LeavesTruncOverTheConvertedArgument)
{
  const ScopedGlobal global;
  Read("w = trunc(sin(t));");
  const Expr::Ref before = VariableNamed("w").RightHandSide();
  InitializeEquations();
  EXPECT_EQ(PrintedRightHandSide("w"), "trunc([%0])");
  EXPECT_FALSE(VariableNamed("w").RightHandSide() == before);
}

TEST(Conversion, AFunctionOfTruncHasNoDerivative)
{
  const ScopedGlobal global;
  ReadAndConvert("w' = sin(trunc(t + 3/2));");
  EXPECT_EQ(PrintedRightHandSide("%0"), "([%1] * [NULL])");
  EXPECT_EQ(PrintedRightHandSide("%1"), "((-[%0]) * [NULL])");
  EXPECT_TRUE(IsExactly(Exact(Evaluate(functions::sin, Mpf(1.0))), StartValueOf("%0")));
}

// --- Failures of initial values ---

TEST(Conversion, ADomainErrorOfAnInitialValueEndsTheRun)
{
  const ScopedGlobal global;
  Read("w' = ln(t - 1);");
  EXPECT_EXIT(InitializeEquations(), testing::ExitedWithCode(1),
              ExactText("\n#(COMP) ln(x): x < 0\n"));
}

TEST(Conversion, AnUndefinedReferenceInAnArgumentEndsTheRun)
{
  const ScopedGlobal global;
  Read("w' = exp(nowhere);");
  EXPECT_EXIT(InitializeEquations(), testing::ExitedWithCode(1),
              ExactText("\n#(ERR) Reference to undefined equation \"nowhere\"\n"));
}

}  // namespace
}  // namespace varno
