#include "bench/solve/integrations.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "bench/cpu_clock.h"
#include "solve/evaluation/evaluator.h"
#include "solve/integration/run.h"
#include "solve/language/parse.h"
#include "solve/model/build_model.h"
#include "solve/tape/compile.h"

namespace varno::solve {

namespace {

/// Digits more than asked for, as runs begin with.
constexpr int kSpareDigits = 7;
constexpr double kLeastSeconds = 0.3;
constexpr int kFewestRepetitions = 3, kMostRepetitions = 50;

/// The Brusselator with diffusion along a line: u and v in 50 cells, 1 and 3 at both ends.
std::string BrusselatorLine()
{
  constexpr int kCells = 50;
  std::string text;
  const auto cell = [](const char* name, int i, const char* edge) {
    return i == 0 || i > kCells ? std::string(edge) : name + std::to_string(i);
  };
  for (int i = 1; i <= kCells; ++i) {
    const std::string u = cell("u", i, ""), v = cell("v", i, "");
    const auto spread = [&](const char* name, const char* edge) {
      return " + 2601/50*(" + cell(name, i - 1, edge) + " - 2*" + cell(name, i, edge) + " + " +
             cell(name, i + 1, edge) + ")";
    };
    text += u + "' = 1 + " + u + "^2*" + v + " - 4*" + u + spread("u", "1") + " & 1 + sin(2*pi*" +
            std::to_string(i) + "/51);\n";
    text += v + "' = 3*" + u + " - " + u + "^2*" + v + spread("v", "3") + " & 3;\n";
  }
  return text;
}

Model ModelOf(const Problem& problem)
{
  Sources sources;
  Diagnostics diagnostics;
  const std::uint32_t source = sources.Add(problem.name, problem.text);
  return BuildModel(ParseProblem(sources, source, diagnostics), {}, sources, diagnostics);
}

std::vector<Problem> Problems()
{
  return {
      {"lorenz", "x' = 10*(y - x) & 1; y' = x*(28 - z) - y & 1; z' = x*y - 8/3*z & 1;", "10"},
      {"kepler", "x'' = -x/r^3; y'' = -y/r^3; x(0) = 1/2; y'(0) = sqrt(3); r = sqrt(x^2 + y^2);",
       "3927/125"},  // five periods of 2 pi
      {"brusselator", BrusselatorLine(), "1"},
      {"pendulum", "a'' = -sin(a); a(0) = 2;", "20"},
      {"vanderpol", "x' = v & 2; v' = (1 - x^2)*v - x & 0;", "20"},
  };
}

}  // namespace

void MeasureProblems(int argc, char** argv,
                     const std::function<void(const Problem&, int digits)>& measure)
{
  const std::string_view wanted = argc > 1 ? argv[1] : "";
  const int wantedDigits = argc > 2 ? std::atoi(argv[2]) : 0;
  for (const Problem& problem : Problems()) {
    if (!wanted.empty() && wanted != problem.name) continue;
    for (const int digits : {15, 60, 250}) {
      if (wantedDigits == 0 || wantedDigits == digits) measure(problem, digits);
    }
  }
}

CompiledProblem::CompiledProblem(const Problem& problem)
    : model(ModelOf(problem)), tape(Compile(model))
{}

RunSettings SettingsForDigits(int digits)
{
  return SettingsFor(digits + kSpareDigits, digits + kSpareDigits);
}

Integration::Integration(const CompiledProblem& problem, const std::string& to,
                         const RunSettings& settings)
{
  const Model& model = problem.model;
  std::vector<Real> start;
  for (const State& state : model.states)
    start.push_back(EvaluateConstant(model.graph, state.start, settings.bits));
  const Moment end{Rational(to)};
  const double begin = CpuSeconds();
  Run run(problem.tape, settings, Moment(Rational(0)), std::move(start), end);
  while (run.IsBehind(end)) {
    run.Step();
    orders.push_back(run.Order());
  }
  states = run.StatesAt(end);
  seconds = CpuSeconds() - begin;
  bits = run.Bits();
}

double LeastSeconds(const CompiledProblem& problem, const std::string& to,
                    const RunSettings& settings)
{
  double least = INFINITY, total = 0;
  for (int i = 0; i < kFewestRepetitions || (i < kMostRepetitions && total < kLeastSeconds); ++i) {
    const double seconds = Integration(problem, to, settings).seconds;
    total += seconds;
    least = std::min(least, seconds);
  }
  return least;
}

}  // namespace varno::solve
