#include "bench/varno/problem.h"

#include <cstdio>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "varno/expr/initialization.h"
#include "varno/parser/parse.h"
#include "varno/parser/scanner.h"

namespace varno {

namespace {

constexpr int kZeroTerms = 4;

void Parse(const std::string& equations)
{
  std::FILE* const file = std::tmpfile();
  std::fwrite(equations.data(), 1, equations.size(), file);
  std::rewind(file);
  SetScannerInput(file);
  const bool accepted = ParseInput();
  std::fclose(file);
  if (!accepted) throw std::runtime_error("a benchmark's equations do not parse");
}

}  // namespace

Problem Lorenz(double finalTime)
{
  return {.name = "lorenz",
          .equations =
              "x' = 10*(y - x) & 1; y' = x*(28 - z) - y & 1; z' = x*y - 8/3*z & 1; clock' = 1;",
          .finalTime = finalTime};
}

Problem Kepler(double finalTime)
{
  // w = r^-3, so that w' = -3 w (x u + y v) / r^2 and r^-2 = q, q' = -2 q q (x u + y v)
  return {.name = "kepler",
          .equations =
              "x' = u & 0.5; y' = v & 0; u' = -x*w & 0; v' = -y*w & sqrt(3);"
              "w' = -3*w*q*(x*u + y*v) & 8; q' = -2*q*q*(x*u + y*v) & 4; clock' = 1;",
          .finalTime = finalTime};
}

Problem ReactionDiffusion(int count, double finalTime)
{
  std::ostringstream equations;
  equations << "clock' = 1;\n";
  for (int i = 0; i < count; ++i) {
    const auto cell = [count](int k) { return "u" + std::to_string((k + count) % count); };
    equations << cell(i) << "' = 10*(" << cell(i - 1) << " - 2*" << cell(i) << " + " << cell(i + 1)
              << ") + " << cell(i) << "*(1 - " << cell(i) << ") & " << (i % 10 < 3 ? "0.5" : "0.1")
              << ";\n";
  }
  return {.name = "reaction-diffusion " + std::to_string(count),
          .equations = equations.str(),
          .finalTime = finalTime};
}

Problem AtPrecision(Problem problem, mp_bitcnt_t bits)
{
  problem.bits = bits;
  if (bits == 256) {
    problem.maximumOrder = 60;
    problem.accuracyDigits = 60;
  } else if (bits == 1024) {
    problem.maximumOrder = 160;
    problem.accuracyDigits = 280;
    problem.finalTime /= 10;
  }
  return problem;
}

Problem Refined(Problem problem)
{
  problem.bits += 64;
  problem.maximumOrder += 10;
  problem.accuracyDigits += 5;
  return problem;
}

LoadedProblem::LoadedProblem(const Problem& problem) : saved(Expr::Global)
{
  mpf_set_default_prec(53);  // GMP's own, in which the record is made
  Expr::Global = new GlobalData;
  GlobalData& global = *Expr::Global;
  mpf_set_default_prec(problem.bits);
  global.SetTermCount(problem.maximumOrder + kZeroTerms);
  const std::string accuracy = "1e-" + std::to_string(problem.accuracyDigits);
  mpf_set_str(global._ACCURACY, accuracy.c_str(), 10);
  mpf_set_d(global._TMAX, problem.finalTime);
  global.SetStep(problem.initialStep);
  global._PRINTONLYTMAX = true;
  Parse(problem.equations);
  InitializeEquations();
}

LoadedProblem::~LoadedProblem()
{
  delete std::exchange(Expr::Global, saved);
}

Silence::Silence() : output(std::cout.rdbuf(&nowhere)), commentary(std::clog.rdbuf(&nowhere)) {}

Silence::~Silence()
{
  std::cout.rdbuf(output);
  std::clog.rdbuf(commentary);
}

}  // namespace varno
