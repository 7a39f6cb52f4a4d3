#include "solve/piecewise/time_forms.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/solve/support/read_problem.h"

namespace varno::solve {
namespace {

std::optional<TimeForm> FormOf(const std::string& expression)
{
  const ReadProblem problem("x' = 1; f = " + expression + ";");
  return TimeForms(problem.model.graph).Of(problem.Column("f"));
}

TEST(TimeForms, LinearOnes)
{
  const auto form = FormOf("3*(t/0.1 - 2)/4 - (1 - t)*(1/3)");
  ASSERT_TRUE(form);
  EXPECT_EQ(form->slope, Rational(15, 2) + Rational(1, 3));
  EXPECT_EQ(form->constant, Rational(-3, 2) - Rational(1, 3));
  EXPECT_EQ(form->Root(), Rational(11, 47));
}

TEST(TimeForms, WhatCancelsIsConstant)
{
  const auto form = FormOf("2*t + 3 - 2*t");
  ASSERT_TRUE(form);
  EXPECT_EQ(form->constant, 3);
  EXPECT_FALSE(form->Root());
}

TEST(TimeForms, OthersHaveNone)
{
  for (const char* expression : {"x + t", "t*t", "1/t", "sin(t)", "pi*t", "t/(1 - 1)", "abs(t)"})
    EXPECT_FALSE(FormOf(expression)) << expression;
}

}  // namespace
}  // namespace varno::solve
