#include "solve/team/team.h"

#include <algorithm>
#include <atomic>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>
#include <mpfr.h>

namespace varno::solve {
namespace {

TEST(Team, HasEachMemberDoItsPart)
{
  Team team(3);
  EXPECT_EQ(team.MemberCount(), 3);
  std::vector<int> calls(3, 0);
  for (int job = 0; job < 1000; ++job)
    team.Run(2, [&](int member, std::size_t round) { calls[member] += round == 0 ? 1 : 2; });
  EXPECT_EQ(calls, std::vector<int>(3, 3000));
}

TEST(Team, OfOneIsTheCaller)
{
  Team team(1);
  int calls = 0;
  team.Run(3, [&](int member, std::size_t) { calls += member + 1; });
  EXPECT_EQ(calls, 3);
}

// Each member reads what its neighbour wrote in the round before; some jobs are done by one member.
TEST(Team, SeesInARoundWhatWasDoneBefore)
{
  constexpr int kMembers = 3, kJobs = 200;
  constexpr std::size_t kRounds = 50;
  Team team(kMembers);
  std::vector<std::size_t> written(kMembers, 0);
  std::atomic<int> wrong = 0;
  for (int job = 0; job < kJobs; ++job) {
    team.Run(2 * kRounds, [&](int member, std::size_t round) {
      if (round % 2 == 0) {
        written[member] = round;
      } else if (written[(member + 1) % kMembers] + 1 != round) {
        ++wrong;
      }
    });
  }
  EXPECT_EQ(wrong, 0);
}

TEST(Team, StopsAllWhereOneThrows)
{
  Team team(3);
  for (int thrower = 0; thrower < 3; ++thrower) {
    const auto job = [&](int member, std::size_t) {
      if (member == thrower) throw std::runtime_error("no");
    };
    EXPECT_THROW(team.Run(1000000000, job), std::runtime_error);
    const auto asking = [&](int member, std::size_t) {
      if (member == thrower) throw std::runtime_error("no");
      for (;;) team.StopIfFailed();
    };
    EXPECT_THROW(team.Run(1, asking), std::runtime_error);
  }
  int calls = 0;
  team.Run(1, [&](int member, std::size_t) {
    if (member == 0) ++calls;
  });
  EXPECT_EQ(calls, 1);
}

TEST(Team, ThrowsWhatTheFirstMemberThrew)
{
  Team team(3);
  for (int i = 0; i < 100; ++i) {
    std::atomic<int> thrown = 0;
    try {
      team.Run(1, [&](int member, std::size_t) {
        if (member == 0) return;
        ++thrown;
        while (thrown < 2) {
        }
        throw member;
      });
      FAIL();
    } catch (const int member) {
      EXPECT_EQ(member, 1);
    }
  }
}

TEST(Team, HasTheWidestRangeOfExponents)
{
  Team team(2);
  bool isWide = false;
  team.Run(1, [&](int member, std::size_t) {
    if (member == 1) isWide = mpfr_get_emax() == mpfr_get_emax_max();
  });
  EXPECT_TRUE(isWide);
}

TEST(Team, CutsStretches)
{
  for (const int members : {0, 1, 2, 3}) {
    Team team(std::max(1, members));
    std::vector<int> visits(7, 0);
    ForEachStretch(members == 0 ? nullptr : &team, visits.size(),
                   [&](int, std::size_t first, std::size_t last) {
                     for (std::size_t i = first; i < last; ++i) ++visits[i];
                   });
    EXPECT_EQ(visits, std::vector<int>(7, 1)) << members;
  }
}

}  // namespace
}  // namespace varno::solve
