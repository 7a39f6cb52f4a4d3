// What the order of series costs: milliseconds of one run, the integration alone, with the usual
// order times a factor where terms fall from the start, and with the order by the rule.
//
//   order_table [PROBLEM [DIGITS]]

#include <cmath>
#include <cstdio>

#include "bench/solve/integrations.h"

namespace varno::solve {
namespace {

constexpr double kFactors[] = {1, 1.2, 1.4, 1.6, 1.8};

void Print(double seconds)
{
  std::printf(" %.3g |", 1e3 * seconds);
  std::fflush(stdout);
}

void Measure(const Problem& problem, int digits)
{
  const CompiledProblem compiled(problem);
  const RunSettings byRule = SettingsForDigits(digits);
  std::printf("| %s | %d |", problem.name.c_str(), digits);
  for (const double factor : kFactors) {
    RunSettings settings = byRule;
    settings.raisedOrder = static_cast<int>(std::lround(factor * byRule.order));
    Print(LeastSeconds(compiled, problem.to, settings));
  }
  Print(LeastSeconds(compiled, problem.to, byRule));
  std::printf("\n");
}

}  // namespace
}  // namespace varno::solve

int main(int argc, char** argv)
{
  std::printf("| problem | digits |");
  for (const double factor : varno::solve::kFactors) std::printf(" %g |", factor);
  std::printf(" by the rule |\n|---|---|---|---|---|---|---|---|\n");
  varno::solve::MeasureProblems(argc, argv, varno::solve::Measure);
  return 0;
}
