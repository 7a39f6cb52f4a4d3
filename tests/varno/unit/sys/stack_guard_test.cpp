#include "varno/sys/stack_guard.h"

#include <cstddef>
#include <sys/resource.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace varno {
namespace {

using testing::Eq;
using testing::ExitedWithCode;

constexpr const char* kTooDeep = "#(ERR) Expressions are nested too deeply\n";
constexpr const char* kTooDeepPattern = "#\\(ERR\\) Expressions are nested too deeply\n";

/// Runs down the stack by `bytes` or a little more, checking it on the way. Returns 0.
[[gnu::noinline]] int Descend(std::size_t bytes)
{
  constexpr std::size_t kFrame = 4096;
  volatile char frame[kFrame] = {};
  CheckStack();
  // Reading the frame after the call keeps the call from becoming a jump.
  return bytes > kFrame ? Descend(bytes - kFrame) + frame[0] : frame[0];
}

TEST(FailNestedTooDeeply, WritesTheMessageAndExitsWithStatus1)
{
  EXPECT_EXIT(FailNestedTooDeeply(), ExitedWithCode(1), Eq(kTooDeep));
}

TEST(CheckStack, PassesBeforeTheGuardIsSet)
{
  ASSERT_EQ(stackFloor, 0U);
  CheckStack();
}

TEST(CheckStack, PassesAboveTheFloor)
{
  const auto check = [] {
    stackFloor = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) - 65536;
    CheckStack();
    _exit(0);
  };
  EXPECT_EXIT(check(), ExitedWithCode(0), Eq(""));
}

TEST(CheckStack, EndsTheRunBelowTheFloor)
{
  const auto check = [] {
    stackFloor = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) - 65536;
    Descend(131072);
  };
  EXPECT_EXIT(check(), ExitedWithCode(1), Eq(kTooDeep));
}

TEST(GuardStack, EndsDeepRecursionWithAMessageBeforeTheStackOverflows)
{
  const auto descend = [] {
    GuardStack();
    Descend(std::size_t{1} << 30);
  };
  // An instrumented program warns of the size of the stack as well.
  EXPECT_EXIT(descend(), ExitedWithCode(1), kTooDeepPattern);
}

void LimitStack(rlim_t bytes)
{
  const rlimit limit{bytes, bytes};
  setrlimit(RLIMIT_STACK, &limit);
}

TEST(GuardStack, MakesDoWithAStackThatCannotGrow)
{
  const auto descend = [] {
    LimitStack(rlim_t{4} << 20);
    GuardStack();
    Descend(std::size_t{1} << 30);
  };
  EXPECT_EXIT(descend(), ExitedWithCode(1), Eq(kTooDeep));
}

TEST(GuardStack, GuardsATinyStackToo)
{
  const auto guard = [] {
    LimitStack(rlim_t{1} << 20);
    GuardStack();
    _exit(stackFloor != 0 ? 0 : 1);
  };
  EXPECT_EXIT(guard(), ExitedWithCode(0), Eq(""));
}

}  // namespace
}  // namespace varno
