// Whole runs against the time that GMP's mpf_mul and mpf_add would need for the same arithmetic.

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "arith/mpf.h"
#include "bench/cpu_clock.h"
#include "bench/varno/operation_count.h"
#include "bench/varno/problem.h"
#include "varno/core/global_data.h"
#include "varno/solver/integration.h"

namespace varno {

using arith::Mpf;
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

std::map<std::string, Mpf> FinalValues(const Problem& problem)
{
  const Silence silence;
  const LoadedProblem loaded(problem);
  Integration().Run();
  std::map<std::string, Mpf> values;
  for (const auto& [name, variable] : Expr::Global->_EQUATIONS) {
    values.emplace(name, Mpf(variable->Value()));
  }
  return values;
}

double DifferenceOf(mpf_srcptr a, mpf_srcptr b)
{
  Mpf difference;
  mpf_sub(difference, a, b);
  return mpf_get_d(difference);
}

/// The largest error of a variable at the end: its distance from a run with more digits.
double ErrorOf(const Problem& problem)
{
  const std::map<std::string, Mpf> values = FinalValues(problem);
  Problem refined = Refined(problem);
  std::map<std::string, Mpf> exact = FinalValues(refined);
  // The values are one initial step ahead of the final time, unless the first step was rejected.
  const double ahead = DifferenceOf(values.at("clock"), exact.at("clock"));
  if (std::abs(ahead) > problem.initialStep / 2) {
    refined.finalTime += ahead;
    exact = FinalValues(refined);
  }
  double largest = 0;
  for (const auto& [name, value] : values) {
    largest = std::max(largest, std::abs(DifferenceOf(value, exact.at(name))));
  }
  return largest;
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
  state.counters["median_ms"] = *median * 1e3;
  state.counters["C_ms"] = byGmp * 1e3;
  state.counters["time/C"] = *median / byGmp;
  state.counters["error"] = ErrorOf(problem);
}

void Register(const std::string& name, const Problem& problem, int runs)
{
  benchmark::RegisterBenchmark(name.c_str(),
                               [problem](benchmark::State& state) { Run(state, problem); })
      ->UseManualTime()
      ->Iterations(runs)
      ->Unit(benchmark::kMillisecond);
}

void RegisterAll()
{
  const std::vector<Problem> problems = {Lorenz(10), Kepler(20), ReactionDiffusion(100, 1)};
  for (const Problem& problem : problems) {
    Register("run/" + problem.name + "/80", problem, 51);
    Register("run/" + problem.name + "/256", AtPrecision(problem, 256), 11);
    Register("run/" + problem.name + "/1024", AtPrecision(problem, 1024), 5);
  }
  Register("size/100", ReactionDiffusion(100, 0.5), 51);
  Register("size/1000", ReactionDiffusion(1000, 0.5), 11);
  Register("size/10000", ReactionDiffusion(10'000, 0.5), 5);
}

[[maybe_unused]] const bool registered = (RegisterAll(), true);

}  // namespace
}  // namespace varno
