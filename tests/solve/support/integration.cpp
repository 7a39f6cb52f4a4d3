#include "tests/solve/support/integration.h"

#include <utility>

#include "solve/evaluation/evaluator.h"
#include "solve/tape/compile.h"

namespace varno::solve::support {

namespace {

/// Digits more than asked for, against what steps and unstable directions lose.
constexpr int kSpareDigits = 7;

}  // namespace

Arrival Integrate(const Model& model, const Moment& from, const Moment& to, int digits)
{
  const mpfr_prec_t bits = SettingsFor(digits + kSpareDigits).bits;
  std::vector<Real> start;
  for (const State& state : model.states) start.push_back(EvaluateConstant(model.graph, state.start, bits));
  return Integrate(model, std::move(start), from, to, digits);
}

Arrival Integrate(const Model& model, std::vector<Real> start, const Moment& from, const Moment& to, int digits)
{
  const Tape tape = Compile(model);
  Run run(tape, SettingsFor(digits + kSpareDigits), from, std::move(start), to);
  while (run.IsBehind(to)) run.Step();
  return {run.StatesAt(to), run.Steps()};
}

}  // namespace varno::solve::support
