#include "solve/model/near_name.h"

#include <string>

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

TEST(EditDistance, CountsEdits)
{
  EXPECT_EQ(EditDistance("sigma", "sigma", 9), 0U);
  EXPECT_EQ(EditDistance("sigma", "SIGMA", 9), 0U);
  EXPECT_EQ(EditDistance("sgima", "sigma", 9), 1U);  // two neighbours swapped
  EXPECT_EQ(EditDistance("sigm", "sigma", 9), 1U);
  EXPECT_EQ(EditDistance("siigma", "sigma", 9), 1U);
  EXPECT_EQ(EditDistance("kitten", "sitting", 9), 3U);
  EXPECT_EQ(EditDistance("", "abc", 9), 3U);
  EXPECT_EQ(EditDistance("ca", "abc", 9), 3U);  // a swapped pair is not edited again
}

TEST(EditDistance, StopsAtTheLimit)
{
  EXPECT_EQ(EditDistance("kitten", "sitting", 2), 3U);
  EXPECT_EQ(EditDistance("a", "abcdefgh", 2), 3U);
}

std::string NearestOf(std::string_view name, std::initializer_list<std::string_view> candidates)
{
  NearName near(name);
  for (const std::string_view candidate : candidates) near.Consider(candidate);
  return std::string(near.Best());
}

TEST(NearName, TheNearestWins)
{
  EXPECT_EQ(NearestOf("velocty", {"density", "velocities", "velocity"}), "velocity");
  EXPECT_EQ(NearestOf("omga", {"omega", "omgb"}), "omega");
}

TEST(NearName, ShortNamesMustBeNearer)
{
  EXPECT_EQ(NearestOf("ab", {"ac", "AB"}), "AB");
  EXPECT_EQ(NearestOf("x", {"y", "z"}), "");
  EXPECT_EQ(NearestOf("abc", {"axy"}), "");
}

TEST(NearName, LongNamesAreNotCompared)
{
  const std::string name(100000, 'a');
  EXPECT_EQ(NearestOf(name, {name + "b"}), "");
}

}  // namespace
}  // namespace varno::solve
