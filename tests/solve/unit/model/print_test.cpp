#include "solve/model/print.h"

#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/solve/support/read_problem.h"

namespace varno::solve {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

TEST(PrintModel, AllParts)
{
  const ReadProblem problem("y'' = -k*y & 1; y'(2) = 1/3; k = 2*pi; energy = y'^2/2 + k*y^2/2;");
  EXPECT_EQ(PrintModel(problem.model),
            "parameters\n"
            "  k = 2*pi\n"
            "equations\n"
            "  y' = y'\n"
            "  y'' = -k*y\n"
            "start values at t = 2\n"
            "  y = 1\n"
            "  y' = 1/3\n"
            "columns\n"
            "  y\n"
            "  y'\n"
            "  energy = y'^2/2 + k*y^2/2\n");
}

TEST(PrintModel, Events)
{
  const ReadProblem problem(
      "y' = v & 1; v' = -1; event hit: y falling stop { v = -v/2; y = 0; }; event two: t - 2;");
  EXPECT_THAT(PrintModel(problem.model), EndsWith("events\n"
                                                  "  hit: y falling stop { v = -v/2; y = 0; }\n"
                                                  "  two: t - 2\n"));
}

TEST(PrintExpression, ConditionsKeepTheirParentheses)
{
  for (const char* text :
       {"if((x < 1 or t < x) and not (x < 2 and t < 2), 1, 2)", "if(not (x < 1 or t < 1), 1, 2)",
        "if(x < 1 or t < x and x < 2, if(x <= t, 1, 2), abs(x + 1))", "atan2(x + 1, min(x, t))"}) {
    const ReadProblem problem(std::string("x' = 1; f = ") + text + ";");
    EXPECT_EQ(problem.ColumnText("f"), text);
  }
}

TEST(PrintModel, SharedPartsAreNamed)
{
  const ReadProblem problem("x' = r*x; y' = r*y; r = sin(x*x + y*y)*cos(t)/(1 + x);");
  EXPECT_EQ(PrintModel(problem.model),
            "shared parts\n"
            "  $1 = sin(x*x + y*y)*cos(t)/(1 + x)\n"
            "equations\n"
            "  x' = $1*x\n"
            "  y' = $1*y\n"
            "start values at t = the first time\n"
            "  x = 0\n"
            "  y = 0\n"
            "columns\n"
            "  x\n"
            "  y\n"
            "  r = $1\n");
}

TEST(PrintModel, SharingDoesNotExplode)
{
  std::string text = "function f(u) = u*u + u; x' = ";
  for (int i = 0; i < 1000; ++i) text += "f(";
  text += "x" + std::string(1000, ')') + ";";
  const ReadProblem problem(text);
  EXPECT_LT(PrintModel(problem.model).size(), 50000U);
}

TEST(PrintModel, LongExpressionsAreDivided)
{
  std::string text = "x' = x";
  for (int i = 0; i < 100000; ++i) text += " + " + std::to_string(i) + "*x";
  const ReadProblem problem(text + ";");
  EXPECT_LT(PrintModel(problem.model).size(), 20U * text.size());
}

TEST(PrintExpression, IsCut)
{
  std::string text = "function f(u) = u*u + u; x' = ";
  for (int i = 0; i < 1000; ++i) text += "f(";
  text += "x" + std::string(1000, ')') + ";";
  const ReadProblem problem(text);
  EXPECT_THAT(problem.RightHandSide("x"), EndsWith("..."));
  EXPECT_LT(problem.RightHandSide("x").size(), 2100U);
}

TEST(PrintExpression, ParenthesesWhereTheyAreNeeded)
{
  const ReadProblem problem(
      "a = t - (t - 1) - 2; b = t/(t*2)*3; c = (-t)^2; d = (t^2)^3; e = t^(5*t); f = -(t + 1); g = "
      "t*-t; h = (t + 1)*2;"
      "i = atan2(t, t + 1); j = (1/3)^t; k = (-2)^t; l = t/(1/3); m = 2*(t/3); n = t - -t; o = "
      "argcotanh(t - (1 - t));");
  EXPECT_EQ(problem.Remarks(), "");
  EXPECT_EQ(problem.ColumnText("a"), "t - (t - 1) - 2");
  EXPECT_EQ(problem.ColumnText("b"), "t/(t*2)*3");
  EXPECT_EQ(problem.ColumnText("c"), "(-t)^2");
  EXPECT_EQ(problem.ColumnText("d"), "(t^2)^3");
  EXPECT_EQ(problem.ColumnText("e"), "t^(5*t)");
  EXPECT_EQ(problem.ColumnText("f"), "-(t + 1)");
  EXPECT_EQ(problem.ColumnText("g"), "t*(-t)");
  EXPECT_EQ(problem.ColumnText("h"), "(t + 1)*2");
  EXPECT_EQ(problem.ColumnText("i"), "atan2(t, t + 1)");
  EXPECT_EQ(problem.ColumnText("j"), "(1/3)^t");
  EXPECT_EQ(problem.ColumnText("k"), "(-2)^t");
  EXPECT_EQ(problem.ColumnText("l"), "t/(1/3)");
  EXPECT_EQ(problem.ColumnText("m"), "2*(t/3)");
  EXPECT_EQ(problem.ColumnText("n"), "t - -t");
  EXPECT_EQ(problem.ColumnText("o"), "argcotanh(t - (1 - t))");
}

TEST(PrintExpression, NumbersAreDecimalsWhereThatIsExact)
{
  const ReadProblem problem(
      "a = t + 0.1; b = t + 1/8; c = t + 2/3; d = t - 12.50; e = t + 1e300; f = t + 1e-300; g = t "
      "+ 1.5e40; h = t + 100;"
      "i = t + 2.5e999999; j = t + 0.0001; k = t*(-0.25);");
  EXPECT_EQ(problem.ColumnText("a"), "t + 0.1");
  EXPECT_EQ(problem.ColumnText("b"), "t + 0.125");
  EXPECT_EQ(problem.ColumnText("c"), "t + 2/3");
  EXPECT_EQ(problem.ColumnText("d"), "t - 12.5");
  EXPECT_EQ(problem.ColumnText("e"), "t + 1e300");
  EXPECT_EQ(problem.ColumnText("f"), "t + 1e-300");
  EXPECT_EQ(problem.ColumnText("g"), "t + 1.5e40");
  EXPECT_EQ(problem.ColumnText("h"), "t + 100");
  EXPECT_EQ(problem.ColumnText("i"), "t + 25*10^999998");
  EXPECT_EQ(problem.ColumnText("j"), "t + 0.0001");
  EXPECT_EQ(problem.ColumnText("k"), "t*(-0.25)");
}

}  // namespace
}  // namespace varno::solve
