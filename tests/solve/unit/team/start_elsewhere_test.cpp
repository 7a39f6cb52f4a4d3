#include "solve/team/start_elsewhere.h"

#include <cstddef>
#include <latch>
#include <pthread.h>
#include <sched.h>
#include <thread>

#include <gtest/gtest.h>

#include "solve/team/team.h"

namespace varno::solve {
namespace {

cpu_set_t ProcessorsOf(std::thread::native_handle_type thread)
{
  cpu_set_t processors;
  CPU_ZERO(&processors);
  EXPECT_EQ(pthread_getaffinity_np(thread, sizeof processors, &processors), 0);
  return processors;
}

TEST(StartElsewhere, LeavesTheThreadAllProcessorsOfTheCaller)
{
  const cpu_set_t all = ProcessorsOf(pthread_self());
  std::latch asked(1), answered(1);
  std::thread thread = StartElsewhere([&] {
    asked.wait();
    const cpu_set_t own = ProcessorsOf(pthread_self());
    EXPECT_TRUE(CPU_EQUAL(&own, &all));
    answered.count_down();
  });
  asked.count_down();
  answered.wait();
  thread.join();
}

TEST(StartElsewhere, StartsNoneWhereThereIsNone)
{
  // No address space has room for its stack.
  pthread_attr_t usual, huge;
  ASSERT_EQ(pthread_getattr_default_np(&usual), 0);
  ASSERT_EQ(pthread_getattr_default_np(&huge), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&huge, std::size_t{1} << 60), 0);
  ASSERT_EQ(pthread_setattr_default_np(&huge), 0);
  EXPECT_FALSE(StartElsewhere([] {}).joinable());
  EXPECT_EQ(Team(3).MemberCount(), 1);
  ASSERT_EQ(pthread_setattr_default_np(&usual), 0);
}

TEST(LeaveProcessor, MovesAThreadToAnotherOne)
{
  const cpu_set_t all = ProcessorsOf(pthread_self());
  if (CPU_COUNT(&all) < 2) GTEST_SKIP() << "there is one processor";
  // Which the scheduler may undo at once, though it hardly will twenty times.
  int moved = 0;
  for (int i = 0; i < 20; ++i) {
    const int here = ThisProcessor();
    LeaveProcessor(pthread_self(), here);
    if (ThisProcessor() != here) ++moved;
  }
  EXPECT_GT(moved, 0);
}

TEST(LeaveProcessor, DoesNothingWhereThereIsNoOther)
{
  const cpu_set_t all = ProcessorsOf(pthread_self());
  const int here = ThisProcessor();
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(static_cast<std::size_t>(here), &one);
  ASSERT_EQ(pthread_setaffinity_np(pthread_self(), sizeof one, &one), 0);
  LeaveProcessor(pthread_self(), here);
  EXPECT_EQ(ThisProcessor(), here);
  LeaveProcessor(pthread_self(), -1);
  const cpu_set_t after = ProcessorsOf(pthread_self());
  EXPECT_TRUE(CPU_EQUAL(&after, &one));
  ASSERT_EQ(pthread_setaffinity_np(pthread_self(), sizeof all, &all), 0);
}

}  // namespace
}  // namespace varno::solve
