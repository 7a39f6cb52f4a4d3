#include "solve/team/pace.h"

#include <gtest/gtest.h>

namespace varno::solve {
namespace {

constexpr std::size_t kRounds = 100;

/// How many of so many jobs are done together where these take so long.
int JobsTogether(Pace& pace, int jobs, double secondsTogether, double secondsAlone)
{
  int together = 0;
  for (int job = 0; job < jobs; ++job) {
    const bool isTogether = pace.IsSampleTogether();
    if (isTogether) ++together;
    pace.Took(kRounds, isTogether ? secondsTogether : secondsAlone);
  }
  return together;
}

TEST(Pace, StaysTogetherWhereThatPays)
{
  Pace pace;
  const int together = JobsTogether(pace, 1000, 0.6, 1);
  EXPECT_GT(together, 970);
  // Samples of some alone must tell.
  EXPECT_LT(together, 1000);
  EXPECT_TRUE(pace.IsTogether());
}

TEST(Pace, IsAloneWhereThatIsFaster)
{
  Pace pace;
  EXPECT_LT(JobsTogether(pace, 1000, 20, 1), 15);
  EXPECT_FALSE(pace.IsTogether());
}

TEST(Pace, TimesAPartOfEachJob)
{
  EXPECT_EQ(50U, Pace::FirstOfSample(kRounds));
  EXPECT_EQ(62U, Pace::BehindSample(kRounds));
  EXPECT_EQ(Pace::FirstOfSample(1), Pace::BehindSample(1));
}

TEST(Pace, LearnsNothingFromRoundsWithNothingToDo)
{
  Pace pace;
  EXPECT_EQ(JobsTogether(pace, 100, 2e-6, 1e-6), 100);
}

TEST(Pace, FollowsWhatElseTheMachineDoes)
{
  Pace pace;
  JobsTogether(pace, 1000, 20, 1);
  JobsTogether(pace, 300, 0.6, 1);
  EXPECT_GT(JobsTogether(pace, 1000, 0.6, 1), 970);
  JobsTogether(pace, 20, 20, 1);
  EXPECT_LT(JobsTogether(pace, 1000, 20, 1), 15);
}

TEST(Pace, TimesLongJobsAlikeOnly)
{
  Pace pace;
  pace.Took(1, 1);
  pace.Took(kRounds, 1);
  for (int i = 0; i < 100; ++i) pace.Took(kRounds + 1, 100);
  EXPECT_EQ(pace.IsTogether(), Pace(pace).IsTogether());
  pace.Took(1, 100);
  EXPECT_GT(JobsTogether(pace, 100, 0.6, 1), 90);
}

}  // namespace
}  // namespace varno::solve
