#include <algorithm>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "solve/library/solve.h"

namespace varno::solve {
namespace {

/// The rows as text, "t x y" each.
std::vector<std::string> Rows(const std::string& text, Options options,
                              const std::vector<std::string>& settings = {})
{
  Problem problem = Problem::Parse(text, "test.varno");
  for (const std::string& setting : settings) problem.Set(setting);
  Solution solution(problem, std::move(options));
  std::vector<std::string> rows;
  while (const auto row = solution.Next()) {
    std::string line = row->time.Text();
    for (const Value& value : row->values) line += ' ' + value.Text();
    rows.push_back(line);
  }
  return rows;
}

Options To(const std::string& to, int digits, RowChoice rows = RowAtEnd{})
{
  Options options;
  options.to = to;
  options.digits = digits;
  options.rows = std::move(rows);
  return options;
}

using Lines = std::vector<std::string>;

// e to 40 digits is a published constant.
TEST(Solution, GivesTheDigitsAskedFor)
{
  EXPECT_EQ(Rows("y' = y & 1;", To("1", 40)),
            Lines{"1 2.718281828459045235360287471352662497757e+00"});
  EXPECT_EQ(Rows("y' = y & 1;", To("1", 1)), Lines{"1 3e+00"});
}

TEST(Solution, RunsBackwards)
{
  // exp(-1) to 20 digits
  EXPECT_EQ(Rows("y' = y & 1;", To("-1", 20)), Lines{"-1 3.6787944117144232160e-01"});
}

TEST(Solution, BeginsInsideTheInterval)
{
  Options options = To("1", 5, RowsPoints{2});
  options.from = "-1";
  EXPECT_EQ(Rows("y' = y; y(0) = 1;", options),
            (Lines{"-1 3.6788e-01", "0 1.0000e+00", "1 2.7183e+00"}));
}

TEST(Solution, BeginsBehindTheInterval)
{
  Options options = To("1", 5, RowsPoints{1});
  options.from = "0";
  EXPECT_EQ(Rows("y' = y; y(2) = 1;", options), (Lines{"0 1.3534e-01", "1 3.6788e-01"}));
}

TEST(Solution, SettingsChangeParametersAndStartValues)
{
  EXPECT_EQ(Rows("mu = 3; y' = mu & 1;", To("1", 5), {"mu=2", "y(0)=1/2"}), Lines{"1 2.5000e+00"});
}

// sin(pi) and cos(pi/2) are zeros that rounding hides; the circle's drift is one of a cancellation.
TEST(Solution, VerifiesZeros)
{
  const std::string circle = "x' = v & 1; v' = -x; drift = x*x + v*v - 1;";
  EXPECT_EQ(Rows(circle, To("pi", 15)),
            Lines{"3.14159265358979 -1.00000000000000e+00 0e-30 0e-30"});
  EXPECT_EQ(Rows("y' = y & sin(pi);", To("1", 15)), Lines{"1 0"});
}

TEST(Solution, UndefinedDefinitionsDoNotEndTheRun)
{
  EXPECT_EQ(Rows("y' = -1 & 1; l = sqrt(y);", To("2", 3)), Lines{"2 -1.00e+00 nan"});
}

// x = 1/(1 - t)
TEST(Solution, EndsAtAPoleWithItsPlace)
{
  try {
    Rows("y' = y^2 & 1;", To("2", 15));
    FAIL() << "the pole was passed";
  } catch (const RunEnded& end) {
    EXPECT_EQ(end.Reason(), EndReason::kSingularity);
    EXPECT_NE(std::string(end.what()).find("beyond t = 1:"), std::string::npos) << end.what();
  }
}

// The two poles of 1/((t-1)^2 + 1e-30), 1e-15 beside the path, slow it down and are no end. The
// integral is (atan(1e15) - atan(-1e15)) 1e15 = (pi - 2e-15 + ...) 1e15.
TEST(Solution, PassesAPairOfPolesBesideThePath)
{
  EXPECT_EQ(Rows("y' = 1/((t-1)^2 + 1e-30);", To("2", 10)), Lines{"2 3.141592654e+15"});
}

TEST(Solution, AStepOverTheEdgeOfADomainIsAnEnd)
{
  // h = (1 - t/2)^2 until t = 2, and no further: the series of sqrt(h), 1 - t/2, knows no edge.
  EXPECT_THROW(Rows("h' = -sqrt(h) & 1;", To("3", 10)), RunEnded);
}

TEST(Solution, ReportsWhatIsUndefinedAtTheStart)
{
  try {
    Rows("y' = y/y;", To("1", 10));
    FAIL() << "0/0 was passed";
  } catch (const RunEnded& end) {
    EXPECT_EQ(end.Reason(), EndReason::kLostDomain);
    EXPECT_NE(std::string(end.what()).find("'y/y'"), std::string::npos) << end.what();
  }
}

TEST(Solution, MoreDigitsThanTheLimitAllowsAreRefused)
{
  Options options = To("100", 15);
  options.maxBits = 150;  // enough for a first attempt, not for a chaotic system
  const std::string lorenz = "x' = 10*(y-x) & 1; y' = x*(28-z)-y & 1; z' = x*y-8/3*z & 1;";
  try {
    Rows(lorenz, options);
    FAIL() << "digits were given that cannot be had";
  } catch (const RunEnded& end) {
    EXPECT_EQ(end.Reason(), EndReason::kLimit);
  }
}

TEST(Solution, StepsAreLimited)
{
  Options options = To("1000", 10);
  options.maxSteps = 5;
  EXPECT_THROW(Rows("x' = v & 1; v' = -x;", options), RunEnded);
}

TEST(Solution, WrongOptionsAreNamed)
{
  const Problem problem = Problem::Parse("y' = y & 1;", "test.varno");
  EXPECT_THROW(Solution(problem, To("1", 0)), InputError);
  EXPECT_THROW(Solution(problem, To("1", 10'001)), InputError);
  EXPECT_THROW(Solution(problem, To("ln(0)", 5)), InputError);
  EXPECT_THROW(Solution(problem, To("1", 5, RowsEvery{"0"})), InputError);
  Options columns = To("1", 5);
  columns.columns = {"z"};
  EXPECT_THROW(Solution(problem, columns), InputError);
}

TEST(Solution, ObjectsShareNothingBetweenThreads)
{
  std::vector<Lines> results(4);
  std::vector<std::thread> threads;
  for (std::size_t i = 0; i < results.size(); ++i) {
    threads.emplace_back(
        [&results, i] { results[i] = Rows("x' = v & 1; v' = -x;", To("7", 60, RowsPoints{3})); });
  }
  for (std::thread& thread : threads) thread.join();
  for (const Lines& rows : results) EXPECT_EQ(rows, results[0]);
  EXPECT_EQ(results[0].size(), 4);
}

// x = 1/3 + e^t/10^20, of which the first attempt loses its digits on the way.
TEST(Solution, AnAttemptThatBeganAgainTellsHowFarRowsAreRight)
{
  double farthest = 0;
  bool hasBegunAgain = false;
  Options options = To("60", 15, RowsPoints{60});
  options.progress = [&](const Progress& progress) {
    hasBegunAgain = hasBegunAgain || progress.time < farthest / 2;
    farthest = std::max(farthest, progress.time);
  };
  options.interrupted = [&] { return hasBegunAgain; };
  Solution solution(Problem::Parse("x' = x - 1/3 & 1/3 + 1e-20;", "test.varno"), options);
  std::string last;
  try {
    while (const auto row = solution.Next()) last = row->time.Text();
    ADD_FAILURE() << "not interrupted";
  } catch (const RunEnded& end) {
    EXPECT_NE(std::string(end.what())
                  .find("beginning again with more digits; the rows are right "
                        "to t = " +
                        last),
              std::string::npos)
        << end.what() << ", last row at t = " << last;
  }
}

}  // namespace
}  // namespace varno::solve
