#pragma once

#include <ctime>

namespace varno {

/// Processor time of the process so far, in seconds: other work on the machine does not count.
inline double CpuSeconds()
{
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

}  // namespace varno
