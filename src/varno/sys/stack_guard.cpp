#include "varno/sys/stack_guard.h"

#include <algorithm>
#include <cstddef>
#include <pthread.h>
#include <sys/resource.h>

#include "varno/sys/messages.h"

namespace varno {

std::uintptr_t stackFloor = 0;

namespace {

struct Stack {
  std::uintptr_t lowest;
  std::size_t bytes;
};

/// Touches the stack down to `lowest`, so that it has grown that far.
[[gnu::noinline]] void GrowStack(std::uintptr_t lowest)
{
  volatile char frame[65536];
  frame[0] = 0;
  if (reinterpret_cast<std::uintptr_t>(frame) > lowest) GrowStack(lowest);
  frame[1] = 0;  // after the call, which so does not become a jump
}

/// The limit of the whole address space; RLIM_INFINITY where there is none.
rlim_t AddressSpace()
{
  rlimit limit{};
  return getrlimit(RLIMIT_AS, &limit) == 0 ? limit.rlim_cur : RLIM_INFINITY;
}

// Linux keeps at least 128 MiB free below the stack of a process, whatever its limit at the start.
constexpr std::size_t kWantedBytes = std::size_t{100} << 20;

/// Room for what is called below the last check: GMP's temporaries, messages, the way out. Half of
/// a stack that is hardly larger must do.
constexpr std::size_t kReserveBytes = std::size_t{512} << 10;

/// The main thread's stack within the limit in force, with what lies above main: the environment
/// and the arguments count, too. Without /proc the system does not tell; then it begins here.
Stack WholeStack(rlim_t limit)
{
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
    void* lowest = nullptr;
    std::size_t bytes = 0;
    pthread_attr_getstack(&attributes, &lowest, &bytes);
    pthread_attr_destroy(&attributes);
    return {reinterpret_cast<std::uintptr_t>(lowest), bytes};
  }
  const std::size_t bytes = std::min(rlim_t{kWantedBytes}, limit);
  return {reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) - bytes, bytes};
}

/// In an address space that is limited to less than this, the heap might take the room that the
/// stack is to grow into. There a part of it goes to the stack at once.
constexpr rlim_t kTightAddressSpace = rlim_t{512} << 20;
constexpr rlim_t kAddressSpaceParts = 16;

}  // namespace

void GuardStack()
{
  rlimit limit{};
  if (getrlimit(RLIMIT_STACK, &limit) != 0) return;
  if (limit.rlim_cur < kWantedBytes) {
    limit.rlim_cur = std::min(rlim_t{kWantedBytes}, limit.rlim_max);
    setrlimit(RLIMIT_STACK, &limit);
    getrlimit(RLIMIT_STACK, &limit);
  }
  const Stack stack = WholeStack(limit.rlim_cur);
  const rlim_t addressSpace = AddressSpace();
  const bool tight = addressSpace < kTightAddressSpace;
  const std::size_t wanted = tight ? addressSpace / kAddressSpaceParts : kWantedBytes;
  const std::size_t usable = std::min(stack.bytes, wanted);
  const std::size_t reserve = std::min(kReserveBytes, usable / 2);
  const std::uintptr_t lowest = stack.lowest + (stack.bytes - usable);
  stackFloor = lowest + reserve;
  if (tight) GrowStack(lowest + reserve / 2);
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
