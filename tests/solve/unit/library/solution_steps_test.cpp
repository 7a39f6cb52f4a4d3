#include <cmath>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "solve/library/solve.h"

namespace varno::solve {
namespace {

using testing::HasSubstr;
using testing::ThrowsMessage;

/// A solution at its end, with its steps kept.
Solution Solved(const std::string& text, Options options)
{
  options.keepSteps = true;
  Solution solution(Problem::Parse(text, "test.varno"), std::move(options));
  while (solution.Next()) {
  }
  return solution;
}

/// Whether a number is as far from the expected one as its last digit allows.
testing::AssertionResult IsRight(const Value& value, const Value& expected)
{
  mpfr_t difference, bound;
  mpfr_inits2(64, difference, bound, nullptr);
  mpfr_sub(difference, value.Get(), expected.Get(), MPFR_RNDN);
  mpfr_mul_2si(bound, expected.Get(), -165, MPFR_RNDN);  // 50 digits have 166 bits
  const bool isRight = mpfr_cmpabs(difference, bound) <= 0;
  mpfr_clears(difference, bound, nullptr);
  if (isRight) return testing::AssertionSuccess();
  return testing::AssertionFailure() << value.Text() << " instead of " << expected.Text();
}

Value Computed(int (*function)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t), double argument)
{
  mpfr_t number;
  mpfr_init2(number, 300);
  mpfr_set_d(number, argument, MPFR_RNDN);
  function(number, number, MPFR_RNDN);
  Value value(std::to_string(mpfr_get_d(number, MPFR_RNDN)), number);
  mpfr_clear(number);
  return value;
}

const std::string kOscillator = "x' = v; v' = -x; x(0) = 1; energy = x^2 + v^2;";

TEST(SolutionSteps, GiveTheSolutionAnywhere)
{
  Solution solution = Solved(kOscillator, {.to = "20", .rows = RowAtEnd{}, .digits = 50});
  // In no order; cos, by MPFR
  for (const double time : {13.0625, 0.5, 19.999, 7.25, 0.0, 20.0}) {
    const PointBetween point = solution.At(time);
    EXPECT_TRUE(IsRight(point.row.values[0], Computed(mpfr_cos, time))) << time;
    EXPECT_TRUE(point.verified) << time;
  }
  EXPECT_EQ(solution.At("10/3").row.time.Text(),
            "3.3333333333333333333333333333333333333333333333333");
  EXPECT_EQ(solution.At(0.1).row.time.ToDouble(), 0.1);
}

TEST(SolutionSteps, AreThereOnBothSidesOfTheStart)
{
  for (const auto& [from, to] : {std::pair("-3", "5"), std::pair("5", "-3")}) {
    Solution solution =
        Solved(kOscillator, {.from = from, .to = to, .rows = RowsPoints{2}, .digits = 50});
    for (const double time : {-2.5, 4.75, -0.125, 0.0, -3.0, 5.0})
      EXPECT_TRUE(IsRight(solution.At(time).row.values[0], Computed(mpfr_cos, time))) << time;
    EXPECT_GE(solution.Steps().size(), 2U);
  }
}

// Zero at pi/2, of which both runs know nothing but noise.
TEST(SolutionSteps, MarkWhatIsNotVerified)
{
  Solution solution = Solved(kOscillator, {.to = "5", .rows = RowAtEnd{}, .digits = 15});
  EXPECT_FALSE(solution.At("pi/2").verified);
  EXPECT_TRUE(solution.At("pi/3").verified);
  Solution single =
      Solved(kOscillator, {.to = "5", .rows = RowAtEnd{}, .digits = 15, .check = false});
  EXPECT_FALSE(single.At("pi/3").verified);
  EXPECT_NEAR(single.At("pi/3").row.values[0].ToDouble(), 0.5, 1e-15);
}

// An unstable equation, x = (3 cos t + sin t)/10 without the growing part: the runs begin again.
TEST(SolutionSteps, OfAttemptsGivenUpAreForgotten)
{
  Solution solution =
      Solved("x' = 3*x - cos(t) & 3/10;", {.to = "20", .rows = RowAtEnd{}, .digits = 20});
  const PointBetween point = solution.At(10);
  EXPECT_TRUE(point.verified);
  EXPECT_NEAR(point.row.values[0].ToDouble(), 0.3 * std::cos(10) - 0.1 * std::sin(10), 1e-15);
  EXPECT_GT(solution.Steps().front().Attempt(), 0);
  EXPECT_EQ(solution.Steps().front().Begin().Text(), "0");
  EXPECT_GE(solution.Steps().back().End().ToDouble(), 20);
}

TEST(SolutionSteps, TimesMayUseParameters)
{
  Solution solution = Solved("period = 2*pi; x'' = -x; x(0) = 1;",
                             {.to = "2*period", .rows = RowAtEnd{}, .digits = 12});
  EXPECT_EQ(solution.At("period").row.values[0].Text(), "1.00000000000e+00");
  EXPECT_THAT([&] { solution.At("perod"); }, ThrowsMessage<InputError>(HasSubstr("time:1:1")));
}

TEST(SolutionSteps, TimesLieBetweenTheStartAndTheLatestRow)
{
  Options options{.to = "5", .rows = RowAtEnd{}, .keepSteps = true};
  Solution solution(Problem::Parse(kOscillator, "test.varno"), options);
  EXPECT_THROW(solution.At(0.5), InputError);
  while (solution.Next()) {
  }
  EXPECT_NO_THROW(solution.At("5"));
  EXPECT_THROW(solution.At(-0.5), InputError);
  EXPECT_THROW(solution.At(100), InputError);
  EXPECT_THROW(solution.At(std::nan("")), InputError);
  options.keepSteps = false;
  Solution forgetful(Problem::Parse(kOscillator, "test.varno"), options);
  while (forgetful.Next()) {
  }
  EXPECT_THROW(forgetful.At(0.5), InputError);
}

// e^t about 0 has the coefficients 1/k!; going backwards changes no sign of them.
TEST(SolutionSteps, HaveTaylorCoefficients)
{
  for (const std::string to : {"1", "-1"}) {
    const Solution solution = Solved("y' = y & 1;", {.to = to, .rows = RowAtEnd{}, .digits = 10});
    const Step step = solution.Steps().front();
    EXPECT_EQ(step.Coefficient(0, 0).Text(), "1.000000000e+00");
    EXPECT_EQ(step.Coefficient(0, 1).Text(), "1.000000000e+00");
    EXPECT_EQ(step.Coefficient(0, 5).Text(), "8.333333333e-03");
    EXPECT_GE(step.Order(), 12);
    EXPECT_GE(step.Bits(), 53);
    EXPECT_THROW(step.Coefficient(0, step.Order() + 1), std::out_of_range);
    EXPECT_THROW(step.Coefficient(0, -1), std::out_of_range);
    EXPECT_THROW(step.Coefficient(1, 0), std::out_of_range);
  }
}

TEST(SolutionSteps, AreCalledBackInOrderForEachRun)
{
  std::vector<double> ends{0, 0};
  Options options{.to = "30", .rows = RowAtEnd{}};
  options.step = [&](const Step& step) {
    const auto run = static_cast<std::size_t>(step.Run());
    EXPECT_EQ(step.Begin().ToDouble(), ends[run]);
    EXPECT_GT(step.End().ToDouble(), ends[run]);
    ends[run] = step.End().ToDouble();
  };
  Solution solution(Problem::Parse("x'' = -x; x(0) = 1;", "test.varno"), options);
  EXPECT_EQ(solution.States(), (std::vector<std::string>{"x", "x'"}));
  while (solution.Next()) {
  }
  EXPECT_GE(ends[0], 30);
  EXPECT_GE(ends[1], 30);
}

TEST(SolutionSteps, TheCallMayEndTheRun)
{
  Options options{.to = "30"};
  options.step = [](const Step&) { throw std::runtime_error("enough"); };
  Solution solution(Problem::Parse(kOscillator, "test.varno"), options);
  EXPECT_THAT(
      [&] {
        while (solution.Next()) {
        }
      },
      ThrowsMessage<std::runtime_error>("enough"));
}

}  // namespace
}  // namespace varno::solve
