#include "solve/command/interruption.h"

#include <csignal>
#include <cstdlib>

#include <gtest/gtest.h>

namespace varno::solve {

namespace {

/// Interrupts end the process, also where the tests run in the background and ignore them.
class InterruptionTest : public testing::Test {
 protected:
  InterruptionTest() { std::signal(SIGINT, SIG_DFL); }
};

using InterruptionDeathTest = InterruptionTest;

}  // namespace

TEST_F(InterruptionTest, RemembersTheSignal)
{
  const Interruption interruption;
  EXPECT_EQ(Interruption::Signal(), 0);
  std::raise(SIGTERM);
  EXPECT_EQ(Interruption::Signal(), SIGTERM);
}

TEST_F(InterruptionTest, ForgetsWhatEarlierOnesSaw)
{
  {
    const Interruption interruption;
    std::raise(SIGINT);
  }
  const Interruption interruption;
  EXPECT_EQ(Interruption::Signal(), 0);
}

TEST_F(InterruptionDeathTest, SecondSignalEndsTheProcess)
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

TEST_F(InterruptionDeathTest, AfterItsLifeASignalEndsTheProcess)
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

TEST_F(InterruptionDeathTest, IgnoredSignalStaysIgnored)
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
