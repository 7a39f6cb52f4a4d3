#include "sys/stack_guard.h"

#include <algorithm>
#include <cstddef>
#include <pthread.h>
#include <sys/resource.h>

#include "sys/messages.h"

namespace varno {

std::uintptr_t stackFloor = 0;

namespace {

struct Stack {
  std::uintptr_t lowest;
  std::size_t bytes;
};

/// The main thread's stack within the limit in force, with what lies above main: the environment
/// and the arguments count, too.
Stack WholeStack()
{
  pthread_attr_t attributes;
  void* lowest = nullptr;
  std::size_t bytes = 0;
  if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
    pthread_attr_getstack(&attributes, &lowest, &bytes);
    pthread_attr_destroy(&attributes);
  }
  return {reinterpret_cast<std::uintptr_t>(lowest), bytes};
}

// Linux keeps at least 128 MiB free below the stack of a process, whatever its limit at the start.
constexpr std::size_t kWantedBytes = std::size_t{100} << 20;

/// Room for what is called below the last check: GMP's temporaries, messages, the way out. Half of
/// a stack that is hardly larger must do.
constexpr std::size_t kReserveBytes = std::size_t{512} << 10;

}  // namespace

void GuardStack()
{
  rlimit limit{};
  if (getrlimit(RLIMIT_STACK, &limit) != 0) return;
  if (limit.rlim_cur < kWantedBytes) {
    limit.rlim_cur = std::min(rlim_t{kWantedBytes}, limit.rlim_max);
    setrlimit(RLIMIT_STACK, &limit);
  }
  const Stack stack = WholeStack();
  const std::size_t usable = std::min(stack.bytes, kWantedBytes);
  const std::size_t reserve = std::min(kReserveBytes, usable / 2);
  stackFloor = stack.lowest + (stack.bytes - usable) + reserve;
}

void RequireStack(std::size_t bytes)
{
  const auto here = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0));
  if (here < stackFloor + bytes) Fail("The stack is too small: raise its limit (ulimit -s)");
}

void FailNestedTooDeeply()
{
  Fail("Expressions are nested too deeply");
}

}  // namespace varno
