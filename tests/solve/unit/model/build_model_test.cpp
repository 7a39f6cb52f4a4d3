#include "solve/model/build_model.h"

#include <cstdint>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "solve/evaluation/constant.h"
#include "solve/model/print.h"
#include "tests/solve/support/read_problem.h"

namespace varno::solve {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::UnorderedElementsAre;

std::vector<std::string> ColumnNames(const Model& model)
{
  std::vector<std::string> names;
  for (const Column& column : model.columns) names.push_back(column.name);
  return names;
}

// ------------------------------------------------------------------------------
// What problems mean

TEST(BuildModel, FirstOrderSystem)
{
  const ReadProblem problem("x' = 10*(y - x) & 1; y' = x*(28 - z) - y & 2; z' = x*y - 8/3*z & 3;");
  EXPECT_EQ(problem.Remarks(), "");
  EXPECT_EQ(problem.RightHandSide("x"), "10*(y - x)");
  EXPECT_EQ(problem.RightHandSide("y"), "x*(28 - z) - y");
  EXPECT_EQ(problem.RightHandSide("z"), "x*y - 8/3*z");
  EXPECT_EQ(problem.Start("z"), "3");
  EXPECT_FALSE(problem.model.startPoint.has_value());
  EXPECT_THAT(ColumnNames(problem.model), ElementsAre("x", "y", "z"));
}

TEST(BuildModel, AnEquationOfHigherOrderIsASystem)
{
  const ReadProblem problem("y''' = y + 2*y' + 3*y'' & 5; y''(0) = 7;");
  EXPECT_FALSE(problem.diagnostics.HasErrors()) << problem.Remarks();
  EXPECT_EQ(problem.RightHandSide("y"), "y'");
  EXPECT_EQ(problem.RightHandSide("y'"), "y''");
  EXPECT_EQ(problem.RightHandSide("y''"), "y + 2*y' + 3*y''");
  EXPECT_EQ(problem.Start("y"), "5");
  EXPECT_EQ(problem.Start("y'"), "0");
  EXPECT_EQ(problem.Start("y''"), "7");
  EXPECT_THAT(ColumnNames(problem.model), ElementsAre("y", "y'", "y''"));
}

TEST(BuildModel, MarksWithNumbers)
{
  const ReadProblem problem("y'2 = -y; y'1(0) = 1; y'0(0) = 2;");
  EXPECT_EQ(problem.RightHandSide("y'"), "-y");
  EXPECT_EQ(problem.Start("y'"), "1");
  EXPECT_EQ(problem.Start("y"), "2");
}

TEST(BuildModel, OrderOfTheTextDoesNotMatter)
{
  const ReadProblem problem("x' = a*b; b = a + c; a = x + c; c = 3;");
  EXPECT_EQ(problem.Remarks(), "");
  EXPECT_EQ(problem.RightHandSide("x"), "(x + c)*(x + c + c)");
  EXPECT_THAT(ColumnNames(problem.model), ElementsAre("x", "b", "a"));
}

TEST(BuildModel, DefinitionsAreSharedNodes)
{
  const ReadProblem problem("x' = r; y' = r; r = x*x + y*y;");
  EXPECT_EQ(problem.StateNamed("x").rightHandSide, problem.StateNamed("y").rightHandSide);
  EXPECT_EQ(problem.StateNamed("x").rightHandSide, problem.Column("r"));
}

TEST(BuildModel, ParametersAreLeavesWithoutColumn)
{
  const ReadProblem problem("c = 2*b; x' = c*x; b = 3; d = c*t;");
  ASSERT_EQ(problem.model.parameters.size(), 2U);
  EXPECT_EQ(problem.model.parameters[0].name, "b");
  EXPECT_EQ(problem.model.parameters[1].name, "c");
  EXPECT_EQ(PrintExpression(problem.model, problem.model.parameters[1].value), "2*b");
  EXPECT_EQ(problem.RightHandSide("x"), "c*x");
  EXPECT_THAT(ColumnNames(problem.model), ElementsAre("x", "d"));
}

TEST(BuildModel, AParametersValueStandsBeforeItsLeaf)
{
  const ReadProblem problem("x' = a*b*c; a = b*c; b = c + 1; c = 2;");
  const Graph& graph = problem.model.graph;
  for (NodeId id = 0; id < graph.Size(); ++id) {
    if (graph[id].operation == Operation::kParameter) {
      EXPECT_LT(problem.model.parameters[graph[id].index].value, id);
    }
  }
}

TEST(BuildModel, WhatDependsOnTimeIsAColumn)
{
  const ReadProblem problem("x' = 1; a = 0*t; b = 0*x; c = 0;");
  EXPECT_THAT(ColumnNames(problem.model), ElementsAre("x", "a", "b"));
}

TEST(BuildModel, DerivativesInExpressions)
{
  const ReadProblem problem("y'' = -y; z' = y'' + y' + y; w = z'*2;");
  EXPECT_FALSE(problem.diagnostics.HasErrors()) << problem.Remarks();
  EXPECT_EQ(problem.RightHandSide("z"), "-y + y' + y");
  EXPECT_EQ(problem.ColumnText("w"), "(-y + y' + y)*2");
}

TEST(BuildModel, ANoteTellsThatDerivativesMeanSomethingElseInVarno)
{
  const ReadProblem problem("y' = -y;\nz' = y' + y';\n");
  EXPECT_EQ(problem.Remarks(),
            "test.varno:2:6: note: 'y'' is the derivative here; in varno it means 'y'\n"
            "  z' = y' + y';\n"
            "       ^~\n");
}

TEST(BuildModel, FunctionsArePutIn)
{
  const ReadProblem problem("function f(u, v) = u^2 + v*k; x' = f(x, f(t, 1)); k = 3;");
  EXPECT_EQ(problem.Remarks(), "");
  EXPECT_EQ(problem.RightHandSide("x"), "x^2 + (t^2 + k)*k");
}

TEST(BuildModel, ParametersOfFunctionsHideNames)
{
  const ReadProblem problem("function f(x) = x + 1; x' = f(2*x);");
  EXPECT_EQ(problem.RightHandSide("x"), "2*x + 1");
}

TEST(BuildModel, NestedCallsStayLinear)
{
  // Written out, x would stand 3^2000 times in this.
  std::string text = "function f(u) = u*u*u; x' = ";
  for (int i = 0; i < 2000; ++i) text += "f(";
  text += "x" + std::string(2000, ')') + ";";
  const ReadProblem problem(text);
  EXPECT_EQ(problem.Remarks(), "");
  EXPECT_LT(problem.model.graph.Size(), 4010U);
}

TEST(BuildModel, FunctionsOfFunctionsAreNoStackOverflow)
{
  std::string text = "x' = f100000(x);\nfunction f0(u) = u + 1;\n";
  for (int i = 1; i <= 100000; ++i) {
    text += "function f" + std::to_string(i) + "(u) = f" + std::to_string(i - 1) + "(u) + 1;\n";
  }
  const ReadProblem problem(text);
  EXPECT_EQ(problem.Remarks(), "");
}

TEST(BuildModel, ExponentialFunctionsAreRefused)
{
  // Each function calls the one before with two different arguments: 2^60 calls.
  std::string text = "x' = f60(x);\nfunction f0(u) = sin(u);\n";
  for (int i = 1; i <= 60; ++i) {
    const std::string before = "f" + std::to_string(i - 1);
    text +=
        "function f" + std::to_string(i) + "(u) = " + before + "(2*u) + " + before + "(3*u/t);\n";
  }
  const ReadProblem problem(text);
  ASSERT_EQ(problem.Errors().size(), 1U);
  EXPECT_THAT(problem.Errors()[0],
              HasSubstr("the functions expand to more than 1000000 operations"));
}

TEST(BuildModel, ADefinitionOfTheTextsOwnWinsOverNewFunctions)
{
  const ReadProblem problem("function max(a) = a + 1; min = 3; x' = max(x) + min;");
  EXPECT_EQ(problem.Remarks(), "");
  EXPECT_EQ(problem.RightHandSide("x"), "x + 1 + min");
}

TEST(BuildModel, SynonymsAreOneOperation)
{
  const ReadProblem problem(
      "a = tg(t) - tan(t); b = cotg(t) - cotan(t); c = arcsin(t) - asin(t); d = arccos(t) - "
      "acos(t);"
      "e = arctg(t) - arctan(t); f = atg(t) - atan(t); g = arccotg(t) - arccotan(t); h = acotg(t) "
      "- acotan(t);"
      "i = tgh(t) - tanh(t); j = cotgh(t) - cotanh(t); k = argsinh(t) - asinh(t); l = argcosh(t) - "
      "acosh(t);"
      "m = argtgh(t) - argtanh(t); n = atgh(t) - atanh(t); o = argcotgh(t) - argcotanh(t); p = "
      "log(t) - ln(t);");
  EXPECT_EQ(problem.Remarks(), "");
  for (const Column& column : problem.model.columns) {
    const Node& node = problem.model.graph[column.value];
    EXPECT_EQ(node.operands[0], node.operands[1]) << column.name;
  }
}

TEST(BuildModel, WordsOfTheLanguageAreNames)
{
  const ReadProblem problem(
      "event' = function + rising & 1; function = 2; rising = falling; falling = stop; stop = 4; "
      "and = 1; or = 2;"
      "not = 3; if = and + or - not; min = if; log = 5; event(0) = 3 - 3;");
  // The start value of "event" is given twice; all else is right.
  EXPECT_THAT(problem.Errors(), ElementsAre("event: the start value of 'event' is given twice"));
}

TEST(BuildModel, NumbersAreExact)
{
  const ReadProblem problem("x' = 0.1 + 0.2 & 1e-300; y' = 1e300 & 1e1000;");
  EXPECT_EQ(problem.Remarks(), "");
  const Graph& graph = problem.model.graph;
  EXPECT_EQ(graph.Value(problem.StateNamed("x").rightHandSide), Rational(3, 10));
  Integer power;
  mpz_ui_pow_ui(power.get_mpz_t(), 10, 300);
  EXPECT_EQ(graph.Value(problem.StateNamed("x").start), Rational(1, power));
  EXPECT_EQ(graph.Value(problem.StateNamed("y").rightHandSide), Rational(power));
  mpz_ui_pow_ui(power.get_mpz_t(), 10, 1000);
  EXPECT_EQ(graph.Value(problem.StateNamed("y").start), Rational(power));
}

TEST(BuildModel, ParenthesesChangeNothingButTheGrouping)
{
  const ReadProblem problem("x' = (((0.5)))*((t)) + (x) & (3); y' = (sin)*2;");
  EXPECT_EQ(problem.RightHandSide("x"), "0.5*t + x");
  EXPECT_EQ(problem.Start("x"), "3");
  EXPECT_EQ(problem.Errors().size(), 1U);
}

TEST(BuildModel, SignsAndPowers)
{
  const ReadProblem problem(
      "a = -t^2; b = 2^-t; c = 2^3^t; d = -2^2 + 0*t; e = t^-2^t; f = -t*t; g = 2^-1*t;");
  EXPECT_EQ(problem.Remarks(), "");
  EXPECT_EQ(problem.ColumnText("a"), "-t^2");
  EXPECT_EQ(problem.ColumnText("b"), "2^(-t)");
  EXPECT_EQ(problem.ColumnText("c"), "2^3^t");
  EXPECT_EQ(problem.ColumnText("d"), "-4 + 0*t");
  EXPECT_EQ(problem.ColumnText("e"), "t^(-2^t)");
  EXPECT_EQ(problem.ColumnText("f"), "-t*t");
  EXPECT_EQ(problem.ColumnText("g"), "0.5*t");
}

TEST(BuildModel, ExactNumbersInFunctionsWithJumps)
{
  const ReadProblem problem(
      "a = t + floor(-3/2); b = t + ceil(0.1); c = t + trunc(-1.5); d = t + abs(-2); e = t + "
      "sign(-7);"
      "f = t + min(3, 1, 2); g = t + max(3, 1); h = t + if(1/3 < 0.34 and not 2 < 1, 10, 20); i = "
      "t + floor(1.3/0.1);"
      "j = t + if(1 >= 1 or 1/0 > 2, 1, 2);");
  EXPECT_EQ(problem.ColumnText("a"), "t + -2");
  EXPECT_EQ(problem.ColumnText("b"), "t + 1");
  EXPECT_EQ(problem.ColumnText("c"), "t + -1");
  EXPECT_EQ(problem.ColumnText("d"), "t + 2");
  EXPECT_EQ(problem.ColumnText("e"), "t + -1");
  EXPECT_EQ(problem.ColumnText("f"), "t + 1");
  EXPECT_EQ(problem.ColumnText("g"), "t + 3");
  EXPECT_EQ(problem.ColumnText("h"), "t + 10");
  EXPECT_EQ(problem.ColumnText("i"), "t + 13");
  EXPECT_EQ(problem.ColumnText("j"), "t + 1");  // the second condition does not count
  EXPECT_EQ(problem.Remarks(), "");
}

// ------------------------------------------------------------------------------
// Start values

TEST(BuildModel, StartValuesMayUseParameters)
{
  const ReadProblem problem("x' = 1; x(t0) = 2*k; k = 3; t0 = 5;");
  EXPECT_EQ(problem.Remarks(), "");
  EXPECT_EQ(problem.Start("x"), "2*k");
  ASSERT_TRUE(problem.model.startPoint.has_value());
  EXPECT_EQ(PrintExpression(problem.model, *problem.model.startPoint), "t0");
}

TEST(BuildModel, EqualPointsAgree)
{
  EXPECT_EQ(ReadProblem("x' = 1; y' = 1; x(0.1) = 1; y(1/10) = 2;").Remarks(), "");
  EXPECT_EQ(ReadProblem("x' = 1; y' = 1; a = 1; x(a) = 1; y(3 - 2) = 2;").Remarks(), "");
  // sin(pi/6) = 1/2
  EXPECT_EQ(ReadProblem("x' = 1; y' = 1; x(sin(pi/6)) = 1; y(1/2) = 2;").Remarks(), "");
  EXPECT_EQ(ReadProblem("x' = 1; y' = 1; x(2*pi) = 1; y(pi + pi) = 2;").Remarks(), "");
  EXPECT_EQ(ReadProblem("x' = 1; y' = 1; x(1e999999999) = 1; y(1e1000000000/10) = 2;").Remarks(),
            "");
}

TEST(BuildModel, DisagreeingStartPoints)
{
  const ReadProblem problem("x' = 1; y' = 1;\nx(0) = 1;\ny(1e-300) = 2;\n");
  EXPECT_EQ(problem.Remarks(),
            "test.varno:3:3: error: start values are given at different points\n"
            "  y(1e-300) = 2;\n"
            "    ^~~~~~\n"
            "  hint: all start values must be given at the same point\n"
            "test.varno:2:3: note: the first point is here\n"
            "  x(0) = 1;\n"
            "    ^\n");
  EXPECT_EQ(
      ReadProblem("x' = 1; y' = 1; x(pi) = 1; y(3.14159265358979323846) = 2;").Errors().size(), 1U);
}

TEST(BuildModel, StartValuesGivenTwice)
{
  EXPECT_EQ(ReadProblem("x' = 1 & 1;\nx(0) = 1;").Remarks(),
            "test.varno:2:1: error: the start value of 'x' is given twice\n"
            "  x(0) = 1;\n"
            "  ^\n"
            "test.varno:1:10: note: it is given here first\n"
            "  x' = 1 & 1;\n"
            "           ^\n");
}

TEST(BuildModel, StartValuesMustBeConstant)
{
  EXPECT_THAT(ReadProblem("x' = 1 & t;").Errors(),
              ElementsAre("t: a start value must be constant, and 't' is the time"));
  EXPECT_THAT(ReadProblem("x' = 1 & 2*x;").Errors(),
              ElementsAre("x: a start value must be constant, and 'x' is a variable"));
  EXPECT_THAT(ReadProblem("x' = 1 & d; d = x;").Errors(),
              ElementsAre("d: a start value must be constant, and 'd' depends on variables"));
  EXPECT_THAT(ReadProblem("x' = 1 & f(1); function f(u) = u*t;").Errors(),
              ElementsAre("f(1): a start value must be constant, and 'f' depends on the time"));
  EXPECT_THAT(ReadProblem("x' = 1; y' = 1 & x';").Errors(),
              ElementsAre("x': a start value must be constant, and 'x' depends on variables"));
  EXPECT_THAT(ReadProblem("x' = 1; x(t) = 0;").Errors(),
              ElementsAre("t: the point of a start value must be constant, and 't' is the time"));
}

TEST(BuildModel, StartValuesOfWhatHasNone)
{
  EXPECT_THAT(ReadProblem("speed' = 1; sped(0) = 1;").Errors(),
              ElementsAre("sped: there is no equation for 'sped' (did you mean 'speed'?)"));
  EXPECT_THAT(ReadProblem("x' = 1; x'(0) = 1;").Errors(),
              ElementsAre("x': this derivative has no value of its own: the equation gives it (the "
                          "equation of 'x' has the order 1)"));
  EXPECT_THAT(ReadProblem("x = t; x(0) = 1;").Errors(),
              ElementsAre("x: 'x' is a definition, no variable with a value of its own"));
}

TEST(BuildModel, ConstantsWithoutAValue)
{
  EXPECT_THAT(ReadProblem("x' = 1 & 1/0;").Errors(), ElementsAre("1/0: division by zero"));
  EXPECT_THAT(ReadProblem("x' = 1 & 1/k; k = a - 2; a = 2;").Errors(),
              ElementsAre("1/k: division by zero"));
  EXPECT_THAT(ReadProblem("x' = 1 & 0^-1;").Errors(), ElementsAre("0^-1: division by zero"));
  EXPECT_THAT(ReadProblem("k = sqrt(-1); x' = k;").Errors(),
              ElementsAre("sqrt(-1): the square root of a negative number"));
  EXPECT_THAT(ReadProblem("x' = 1 & ln(0);").Errors(),
              ElementsAre("ln(0): the logarithm of a number that is not positive"));
  EXPECT_THAT(ReadProblem("x' = 1 & asin(2);").Errors(),
              ElementsAre("asin(2): the arcus sine of a number outside of -1 to 1"));
  EXPECT_THAT(ReadProblem("x' = 1 & (-8)^(1/3);").Errors(),
              ElementsAre("(-8)^(1/3): a power of a negative number whose exponent is no integer"));
  EXPECT_THAT(ReadProblem("x' = 1; x(1/0) = 2;").Errors(), ElementsAre("1/0: division by zero"));
  EXPECT_THAT(ReadProblem("k = asin(pi); x' = 1;").Errors(),
              ElementsAre("asin(pi): the arcus sine of a number outside of -1 to 1"));
}

TEST(BuildModel, EquationsWithoutAValue)
{
  EXPECT_THAT(ReadProblem("x' = asin(2)*x + x/0;").Errors(),
              ElementsAre("asin(2): the arcus sine of a number outside of -1 to 1",
                          "x/0: division by zero"));
  // In a definition that is a column only, they are for the rows to show.
  EXPECT_THAT(ReadProblem("x' = 1; d = x + 1/0;").Errors(), ElementsAre());
  EXPECT_THAT(ReadProblem("x' = d; d = x + 1/0;").Errors(), ElementsAre("1/0: division by zero"));
  EXPECT_THAT(ReadProblem("x' = f(x); function f(u) = u*ln(0);").Errors(),
              ElementsAre("ln(0): the logarithm of a number that is not positive"));
}

TEST(BuildModel, ABranchThatIsNotChosenNeedsNoValue)
{
  EXPECT_THAT(ReadProblem("k = if(1 < 2, 3, 1/0); x' = if(1 < 2, x, x/0);").Errors(),
              ElementsAre());
}

TEST(BuildModel, MistakesOfValueBesideThoseOfNames)
{
  EXPECT_THAT(ReadProblem("x' = asin(2)*p & ln(0); k = 1/0; y' = q & 1/0;").Errors(),
              UnorderedElementsAre("p: 'p' is not defined", "q: 'q' is not defined",
                                   "asin(2): the arcus sine of a number outside of -1 to 1",
                                   "ln(0): the logarithm of a number that is not positive",
                                   "1/0: division by zero", "1/0: division by zero"));
}

// ------------------------------------------------------------------------------
// Names

TEST(BuildModel, UndefinedNames)
{
  EXPECT_EQ(ReadProblem("sigma = 10;\nx' = sgima*x;\n").Remarks(),
            "test.varno:2:6: error: 'sgima' is not defined\n"
            "  x' = sgima*x;\n"
            "       ^~~~~\n"
            "  hint: did you mean 'sigma'?\n");
  EXPECT_THAT(
      ReadProblem("x' = e + e + qqq;").Errors(),
      ElementsAre("e: 'e' is not defined (Euler's number is exp(1))", "qqq: 'qqq' is not defined"));
  EXPECT_THAT(ReadProblem("x' = sin*2;").Errors(),
              ElementsAre("sin: 'sin' is a function (write sin(...))"));
}

TEST(BuildModel, UnknownFunctions)
{
  const auto error = [](const std::string& call) {
    const std::vector<std::string> errors = ReadProblem("x' = " + call + ";").Errors();
    return errors.size() == 1 ? errors[0] : "errors: " + std::to_string(errors.size());
  };
  EXPECT_EQ(error("sinn(x)"), "sinn: there is no function 'sinn' (did you mean 'sin'?)");
  EXPECT_EQ(error("Sin(x)"), "Sin: there is no function 'Sin' (did you mean 'sin'?)");
  EXPECT_EQ(error("sqtr(x)"), "sqtr: there is no function 'sqtr' (did you mean 'sqrt'?)");
  EXPECT_EQ(error("log10(x)"), "log10: there is no function 'log10' (write ln(x)/ln(10))");
  EXPECT_EQ(error("pow(x, 2)"), "pow: there is no function 'pow' (powers are written x^y)");
  EXPECT_EQ(error("heaviside(x)"),
            "heaviside: there is no function 'heaviside' (write if(x >= 0, 1, 0), or for a step in "
            "time [t < a : 0; b : 1])");
  EXPECT_EQ(error("mod(x, 2)"),
            "mod: there is no function 'mod' (the remainder of a by b is a - b*floor(a/b))");
  EXPECT_EQ(error("frobnicate(x)"), "frobnicate: there is no function 'frobnicate'");
}

TEST(BuildModel, NearNamesOfOwnFunctions)
{
  EXPECT_THAT(ReadProblem("function damping(u) = u; x' = dampnig(x);").Errors(),
              ElementsAre("dampnig: there is no function 'dampnig' (did you mean 'damping'?)"));
}

TEST(BuildModel, WrongNumbersOfArguments)
{
  EXPECT_THAT(ReadProblem("x' = sin(x, 2);").Errors(),
              ElementsAre("sin(x, 2): 'sin' takes 1 argument, not 2"));
  EXPECT_THAT(ReadProblem("x' = atan2(x);").Errors(),
              ElementsAre("atan2(x): 'atan2' takes 2 arguments, not 1"));
  EXPECT_THAT(ReadProblem("x' = min(1);").Errors(),
              ElementsAre("min(1): 'min' takes at least 2 arguments, not 1"));
  EXPECT_THAT(ReadProblem("x' = if(x < 1, 2);").Errors(),
              ElementsAre("if(x < 1, 2): 'if' takes 3 arguments, not 2 (write if(a < b, u, v))"));
  EXPECT_EQ(ReadProblem("function f(u, v) = u;\nx' = f(x);").Remarks(),
            "test.varno:2:6: error: 'f' takes 2 arguments, not 1\n"
            "  x' = f(x);\n"
            "       ^~~~\n"
            "test.varno:1:10: note: 'f' is defined here\n"
            "  function f(u, v) = u;\n"
            "           ^\n");
}

TEST(BuildModel, ValuesAreNoFunctions)
{
  EXPECT_THAT(ReadProblem("x' = 2*x(0);").Errors(),
              ElementsAre("x(0): 'x' is no function (a start value cannot be read back; give it a "
                          "name: x0 = 1; x(0) = x0;)"));
  EXPECT_THAT(ReadProblem("k = 3; x' = k(x + 1);").Errors(),
              ElementsAre("k(x + 1): 'k' is no function (a product is written with '*': k*(...))"));
}

TEST(BuildModel, DoublyDefined)
{
  EXPECT_EQ(ReadProblem("x' = 1;\nx = 2;\n").Remarks(),
            "test.varno:2:1: error: 'x' is defined twice\n"
            "  x = 2;\n"
            "  ^\n"
            "test.varno:1:1: note: the first definition of 'x' is here\n"
            "  x' = 1;\n"
            "  ^~\n");
  EXPECT_THAT(ReadProblem("function f(u) = u; f = 2*t;").Errors(),
              ElementsAre("f: 'f' is defined twice"));
  EXPECT_THAT(ReadProblem("x' = 1; x'' = 1;").Errors(), ElementsAre("x'': 'x' is defined twice"));
}

TEST(BuildModel, AStartValueOnADefinition)
{
  EXPECT_EQ(ReadProblem("d = t & 1;\n").Remarks(),
            "test.varno:1:9: error: a definition has no start value\n"
            "  d = t & 1;\n"
            "          ^\n"
            "  hint: write d' = ... & ...; for an equation\n"
            "test.varno:1:1: note: 'd' is defined here, without a derivative mark\n"
            "  d = t & 1;\n"
            "  ^\n");
}

TEST(BuildModel, FunctionsOfTheLanguageCannotBeDefined)
{
  EXPECT_THAT(
      ReadProblem("sin = 3;").Errors(),
      ElementsAre(
          "sin: 'sin' is a function of the language and cannot be defined (choose another name)"));
  EXPECT_THAT(ReadProblem("t' = 3;").Errors(),
              ElementsAre("t: 't' is the time and cannot be defined (choose another name)"));
  EXPECT_THAT(ReadProblem("pi = 3;").Errors(),
              ElementsAre("pi: 'pi' is a number and cannot be defined (choose another name)"));
}

TEST(BuildModel, Circles)
{
  EXPECT_EQ(ReadProblem("x' = a;\na = b + 1;\nb = c*x;\nc = a/2;\n").Remarks(),
            "test.varno:2:1: error: 'a' is defined by itself: a -> b -> c -> a\n"
            "  a = b + 1;\n"
            "  ^\n"
            "test.varno:2:5: note: 'a' uses 'b' here\n"
            "  a = b + 1;\n"
            "      ^\n"
            "test.varno:3:5: note: 'b' uses 'c' here\n"
            "  b = c*x;\n"
            "      ^\n"
            "test.varno:4:5: note: 'c' uses 'a' here\n"
            "  c = a/2;\n"
            "      ^\n");
  EXPECT_THAT(ReadProblem("a = a;").Errors(), ElementsAre("a: 'a' is defined by itself: a -> a"));
  EXPECT_THAT(ReadProblem("x' = x' + 1;").Errors(),
              ElementsAre("x': 'x'' is defined by itself: x' -> x'"));
  EXPECT_THAT(ReadProblem("x' = y'; y' = 2*x';").Errors(),
              ElementsAre("x': 'x'' is defined by itself: x' -> y' -> x'"));
  EXPECT_THAT(ReadProblem("function f(u) = f(u - 1); x' = f(x);").Errors(),
              ElementsAre("f: 'f' is defined by itself: f -> f"));
  // Two circles are two errors.
  EXPECT_EQ(ReadProblem("a = b; b = a; c = d; d = c; e = a + c;").Errors().size(), 2U);
}

TEST(BuildModel, LongCirclesAreShortened)
{
  std::string text;
  for (int i = 0; i < 100000; ++i) {
    text += "a" + std::to_string(i) + " = a" + std::to_string((i + 1) % 100000) + ";\n";
  }
  const ReadProblem problem(text);
  ASSERT_EQ(problem.Errors().size(), 1U);
  EXPECT_THAT(problem.Errors()[0], HasSubstr("a0 -> a1 -> a2"));
  EXPECT_THAT(problem.Errors()[0], HasSubstr("(99980 more) -> a0"));
}

TEST(BuildModel, DerivativesThatNoEquationGives)
{
  EXPECT_THAT(
      ReadProblem("x' = x'';").Errors(),
      ElementsAre(
          "x'': this derivative of 'x' is not known (the equation of 'x' has the order 1)"));
  EXPECT_THAT(ReadProblem("d = t; x' = d';").Errors(),
              ElementsAre("d': 'd' is a definition, whose derivative is not known (derivatives are "
                          "known of variables, which "
                          "have an equation y' = ...;)"));
  EXPECT_THAT(ReadProblem("function f(u) = u'; x' = f(x);").Errors(),
              ElementsAre("u': 'u' is a parameter of the function and has no derivative"));
}

TEST(BuildModel, ConditionsAndValues)
{
  EXPECT_THAT(ReadProblem("x' = x < 1;").Errors(),
              ElementsAre("x < 1: this is a condition and has no value (write if(a < b, u, v))"));
  EXPECT_THAT(
      ReadProblem("x' = if(x, 1, 2);").Errors(),
      ElementsAre(
          "x: this is no condition (conditions are comparisons, as in a < b, with and, or, not)"));
  EXPECT_THAT(ReadProblem("x' = if(1 < 2 < 3, 1, 2);").Errors(),
              testing::Contains("<: comparisons cannot be chained (write a < b and b < c)"));
  EXPECT_THAT(
      ReadProblem("x' = if((1 < 2) < 3, 1, 2);").Errors(),
      testing::Contains("(1 < 2): this is a condition and has no value (write if(a < b, u, v))"));
}

TEST(BuildModel, KinksJumpsAndConditions)
{
  const ReadProblem problem(
      "x' = 1; a = abs(x) + sign(t); b = min(x, 1, t); c = if(x > 1 and not x >= t or t <= 3, x, "
      "2);"
      "d = [t < 1, 2 : 3; 4 : 5]; e = [a < x : 2]; f = floor(7/2) + ceil(x) - trunc(-7/2);"
      "g = if(1 < 2, x, 1/0); h = max(x, x);");
  EXPECT_EQ(problem.Remarks(), "");
  EXPECT_EQ(problem.ColumnText("a"), "abs(x) + sign(t)");
  EXPECT_EQ(problem.ColumnText("b"), "min(min(x, 1), t)");
  EXPECT_EQ(problem.ColumnText("c"), "if(1 < x and not t <= x or t <= 3, x, 2)");
  EXPECT_EQ(problem.ColumnText("d"), "if(1 <= t and t < 2, 3, if(t < 4, 5, 0))");
  EXPECT_EQ(problem.ColumnText("e"), "if(abs(x) + sign(t) < x, 2, 0)");
  EXPECT_EQ(problem.ColumnText("f"), "3 + ceil(x) - -3");
  EXPECT_EQ(problem.ColumnText("g"), "x");
  EXPECT_EQ(problem.ColumnText("h"), "x");
}

TEST(BuildModel, BranchesThatAreNotChosenNeedNoValue)
{
  EXPECT_EQ(ReadProblem("n = 0; x' = if(n > 0, 1/n, x);").Remarks(), "");
  EXPECT_EQ(ReadProblem("n = 0; x' = if(n > 0 and 1/n < 2, 1, x);").Remarks(), "");
  EXPECT_EQ(ReadProblem("x' = if(x > 0, 1/0, x);").Remarks(), "");
  EXPECT_THAT(ReadProblem("n = 0; x' = if(n >= 0, 1/n, x);").Errors(),
              ElementsAre("1/n: division by zero"));
  EXPECT_THAT(ReadProblem("n = 0; x' = if(1/n > 0, 1, x);").Errors(),
              ElementsAre("1/n: division by zero"));
}

TEST(BuildModel, Events)
{
  const ReadProblem problem(
      "y'' = -g; g = 10; y(0) = 1; bounces' = 0;"
      "event hit: y falling { y' = -0.9*y'; bounces = bounces + 1; }; event top: y' falling;"
      "event end: t - 3 stop;");
  EXPECT_EQ(problem.Remarks().find("error"), std::string::npos) << problem.Remarks();
  ASSERT_EQ(problem.model.events.size(), 3U);
  const Event& hit = problem.model.events[0];
  EXPECT_EQ(hit.name, "hit");
  EXPECT_EQ(hit.crossing, Crossing::kFalling);
  EXPECT_FALSE(hit.stops);
  ASSERT_EQ(hit.assignments.size(), 2U);
  EXPECT_EQ(hit.assignments[0].state, 1U);
  EXPECT_EQ(PrintExpression(problem.model, hit.assignments[0].value), "-0.9*y'");
  EXPECT_EQ(hit.assignments[1].state, 2U);
  EXPECT_EQ(PrintExpression(problem.model, problem.model.events[1].expression), "y'");
  EXPECT_EQ(problem.model.events[2].crossing, Crossing::kBoth);
  EXPECT_TRUE(problem.model.events[2].stops);
}

TEST(BuildModel, MistakesInEvents)
{
  const auto errors = [](const std::string& text) {
    return ReadProblem("x' = 1; k = 2; m = 2*x; " + text).Errors();
  };
  EXPECT_THAT(errors("event hit: x < 3;"),
              ElementsAre("x < 3: this is a condition and has no value (write event name: a - b)"));
  EXPECT_THAT(errors("event hit: x; event hit: x - 1;"),
              ElementsAre("hit: two events are named 'hit'"));
  EXPECT_THAT(
      errors("event hit: k - 1;"),
      ElementsAre(HasSubstr("k - 1: this event never happens: its expression is constant")));
  EXPECT_THAT(errors("event hit: x { x' = 2; };"),
              ElementsAre("x': this derivative has no value of its own: the equation gives it (the "
                          "equation of 'x' has the order 1)"));
  EXPECT_THAT(errors("event hit: x { m = 2; };"),
              ElementsAre("m: 'm' is a definition, no variable with a value of its own"));
  EXPECT_THAT(errors("event hit: x { x = 2; x = 3; };"),
              ElementsAre("x: 'x' is assigned twice in this event"));
  EXPECT_THAT(errors("event hit: 1/0*x;"), ElementsAre("1/0: division by zero"));
}

TEST(BuildModel, NamesInEventsAreResolved)
{
  EXPECT_THAT(ReadProblem("x' = 1; event hit: y falling { z = q; };").Errors(),
              testing::IsSupersetOf({"y: 'y' is not defined", "q: 'q' is not defined",
                                     "z: there is no equation for 'z'"}));
}

TEST(BuildModel, TwoEventsOfOneName)
{
  EXPECT_THAT(ReadProblem("x' = 1; event hit: x; event hit: t;").Errors(),
              testing::Contains("hit: two events are named 'hit'"));
}

// ------------------------------------------------------------------------------
// Size

std::string Repeated(std::string_view text, int count)
{
  std::string result;
  for (int i = 0; i < count; ++i) result += text;
  return result;
}

TEST(BuildModel, DepthIsNoLimit)
{
  constexpr int kDepth = 100000;
  const std::string close(kDepth, ')');
  for (const std::string& text :
       {"x' = " + Repeated("(", kDepth) + "x" + close + ";",
        "x' = " + Repeated("sin(", kDepth) + "x" + close + ";",
        "x' = x" + Repeated(" + 1/x", kDepth) + ";", "x' = " + Repeated("x^", kDepth) + "x;",
        "x' = " + Repeated("1 - (", kDepth) + "x" + close + ";",
        "x' = 1 & " + Repeated("cos(", kDepth) + "1" + close + ";"}) {
    const ReadProblem problem(text);
    EXPECT_EQ(problem.Remarks(), "");
    EXPECT_FALSE(PrintModel(problem.model).empty());
  }
}

TEST(BuildModel, LongChainsOfDefinitions)
{
  std::string text = "x' = a0 & k0; k100000 = 1; a100000 = x;\n";
  for (int i = 0; i < 100000; ++i) {
    const std::string name = std::to_string(i), next = std::to_string(i + 1);
    text += "a" + name + " = a" + next + " + 1; k" + name + " = k" + next + " + 1;\n";
  }
  const ReadProblem problem(text);
  EXPECT_EQ(problem.Remarks(), "");
  EXPECT_EQ(problem.model.parameters.size(), 100001U);
  EXPECT_EQ(problem.model.columns.size(), 100002U);
}

TEST(BuildModel, TenThousandEquations)
{
  std::string text;
  for (int i = 0; i < 10000; ++i) {
    const std::string name = "u" + std::to_string(i);
    text += name + "' = u" + std::to_string((i + 1) % 10000) + " - 2*" + name + " + u" +
            std::to_string((i + 9999) % 10000) + " & 1/" + std::to_string(i + 1) + ";\n";
  }
  const ReadProblem problem(text);
  EXPECT_EQ(problem.Remarks(), "");
  ASSERT_EQ(problem.model.states.size(), 10000U);
  EXPECT_EQ(problem.RightHandSide("u9999"), "u0 - 2*u9999 + u9998");
}

TEST(BuildModel, TenThousandMistakes)
{
  std::string text;
  for (int i = 0; i < 10000; ++i) {
    const std::string name = "name" + std::to_string(i);
    text += name + "' = wrong" + std::to_string(i) + "; other" + std::to_string(i) + "(0) = 1;\n";
  }
  const ReadProblem problem(text);
  EXPECT_EQ(problem.Errors().size(), 20000U);
  EXPECT_THAT(problem.Remarks(), testing::EndsWith("19900 more errors are not shown\n"));
}

TEST(BuildModel, ManyCirclesThroughOneDefinition)
{
  // Each definition leads back to the first: one circle is shown, in a time that does not grow with
  // their number squared.
  std::string text;
  for (int i = 0; i < 50000; ++i) {
    text += "a" + std::to_string(i) + " = a" + std::to_string(i + 1) + " + a0;\n";
  }
  text += "a50000 = a0;";
  const ReadProblem problem(text);
  EXPECT_EQ(problem.Errors().size(), 1U);
}

TEST(BuildModel, ManyParametersOfAFunction)
{
  std::string names = "u0", sum = "u0", arguments = "x";
  for (int i = 1; i < 20000; ++i) {
    names += ",u" + std::to_string(i);
    sum += "+u" + std::to_string(i);
    arguments += ",x";
  }
  const ReadProblem problem("function f(" + names + ") = " + sum + "; x' = f(" + arguments + ");");
  EXPECT_EQ(problem.Remarks(), "");
}

TEST(BuildModel, TheHighestOrder)
{
  const ReadProblem problem("x'10000 = 1;");
  EXPECT_FALSE(problem.diagnostics.HasErrors());
  EXPECT_EQ(problem.model.states.size(), 10000U);
}

TEST(BuildModel, OrdersTogetherHaveALimit)
{
  std::string text;
  for (int i = 0; i < 3000; ++i) text += "x" + std::to_string(i) + "'10000 = 1;\n";
  const ReadProblem problem(text);
  EXPECT_EQ(problem.Errors().size(), 2999U);
  EXPECT_THAT(problem.Errors()[0], HasSubstr("the orders of all equations together are too large"));
  EXPECT_LT(problem.model.states.size(), 20000U);
}

TEST(BuildModel, HugeNumbersCostNothing)
{
  const ReadProblem problem(
      "x' = 1e999999999*t & 1e-999999999; y' = 2^999999999*t & (1/3)^1e18; z' = 2^2^2^2^2^2^2 & "
      "10^10^10^10;");
  EXPECT_EQ(problem.Remarks(), "");
  EXPECT_LT(problem.model.graph.Size(), 50U);
  EXPECT_THAT(ReadProblem("x' = 1e9999999999999999999;").Errors(),
              ElementsAre("1e9999999999999999999: the exponent of this number is too large "
                          "(exponents go from -10^18 to "
                          "10^18)"));
}

TEST(BuildModel, AnEmptyTextIsNoProblem)
{
  EXPECT_THAT(ReadProblem("").Remarks(), HasSubstr("test.varno:1:1: error: there is no equation"));
  EXPECT_THAT(ReadProblem("// only a comment\n").Remarks(),
              HasSubstr("error: there is no equation"));
}

// ------------------------------------------------------------------------------
// Settings

TEST(BuildModel, SettingsChangeParameters)
{
  const ReadProblem problem("mu = 3; k = mu + 1; x' = k*x;", {"mu=7", "k = mu/2 + 1", "mu = 8"});
  EXPECT_EQ(problem.Remarks(), "");
  EXPECT_EQ(problem.RightHandSide("x"), "k*x");
  ASSERT_EQ(problem.model.parameters.size(), 2U);
  EXPECT_EQ(PrintExpression(problem.model, problem.model.parameters[0].value), "8");
  EXPECT_EQ(PrintExpression(problem.model, problem.model.parameters[1].value), "mu/2 + 1");
}

TEST(BuildModel, SettingsMayTurnTheOrderOfParameters)
{
  const ReadProblem problem("a = 1; b = 2*a; x' = b;", {"a=b + 1", "b=5"});
  EXPECT_EQ(problem.Remarks(), "");
  ASSERT_EQ(problem.model.parameters.size(), 2U);
  EXPECT_EQ(problem.model.parameters[0].name, "b");
}

TEST(BuildModel, SettingsChangeStartValues)
{
  const ReadProblem problem("y'' = -y; y(0) = 1; k = 4;", {"y(0)=2", "y'(0)=k/3", "y(0)=5"});
  EXPECT_EQ(problem.Remarks(), "");
  EXPECT_EQ(problem.Start("y"), "5");
  EXPECT_EQ(problem.Start("y'"), "k/3");
}

TEST(BuildModel, SettingsBringInTheStartPoint)
{
  const ReadProblem problem("x' = 1 & 1;", {"x(3)=2"});
  EXPECT_EQ(problem.Remarks(), "");
  EXPECT_EQ(PrintExpression(problem.model, problem.model.startPoint.value()), "3");
}

TEST(BuildModel, WrongSettings)
{
  const auto errors = [](const std::string& setting) {
    return ReadProblem("mu = 3; x' = mu; d = x; function f(u) = u; x(0) = 1;", {setting}).Errors();
  };
  EXPECT_THAT(errors("nu=7"), ElementsAre("nu: there is no parameter 'nu'"));
  EXPECT_THAT(errors("Mu=7"), ElementsAre("Mu: there is no parameter 'Mu' (did you mean 'mu'?)"));
  EXPECT_THAT(errors("d=7"),
              ElementsAre("d: 'd' is no parameter (its definition depends on t or on variables)"));
  EXPECT_THAT(
      errors("f=7"),
      ElementsAre("f: 'f' is no parameter (only definitions without t and variables can be set)"));
  EXPECT_THAT(
      errors("x=7"),
      ElementsAre("x: 'x' is no parameter (a start value is set with its point, as in x(0)=1)"));
  EXPECT_THAT(errors("y(0)=7"), ElementsAre("y: there is no equation for 'y'"));
  EXPECT_THAT(errors("x'(0)=7"), ElementsAre(HasSubstr("this derivative has no value of its own")));
  EXPECT_THAT(errors("x(1)=7"),
              ElementsAre(HasSubstr("start values are given at different points")));
  EXPECT_THAT(errors("mu=x"),
              ElementsAre("x: the value of a parameter must be constant, and 'x' is a variable"));
  EXPECT_THAT(errors("mu=2*mu"), ElementsAre("mu: 'mu' is defined by itself: mu -> mu"));
  EXPECT_THAT(errors("mu=1/0"), ElementsAre("1/0: division by zero"));
  EXPECT_THAT(errors("mu=q"), ElementsAre("q: 'q' is not defined"));
  EXPECT_THAT(errors("mu"), ElementsAre(": unexpected end of the text, expected '=' or '('"));
  EXPECT_THAT(errors("mu=7;"),
              ElementsAre(HasSubstr(
                  "unexpected end of the statement, expected an operator or the end of the text")));
  EXPECT_THAT(errors(""), ElementsAre(": unexpected end of the text, expected a name"));
}

TEST(BuildModel, PlacesInSettings)
{
  EXPECT_EQ(ReadProblem("mu = 3; x' = mu;", {"mu=1", "nu=7"}).Remarks(),
            "--set:1:1: error: there is no parameter 'nu'\n"
            "  nu=7\n"
            "  ^~\n");
}

// ------------------------------------------------------------------------------
// Constants of the command line

TEST(AddConstant, MayUseParameters)
{
  ReadProblem problem("period = 2*pi; x' = period;");
  const NodeId node = AddConstant(problem.model, "10*period + 1/2", "--to", problem.sources);
  const std::vector<NodeId> parameters{problem.model.parameters[0].value};
  const Real value = EvaluateConstant(problem.model.graph, node, 100, parameters);
  Real expected(100);
  mpfr_const_pi(expected, MPFR_RNDN);
  mpfr_mul_ui(expected, expected, 20, MPFR_RNDN);
  mpfr_add_d(expected, expected, 0.5, MPFR_RNDN);
  mpfr_sub(expected, expected, value, MPFR_RNDN);
  EXPECT_LT(std::abs(expected.ToDouble()), 1e-27);
}

TEST(AddConstant, ReportsMistakes)
{
  const auto error = [](const std::string& text) -> std::string {
    ReadProblem problem("period = 2*pi; x' = period;");
    try {
      AddConstant(problem.model, text, "--to", problem.sources);
    } catch (const ProblemError& caught) {
      return caught.what();
    }
    return "";
  };
  EXPECT_THAT(error("10*piriod"), HasSubstr("--to:1:4: error: 'piriod' is not defined\n"));
  EXPECT_THAT(error("10*piriod"), HasSubstr("did you mean 'period'?"));
  EXPECT_THAT(error("2*t"), HasSubstr("this must be constant, and 't' is the time"));
  EXPECT_THAT(error("x"), HasSubstr("'x' is not defined"));
  EXPECT_THAT(error("1/0"), HasSubstr("division by zero"));
  EXPECT_THAT(error("2x"), HasSubstr("a product is written with '*': 2*x"));
  EXPECT_THAT(error(""), HasSubstr("unexpected end of the text, expected an expression"));
  EXPECT_EQ(error("1e3"), "");
}

TEST(ReadModel, ThrowsAllMistakes)
{
  Sources sources;
  Diagnostics diagnostics;
  const std::uint32_t source = sources.Add("p.varno", "x' = 2x;\ny' = q;\n");
  try {
    ReadModel(source, {}, sources, diagnostics);
    FAIL() << "no error";
  } catch (const ProblemError& caught) {
    EXPECT_THAT(caught.what(), HasSubstr("p.varno:1:7: error:"));
    EXPECT_THAT(caught.what(), HasSubstr("p.varno:2:6: error:"));
    EXPECT_EQ(caught.Remarks().All().size(), 2U);
  }
}

}  // namespace
}  // namespace varno::solve
