#include "solve/team/start_elsewhere.h"

#include <pthread.h>
#include <sched.h>

namespace varno::solve {

int ThisProcessor()
{
  return sched_getcpu();
}

void LeaveProcessor(std::thread::native_handle_type thread, int processor)
{
  // Only a wish: where one of these calls fails, as with more processors than a set holds, the
  // thread runs where the scheduler lets it.
  cpu_set_t all;
  if (processor < 0 || processor >= CPU_SETSIZE) return;
  if (pthread_getaffinity_np(thread, sizeof all, &all) != 0) return;
  cpu_set_t others = all;
  CPU_CLR(static_cast<std::size_t>(processor), &others);
  if (CPU_COUNT(&others) == 0 || CPU_COUNT(&others) == CPU_COUNT(&all)) return;
  pthread_setaffinity_np(thread, sizeof others, &others);
  pthread_setaffinity_np(thread, sizeof all, &all);
}

}  // namespace varno::solve
