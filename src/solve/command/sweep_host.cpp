#include "solve/command/sweep_host.h"

#include <algorithm>
#include <thread>

namespace varno::solve {

SweepHost ThisProcess()
{
  return {.jobs = static_cast<int>(std::max(1U, std::thread::hardware_concurrency())),
          .run = [](const std::string& /*job*/, const SweepPlan& plan, OrderedOutput& output) {
            RunSweep(plan, output);
          }};
}

}  // namespace varno::solve
