#include "varno/sys/memory.h"

#include <climits>
#include <limits>
#include <new>
#include <unistd.h>

#include <gmp.h>
#include <gtest/gtest.h>

// The limits are for the whole process and cannot be taken back: each test sets them in a child.

namespace varno {
namespace {

using testing::Eq;
using testing::ExitedWithCode;

constexpr const char* kOutOfMemory = "#(ERR) Out of memory\n";
constexpr std::size_t kLimit = std::size_t{1} << 20;

/// Bits of a number that takes `bytes` and a little more.
constexpr mp_bitcnt_t BitsOf(std::size_t bytes)
{
  return bytes * CHAR_BIT;
}

[[noreturn]] void Pass()
{
  _exit(0);
}

TEST(FailOutOfMemory, WritesTheMessageAndExitsWithStatus1)
{
  EXPECT_EXIT(FailOutOfMemory(), ExitedWithCode(1), Eq(kOutOfMemory));
}

TEST(RequireMemory, LetsABlockUpToTheLimitPass)
{
  const auto require = [] {
    InstallMemoryLimits(kLimit);
    RequireMemory(kLimit);
    Pass();
  };
  EXPECT_EXIT(require(), ExitedWithCode(0), Eq(""));
}

TEST(RequireMemory, EndsTheRunForABlockBeyondTheLimit)
{
  const auto require = [] {
    InstallMemoryLimits(kLimit);
    RequireMemory(kLimit + 1);
  };
  EXPECT_EXIT(require(), ExitedWithCode(1), Eq(kOutOfMemory));
}

TEST(RequireMemory, HasNoLimitBeforeTheInstallation)
{
  RequireMemory(std::numeric_limits<std::size_t>::max());
}

TEST(InstallMemoryLimits, TakesTheMemoryOfTheMachineForTheLimit)
{
  const auto requireAll = [] {
    InstallMemoryLimits();
    RequireMemory(kLimit);
    const auto physical = static_cast<std::size_t>(sysconf(_SC_PHYS_PAGES)) *
                          static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    RequireMemory(physical + 1);
  };
  EXPECT_EXIT(requireAll(), ExitedWithCode(1), Eq(kOutOfMemory));
}

TEST(InstallMemoryLimits, EndsTheRunWhenAnObjectCannotBeAllocated)
{
  // The handler is called by hand: the allocator of an instrumented program never does.
  const auto fail = [] {
    InstallMemoryLimits(kLimit);
    std::get_new_handler()();
  };
  EXPECT_EXIT(fail(), ExitedWithCode(1), Eq(kOutOfMemory));
}

TEST(NumberMemory, LetsANumberWithinTheLimitPass)
{
  const auto allocate = [] {
    InstallMemoryLimits(kLimit);
    mpf_t number;
    mpf_init2(number, BitsOf(kLimit / 2));
    mpf_set_ui(number, 7);
    Pass();
  };
  EXPECT_EXIT(allocate(), ExitedWithCode(0), Eq(""));
}

TEST(NumberMemory, EndsTheRunForANumberBeyondTheLimit)
{
  const auto allocate = [] {
    InstallMemoryLimits(kLimit);
    mpf_t number;
    mpf_init2(number, BitsOf(kLimit));
  };
  EXPECT_EXIT(allocate(), ExitedWithCode(1), Eq(kOutOfMemory));
}

TEST(NumberMemory, EndsTheRunWhenAllNumbersTogetherExceedTheLimit)
{
  const auto allocate = [] {
    InstallMemoryLimits(kLimit);
    mpf_t a, b;
    mpf_init2(a, BitsOf(kLimit * 2 / 3));
    mpf_init2(b, BitsOf(kLimit * 2 / 3));
  };
  EXPECT_EXIT(allocate(), ExitedWithCode(1), Eq(kOutOfMemory));
}

TEST(NumberMemory, EndsTheRunForANumberThatGrowsBeyondTheLimit)
{
  const auto grow = [] {
    InstallMemoryLimits(kLimit);
    mpf_t number;
    mpf_init2(number, BitsOf(kLimit / 2));
    mpf_set_prec(number, BitsOf(kLimit));
  };
  EXPECT_EXIT(grow(), ExitedWithCode(1), Eq(kOutOfMemory));
}

TEST(NumberMemory, DoesNotCountWhatIsFreed)
{
  const auto allocateAndFree = [] {
    InstallMemoryLimits(kLimit);
    for (int i = 0; i < 10; ++i) {
      mpf_t number;
      mpf_init2(number, BitsOf(kLimit * 2 / 3));
      mpf_clear(number);
    }
    Pass();
  };
  EXPECT_EXIT(allocateAndFree(), ExitedWithCode(0), Eq(""));
}

TEST(NumberMemory, DoesNotCountWhatANumberGivesBackInShrinking)
{
  const auto shrink = [] {
    InstallMemoryLimits(kLimit);
    mpf_t a, b;
    mpf_init2(a, BitsOf(kLimit * 2 / 3));
    mpf_set_prec(a, 53);
    mpf_init2(b, BitsOf(kLimit * 2 / 3));
    Pass();
  };
  EXPECT_EXIT(shrink(), ExitedWithCode(0), Eq(""));
}

TEST(NumberMemory, OwesNothingToNumbersOlderThanTheLimit)
{
  const auto allocate = [] {
    mpf_t old, a, b;
    mpf_init2(old, BitsOf(kLimit * 2 / 3));
    InstallMemoryLimits(kLimit);
    mpf_clear(old);
    mpf_init2(a, BitsOf(kLimit * 2 / 3));
    mpf_init2(b, BitsOf(kLimit * 2 / 3));
  };
  EXPECT_EXIT(allocate(), ExitedWithCode(1), Eq(kOutOfMemory));
}

}  // namespace
}  // namespace varno
