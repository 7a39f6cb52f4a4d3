#include "sys/stack_guard.h"

#include <algorithm>
#include <sys/resource.h>

#include "sys/messages.h"

namespace varno {

std::uintptr_t stackFloor = 0;

namespace {

// Linux keeps at least 128 MiB free below the stack of a process, whatever its limit at the start.
constexpr rlim_t kWantedBytes = rlim_t{100} << 20;

/// Room for what is called below the last check: GMP's temporaries, messages, the way out. Half of
/// a stack that is hardly larger must do.
constexpr rlim_t kReserveBytes = rlim_t{512} << 10;

}  // namespace

void GuardStack()
{
  rlimit limit{};
  if (getrlimit(RLIMIT_STACK, &limit) != 0) return;
  if (limit.rlim_cur < kWantedBytes) {
    limit.rlim_cur = std::min(kWantedBytes, limit.rlim_max);
    setrlimit(RLIMIT_STACK, &limit);
    getrlimit(RLIMIT_STACK, &limit);
  }
  const rlim_t usable = std::min(limit.rlim_cur, kWantedBytes);
  const rlim_t reserve = std::min(kReserveBytes, usable / 2);
  stackFloor = reinterpret_cast<std::uintptr_t>(__builtin_frame_address(0)) -
               static_cast<std::uintptr_t>(usable - reserve);
}

void FailNestedTooDeeply()
{
  Fail("Expressions are nested too deeply");
}

}  // namespace varno
