#include "solve/switching/dynamics.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "solve/evaluation/evaluator.h"
#include "solve/evaluation/size.h"
#include "solve/integration/run.h"
#include "solve/switching/piecewise_run.h"

namespace varno::solve {

namespace {

constexpr double kLog2Of10 = 3.3219280948873626;
/// Digits of a zero beyond those of the rows: what counts as 0 in a condition.
constexpr int kZeroGuardDigits = 15;
/// What counts as 0 to rounding is so much larger than the tolerance.
constexpr double kNoiseDecimals = 4;
/// A root that may be a double one is known to half the digits: with so many decimals beyond twice
/// those of the rows it does not matter to them.
constexpr int kTouchGuardDigits = 5;
/// So many times the digits of the rows may show that a sign changes which fewer leave to chance.
constexpr int kNoiseDigitsFactor = 8;

SwitchRule RuleFor(const RunSettings& settings, int digits)
{
  const bool isOnlyRun = !settings.disturbed && settings.mayDeclareZero;
  SwitchRule rule{.settings = settings,
                  .zero = {.noiseBits = settings.toleranceBits - kNoiseDecimals * kLog2Of10,
                           .zeroBits = (digits + kZeroGuardDigits) * kLog2Of10,
                           .mayDeclareZero = settings.mayDeclareZero},
                  .touchBits = 2 * (digits + kTouchGuardDigits) * kLog2Of10,
                  .noiseBits = kNoiseDigitsFactor * (digits + kTouchGuardDigits) * kLog2Of10};
  // A single run that is not verified takes what it has.
  if (isOnlyRun) {
    rule.touchBits = std::min(rule.touchBits, settings.toleranceBits);
    rule.noiseBits = 0;
  }
  return rule;
}

double Decimals(const Graph& graph, NodeId constant)
{
  const double size = Log2Size(EvaluateConstant(graph, constant, 64));
  return std::isfinite(size) ? std::abs(size) / kLog2Of10 : 0;
}

}  // namespace

Dynamics::Dynamics(const Model& model, std::optional<Tape> given)
    : model(model), tape(std::move(given))
{
  if (!tape) pieces = std::make_unique<Pieces>(model);
}

MakeStepper Dynamics::Runs(int digits) const
{
  if (tape) return RunsOf(*tape);
  return [this, digits](const RunSettings& settings, const Moment& start, std::vector<Real> states,
                        const Moment& reach, Poll poll) {
    return std::make_unique<PiecewiseRun>(*pieces, model, RuleFor(settings, digits), start,
                                          std::move(states), reach, std::move(poll));
  };
}

std::shared_ptr<const Piece> Dynamics::PieceAtStart(const Moment& start) const
{
  return pieces->AtStart(start, false).piece;
}

double Dynamics::DecimalsOfConstants() const
{
  double most = 0;
  if (tape) {
    for (const NodeId constant : tape->constants)
      most = std::max(most, Decimals(tape->graph, constant));
    return most;
  }
  for (NodeId id = 0; id < model.graph.Size(); ++id) {
    if (model.graph.IsNumber(id)) most = std::max(most, Decimals(model.graph, id));
  }
  return most;
}

}  // namespace varno::solve
