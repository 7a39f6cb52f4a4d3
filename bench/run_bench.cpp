// Whole runs against the time that GMP's mpf_mul and mpf_add would need for the same arithmetic.

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "cpu_clock.h"
#include "operation_count.h"
#include "problem.h"
#include "solver/integration.h"

namespace varno {
namespace {

OperationCount CountRun(const Problem& problem)
{
  const Silence silence;
  const LoadedProblem loaded(problem);
  const std::vector<Expr*> nodes = AllNodes();
  OperationCount count;
  Integration integration;
  integration.Begin();
  bool running = true;
  while (running) {
    running = integration.Pass();
    count += CountCachedTerms(nodes);
  }
  return count;
}

void Run(benchmark::State& state, const Problem& problem)
{
  std::vector<double> seconds;
  for (auto _ : state) {
    const Silence silence;
    const LoadedProblem loaded(problem);
    const double start = CpuSeconds();
    Integration().Run();
    seconds.push_back(CpuSeconds() - start);
    state.SetIterationTime(seconds.back());
  }
  const auto median = seconds.begin() + std::ssize(seconds) / 2;
  std::nth_element(seconds.begin(), median, seconds.end());
  const OperationCount count = CountRun(problem);
  const double byGmp = SecondsByGmp(count);
  state.counters["multiplications"] = count.multiplications;
  state.counters["C_ms"] = byGmp * 1e3;
  state.counters["time/C"] = *median / byGmp;
}

void RegisterAll()
{
  const std::vector<Problem> problems = {Lorenz(20), Kepler(20), ReactionDiffusion(100, 1)};
  for (const mp_bitcnt_t bits : {80, 256, 1024}) {
    for (const Problem& problem : problems) {
      const Problem chosen = AtPrecision(problem, bits);
      benchmark::RegisterBenchmark(("run/" + chosen.name + "/" + std::to_string(bits)).c_str(),
                                   [chosen](benchmark::State& state) { Run(state, chosen); })
          ->UseManualTime()
          ->Unit(benchmark::kMillisecond);
    }
  }
  for (const int count : {100, 1000, 10'000}) {
    Problem chain = ReactionDiffusion(count, 0.5);
    benchmark::RegisterBenchmark(("size/" + std::to_string(count)).c_str(),
                                 [chain](benchmark::State& state) { Run(state, chain); })
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
  }
}

[[maybe_unused]] const bool registered = (RegisterAll(), true);

}  // namespace
}  // namespace varno
