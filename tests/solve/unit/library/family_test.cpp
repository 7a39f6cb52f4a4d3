// Members of a family against problems that are read with their values.

#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <mpfr.h>

#include "solve/library/solve.h"

namespace varno::solve {
namespace {

using Texts = std::vector<std::string>;

/// All rows, or what ended them.
std::string Outcome(Solution solution)
{
  std::string text;
  try {
    while (const std::optional<Row> row = solution.Next()) {
      text += row->time.Text();
      for (const Value& value : row->values) text += " " + value.Text();
      text += "\n";
    }
  } catch (const RunEnded& end) {
    text += end.what();
  }
  return text;
}

const Options kOptions{.rows = RowsPoints{2}, .digits = 20};

std::string ByFamily(const Family& family, const std::vector<SweptValue>& values)
{
  try {
    return Outcome(family.At(values));
  } catch (const InputError& error) {
    return error.what();
  }
}

std::string BySettings(const Problem& problem, const Texts& names,
                       const std::vector<SweptValue>& values, const Options& options)
{
  try {
    Texts settings;
    for (std::size_t i = 0; i < names.size(); ++i)
      settings.push_back(names[i] + "=" + values[i].expression);
    return Outcome(Solution(problem.With(settings), options));
  } catch (const InputError& error) {
    return error.what();
  }
}

/// Compares both for each of the values, which are given to all names in turn.
void ExpectTheSame(const std::string& text, const Texts& names, const Texts& expressions,
                   const Options& options = kOptions)
{
  const Problem problem = Problem::Parse(text, "text");
  const Family family(problem, options, names);
  const SweptValues values = SweptValues::List(expressions, 5);
  for (std::int64_t i = 0; i < values.count; ++i) {
    std::vector<SweptValue> member;
    for (std::size_t j = 0; j < names.size(); ++j)
      member.push_back(values.at((i + static_cast<std::int64_t>(j)) % values.count));
    EXPECT_EQ(BySettings(problem, names, member, options), ByFamily(family, member))
        << text << " " << i;
  }
}

}  // namespace

TEST(Family, PutsParametersIn)
{
  ExpectTheSame("a = 2; b = a/3; x' = -b*x*y + a & b; y' = x - sin(a)*y & 1; e = x/a;", {"a"},
                {"1/2", "3", "1.25", "7", "-2"});
}

TEST(Family, PutsStartValuesIn)
{
  ExpectTheSame("x'' = -x; x(0) = 1;", {"x(0)", "x'(0)"}, {"0", "1", "-1/3", "2"});
  ExpectTheSame("x'' = -x & 1;", {"x'( 0 )"}, {"0", "3"});
  ExpectTheSame("x''' = -x'' & 1;", {"x'2(0)"}, {"0", "3"});
}

// 0*sqrt(y) is 0 also where y < 0, and where 0 stands the structure is another one.
TEST(Family, ZerosChangeTheEquations)
{
  ExpectTheSame("a = 2; y' = -1 + a*sqrt(y) & 1/16;", {"a"}, {"0", "1", "1/2"});
  ExpectTheSame("a = 2; b = 1; y' = y*(a - b) & 1;", {"a"}, {"1", "2", "0"});
  ExpectTheSame("a = 2; y' = y/a & 1;", {"a"}, {"0", "2"});
}

// (-1)^n and sqrt of the whole n are other functions for each n.
TEST(Family, ExponentsChangeTheEquations)
{
  ExpectTheSame("n = 2; y' = y^n & -1/2;", {"n"}, {"2", "3", "1", "0", "5/2", "1/2"});
  ExpectTheSame("n = 2; c = 1; y' = c*y^n & 1/2;", {"n", "c"}, {"2", "3", "1/2", "0", "1"});
  ExpectTheSame("n = 2; y' = y*ln(n) & 1;", {"n"}, {"2", "1", "0", "-1", "3"});
}

TEST(Family, IrrationalValuesAreReadWithTheEquations)
{
  ExpectTheSame("a = 2; y' = a*cos(t) & 1;", {"a"}, {"pi", "sqrt(2)", "1/3"});
}

TEST(Family, TimesMayDependOnValues)
{
  Options options = kOptions;
  options.to = "2*a";
  ExpectTheSame("a = 2; y' = y/a & 1;", {"a"}, {"1/2", "3"}, options);
}

TEST(Family, DefinitionsOfOtherNamesAreMovedAlong)
{
  // b comes first once a is made of numbers alone
  ExpectTheSame("a = 2*b; b = 3; y' = a*y + b & 1;", {"a", "b"}, {"2", "5", "1/3"});
}

TEST(Family, RestsAtThatDependOnValues)
{
  Options options = kOptions;
  options.to = "100";
  options.steady = "1/1000000";
  ExpectTheSame("a = 1; x' = a*(2 - x)*3/7 & 0;", {"a"}, {"1", "2", "3", "1/1000000"}, options);
  options.steady = "a/1000000";
  ExpectTheSame("a = 1; x' = 2 - x & 0;", {"a"}, {"1", "2", "10"}, options);
}

TEST(Family, PeriodsDependOnValues)
{
  Options options = kOptions;
  options.to = "7";
  options.period = "x";
  ExpectTheSame("w = 1; x' = y & 1; y' = -w^2*x & 0;", {"w"}, {"1", "2", "1.5"}, options);
}

TEST(Family, ConditionsDependOnValues)
{
  ExpectTheSame("a = 1; x' = if(x < a, 1, -a/2) + min(a, t) & 0;", {"a"}, {"1/3", "2", "0", "-1"});
  ExpectTheSame("a = 1; x' = if(a < 1, floor(t/a), abs(x - a)) & 0;", {"a"}, {"1/3", "2", "1"});
  ExpectTheSame("a = 1; x' = max(a, 2)*x + sign(a) & 1;", {"a"}, {"1/3", "2", "-5"});
  ExpectTheSame("a = 1; x' = 1 & a; y = floor(x + a);", {"a", "x(0)"}, {"1/3", "2", "1/7"});
}

TEST(Family, EventsDependOnValues)
{
  ExpectTheSame("a = 1/2; x' = a & 0; y' = 0 & a; event e: x - a/3 { y = x + a; x = x/2; };",
                {"a", "y(0)"}, {"1/3", "2", "1.25"});
  ExpectTheSame("a = 1/2; x' = 1 & 0; event e: x - a stop;", {"a"}, {"1/3", "1/5", "3"});
}

TEST(Family, UnknownNamesAreTold)
{
  const Problem problem = Problem::Parse("a = 1; y' = a & 1;", "text");
  EXPECT_THROW(Family(problem, kOptions, {"c"}), InputError);
  EXPECT_THROW(Family(problem, kOptions, {"z(0)"}), InputError);
}

TEST(Family, ThreadsShareIt)
{
  const Problem problem = Problem::Parse("a = 1; n = 2; y' = a*y^n & 1/8;", "text");
  const Family family(problem, kOptions, {"a", "n"});
  const SweptValues values = SweptValues::List({"1/2", "3", "2", "5/4"}, 5);
  std::vector<std::jthread> threads;
  for (std::int64_t i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] {
      for (std::int64_t j = 0; j < 4; ++j) {
        const std::vector<SweptValue> member{values.at(i), values.at(j)};
        EXPECT_EQ(BySettings(problem, {"a", "n"}, member, kOptions), ByFamily(family, member));
      }
      mpfr_free_cache();  // which belongs to the thread
    });
  }
}

}  // namespace varno::solve
