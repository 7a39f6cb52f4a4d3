#include "solve/command/interruption.h"

#include <csignal>
#include <cstdlib>

#include <gtest/gtest.h>

namespace varno::solve {

TEST(Interruption, RemembersTheSignal)
{
  const Interruption interruption;
  EXPECT_EQ(Interruption::Signal(), 0);
  std::raise(SIGTERM);
  EXPECT_EQ(Interruption::Signal(), SIGTERM);
}

TEST(Interruption, ForgetsWhatEarlierOnesSaw)
{
  {
    const Interruption interruption;
    std::raise(SIGINT);
  }
  const Interruption interruption;
  EXPECT_EQ(Interruption::Signal(), 0);
}

TEST(InterruptionDeathTest, SecondSignalEndsTheProcess)
{
  for (const int signal : {SIGINT, SIGTERM}) {
    EXPECT_EXIT(
        {
          const Interruption interruption;
          std::raise(signal);
          std::raise(signal);
          std::exit(0);
        },
        testing::KilledBySignal(signal), "");
  }
}

TEST(InterruptionDeathTest, AfterItsLifeASignalEndsTheProcess)
{
  EXPECT_EXIT(
      {
        {
          const Interruption interruption;
        }
        std::raise(SIGINT);
        std::exit(0);
      },
      testing::KilledBySignal(SIGINT), "");
}

TEST(InterruptionDeathTest, IgnoredSignalStaysIgnored)
{
  EXPECT_EXIT(
      {
        std::signal(SIGINT, SIG_IGN);
        const Interruption interruption;
        std::raise(SIGINT);
        std::raise(SIGINT);
        std::exit(Interruption::Signal());
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace varno::solve
