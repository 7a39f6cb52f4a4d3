#include "solve/sweep/sweep.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace varno::solve {

namespace {

using Texts = std::vector<std::string>;

SweptName List(const std::string& name, const Texts& values)
{
  return {name, SweptValues::List(values, 5)};
}

}  // namespace

TEST(Sweep, LastAxisIsFastest)
{
  const Sweep sweep({{List("a", {"1", "2"})}, {List("b", {"3", "4", "5"})}});
  EXPECT_EQ(6, sweep.Count());
  EXPECT_EQ((Texts{"a", "b"}), sweep.Names());
  Texts all;
  for (std::int64_t run = 0; run < sweep.Count(); ++run) {
    const Combination combination = sweep.At(run);
    all.push_back(combination.texts[0] + combination.texts[1]);
  }
  EXPECT_EQ((Texts{"13", "14", "15", "23", "24", "25"}), all);
}

TEST(Sweep, NamesOfOneAxisChangeTogether)
{
  const Sweep sweep({{List("a", {"1", "2"}), List("b", {"3", "4"})}});
  EXPECT_EQ(2, sweep.Count());
  EXPECT_EQ((Texts{"2", "4"}), sweep.At(1).texts);
}

TEST(Sweep, ValuesAreExactAndTextsAreShort)
{
  const Sweep sweep({{{"a", SweptValues::Range("0", "1", "1/3", 4)}}});
  EXPECT_EQ(4, sweep.Count());
  EXPECT_EQ("(0)+2*(1/3)", sweep.At(2).values[0].expression);
  EXPECT_EQ("2/3", sweep.At(2).values[0].fraction);
  EXPECT_EQ((Texts{"0.6667"}), sweep.At(2).texts);
  EXPECT_EQ((Texts{"1"}), sweep.At(3).texts);
}

TEST(Sweep, RunsThatCannotBeCountedAreRefused)
{
  const SweepAxis axis{{"a", SweptValues::Range("1", "1e14", "1", 5)}};
  EXPECT_EQ(100'000'000'000'000, Sweep({axis}).Count());
  EXPECT_THROW(Sweep({axis, axis}), InputError);
}

}  // namespace varno::solve
