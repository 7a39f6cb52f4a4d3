// Whole runs by the library, at several numbers of digits, with the second run and without.

#include <string>

#include <benchmark/benchmark.h>

#include "solve/library/solve.h"

namespace varno::solve {
namespace {

constexpr const char* kPendulum = "a'' = -sin(a); a(0) = 2;";
constexpr const char* kKepler =
    "x'' = -x/r^3; y'' = -y/r^3; x(0) = 1/2; y'(0) = sqrt(3); r = sqrt(x^2 + y^2);";
constexpr const char* kLorenz =
    "x' = 10*(y - x) & 1; y' = x*(28 - z) - y & 1; z' = x*y - 8/3*z & 1;";

/// The last row at t = 10; range(0): digits, range(1): whether a second run checks it.
void Solve(benchmark::State& state, const char* text)
{
  const Problem problem = Problem::Parse(text, "problem");
  Summary summary;
  for (auto _ : state) {
    Solution solution(problem, {.to = "10",
                                .rows = RowAtEnd{},
                                .digits = static_cast<int>(state.range(0)),
                                .check = state.range(1) != 0});
    while (const auto row = solution.Next()) benchmark::DoNotOptimize(row->values.data());
    summary = solution.Summarise();
  }
  state.counters["steps"] = static_cast<double>(summary.steps);
  state.counters["order"] = summary.order;
  state.counters["bits"] = static_cast<double>(summary.bits);
}

void Digits(benchmark::internal::Benchmark* run)
{
  run->ArgNames({"digits", "check"})->Unit(benchmark::kMillisecond);
  for (const int digits : {15, 50, 300}) run->Args({digits, 0})->Args({digits, 1});
}

BENCHMARK_CAPTURE(Solve, pendulum, kPendulum)->Apply(Digits);
BENCHMARK_CAPTURE(Solve, kepler, kKepler)->Apply(Digits);
BENCHMARK_CAPTURE(Solve, lorenz, kLorenz)->Apply(Digits);

}  // namespace
}  // namespace varno::solve
