#include "tests/solve/support/integration.h"

#include <utility>

#include "solve/evaluation/constant.h"
#include "solve/tape/compile.h"

namespace varno::solve::support {

namespace {

/// Digits more than asked for, against what steps and unstable directions lose.
constexpr int kSpareDigits = 7;

RunSettings Settings(int digits)
{
  return SettingsFor(digits + kSpareDigits, digits + kSpareDigits);
}

}  // namespace

Arrival Integrate(const Model& model, const Rational& from, const Rational& to, int digits)
{
  const mpfr_prec_t bits = Settings(digits).bits;
  std::vector<Real> start;
  for (const State& state : model.states)
    start.push_back(EvaluateConstant(model.graph, state.start, bits));
  return Integrate(model, std::move(start), from, to, digits);
}

Arrival Integrate(const Model& model, std::vector<Real> start, const Rational& from,
                  const Rational& to, int digits)
{
  const Tape tape = Compile(model);
  const Moment end(to);
  Run run(tape, Settings(digits), Moment(from), std::move(start), end);
  while (run.IsBehind(end)) run.Step();
  return {run.StatesAt(end), run.Steps()};
}

}  // namespace varno::solve::support
