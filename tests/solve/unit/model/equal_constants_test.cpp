#include "solve/model/equal_constants.h"

#include <cmath>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "solve/evaluation/constant.h"
#include "solve/evaluation/domain_error.h"
#include "solve/model/build_model.h"
#include "solve/number/exponent_range.h"
#include "tests/solve/support/read_problem.h"

namespace varno::solve {
namespace {

double ValueOf(const std::string& expression)
{
  ReadProblem problem("k = 3; half = 1/2; x' = k;");
  const NodeId node = AddConstant(problem.model, expression, "test", problem.sources);
  std::vector<NodeId> parameters;
  for (const Parameter& parameter : problem.model.parameters) parameters.push_back(parameter.value);
  const ScopedExponentRange range;
  return EvaluateConstant(problem.model.graph, node, 64, parameters).ToDouble();
}

// The C library's functions are the reference; both round, so the last bits may differ.
TEST(EvaluateConstant, EveryFunction)
{
  const double x = 0.5;
  EXPECT_DOUBLE_EQ(ValueOf("sin(half)"), std::sin(x));
  EXPECT_DOUBLE_EQ(ValueOf("cos(half)"), std::cos(x));
  EXPECT_DOUBLE_EQ(ValueOf("tan(half)"), std::tan(x));
  EXPECT_DOUBLE_EQ(ValueOf("cotan(half)"), 1 / std::tan(x));
  EXPECT_DOUBLE_EQ(ValueOf("asin(half)"), std::asin(x));
  EXPECT_DOUBLE_EQ(ValueOf("acos(half)"), std::acos(x));
  EXPECT_DOUBLE_EQ(ValueOf("atan(half)"), std::atan(x));
  EXPECT_DOUBLE_EQ(ValueOf("acotan(half)"), std::atan(1 / x));
  EXPECT_DOUBLE_EQ(ValueOf("acotan(-half)"), std::atan(-1 / x));
  EXPECT_DOUBLE_EQ(ValueOf("sinh(half)"), std::sinh(x));
  EXPECT_DOUBLE_EQ(ValueOf("cosh(half)"), std::cosh(x));
  EXPECT_DOUBLE_EQ(ValueOf("tanh(half)"), std::tanh(x));
  EXPECT_DOUBLE_EQ(ValueOf("cotanh(half)"), 1 / std::tanh(x));
  EXPECT_DOUBLE_EQ(ValueOf("asinh(half)"), std::asinh(x));
  EXPECT_DOUBLE_EQ(ValueOf("acosh(k)"), std::acosh(3.0));
  EXPECT_DOUBLE_EQ(ValueOf("atanh(half)"), std::atanh(x));
  EXPECT_DOUBLE_EQ(ValueOf("argcotanh(k)"), std::atanh(1.0 / 3));
  EXPECT_DOUBLE_EQ(ValueOf("sqrt(half)"), std::sqrt(x));
  EXPECT_DOUBLE_EQ(ValueOf("cbrt(-half)"), std::cbrt(-x));
  EXPECT_DOUBLE_EQ(ValueOf("exp(half)"), std::exp(x));
  EXPECT_DOUBLE_EQ(ValueOf("ln(half)"), std::log(x));
  EXPECT_DOUBLE_EQ(ValueOf("erf(half)"), std::erf(x));
  EXPECT_DOUBLE_EQ(ValueOf("atan2(half, -k)"), std::atan2(x, -3.0));
  EXPECT_DOUBLE_EQ(ValueOf("k^half"), std::sqrt(3.0));
  EXPECT_DOUBLE_EQ(ValueOf("-k^3/(half - pi)*2 + 1"), -27 / (x - M_PI) * 2 + 1);
}

TEST(EvaluateConstant, HugeNumbers)
{
  EXPECT_EQ(ValueOf("1e999999999999/1e999999999998"), 10);
  EXPECT_DOUBLE_EQ(ValueOf("ln(1e999999999)"), 999999999 * std::log(10));
}

TEST(EvaluateConstant, NoValue)
{
  // So little beyond 1 that the model leaves it to the evaluation.
  EXPECT_THROW(ValueOf("asin(1 + exp(-50))"), DomainError);
  EXPECT_THROW(ValueOf("sin(1e999999999)"), DomainError);  // on purpose: it would take all memory
}

TEST(AreEqualConstants, ExactlyOrToAThousandBits)
{
  const auto equal = [](const std::string& a, const std::string& b) {
    ReadProblem problem("k = 3; x' = k;");
    const NodeId first = AddConstant(problem.model, a, "test", problem.sources);
    const NodeId second = AddConstant(problem.model, b, "test", problem.sources);
    return AreEqualConstants(problem.model.graph, problem.model.parameters, first, second);
  };
  EXPECT_TRUE(equal("k/9", "1/k"));
  EXPECT_FALSE(equal("k/9", "1/3 + 1e-1000"));
  EXPECT_TRUE(equal("sqrt(2)*sqrt(3)", "sqrt(6)"));
  EXPECT_TRUE(equal("sin(pi)", "0"));
  EXPECT_FALSE(equal("pi", "355/113"));
  EXPECT_FALSE(equal("sqrt(2)", "sqrt(2) + 1e-200"));
  EXPECT_FALSE(equal("asin(1 + exp(-50))", "asin(1 + exp(-50)) + 1"));
}

}  // namespace
}  // namespace varno::solve
