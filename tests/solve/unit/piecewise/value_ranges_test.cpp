#include "solve/piecewise/value_ranges.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/solve/support/read_problem.h"

namespace varno::solve {
namespace {

int SignOf(const std::string& expression)
{
  const ReadProblem problem("x' = 1; f = " + expression + ";");
  return ValueRanges(problem.model.graph).SignOf(problem.Column("f"));
}

TEST(ValueRanges, SignsOfWhatIsNeverZero)
{
  for (const char* expression :
       {"5/4 + cos(x*t)", "1 + x^2", "1/100 + (x - 1)*(x - 1)", "pi - 3 + sin(x)/8", "cosh(x)",
        "exp(x) + 1/7", "1/(2 + sin(t))", "t^30 + 1e-30", "2 - tanh(x)", "8/5 + atan(x)",
        "1 + abs(x)", "1 + sqrt(2 + x^2)", "3*(2 - sin(x))"})
    EXPECT_EQ(SignOf(expression), 1) << expression;
  for (const char* expression : {"cos(x) - 5/4", "-1 - x^4", "1/(sin(t) - 2)"})
    EXPECT_EQ(SignOf(expression), -1) << expression;
}

// 0 is reached, or may be: 1 + cos(x) at pi, x^2 at 0, exp(x) is rounded to 0 far away.
TEST(ValueRanges, OthersHaveNone)
{
  for (const char* expression : {"x", "t", "1 + x^3", "x^2", "1 + cos(x)", "1 - 1/x", "exp(x)",
                                 "1 + x^(1/2) - 1", "x^2 - x^2", "1 + ln(x)", "x/x", "abs(x)",
                                 "0*x", "pi - 355/113 + 1e-6*sin(x)", "tan(x)", "x^-2"})
    EXPECT_EQ(SignOf(expression), 0) << expression;
}

// Where an operand has no value, neither has the whole.
TEST(ValueRanges, NoneWhereThereMayBeNoValue)
{
  for (const char* expression :
       {"2 + sqrt(x)", "2 + sin(1/x)", "2 + sin(ln(x))", "2 + cos(x^-2)", "2 + sin(x^(1/2))",
        "2 + sin(tan(x))", "2 + sin(asin(x))", "1 + (1/x)^2"})
    EXPECT_EQ(SignOf(expression), 0) << expression;
}

// Whatever is computed with infinite ends, a range is one.
TEST(ValueRanges, InfiniteEnds)
{
  for (const char* expression :
       {"x - x*t", "(1 + x^2)*0*t", "(1 + x^2)/(1 + t^2)", "exp(x) - exp(t)", "cosh(x)/cosh(x)",
        "(x^2 - t^2)*(x^2 + t^2)", "atan(1/x)", "tanh(1/(x*x))", "sin(exp(exp(x)))"})
    EXPECT_EQ(SignOf(expression), 0) << expression;
}

}  // namespace
}  // namespace varno::solve
