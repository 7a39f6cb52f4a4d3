// The solution between rows, and the steps that it is made of.

#include <cmath>
#include <utility>

#include <fmt/format.h>

#include "solve/library/solution_data.h"
#include "solve/library/solve.h"
#include "solve/library/step.h"
#include "solve/model/binding.h"
#include "solve/model/build_model.h"
#include "solve/number/exponent_range.h"
#include "solve/source/diagnostics.h"

namespace varno::solve {

const std::vector<std::string>& Solution::States() const
{
  return implementation->stateNames;
}

PointBetween Solution::At(const std::string& time)
{
  const ScopedExponentRange range;
  return implementation->At(implementation->ReadTime(time));
}

PointBetween Solution::At(double time)
{
  if (!std::isfinite(time)) throw InputError("a time that is no number");
  const ScopedExponentRange range;
  return implementation->At(Moment(Rational(time)));
}

std::vector<Step> Solution::Steps() const
{
  const ScopedExponentRange range;
  std::vector<Step> steps;
  const int run = implementation->options.check ? 1 : 0;
  for (auto& polynomial : implementation->record.BestSteps())
    steps.push_back(implementation->MakeStep(run, std::move(polynomial)));
  return steps;
}

/// In a graph of its own: that of the equations does not grow by it.
Moment Solution::Implementation::ReadTime(const std::string& time) const
{
  struct Constants {
    Sources sources;
    Model model;
  };
  if (!unbound) throw InputError("no steps are kept to look up a time in");
  const auto constants = std::make_shared<Constants>(Constants{sources, *unbound});
  try {
    NodeId node = AddConstant(constants->model, time, "time", constants->sources);
    constants->model = BindParameters(constants->model, {&node});
    const Graph& graph = constants->model.graph;
    Moment moment = ConstantMoments(graph, constants->sources)(node);
    if (moment.IsRational()) return moment;
    // What computes it lives as long as the moment.
    return Moment(std::make_shared<const Constant>(
        [constants, moment](mpfr_ptr result) { moment.Evaluate(result); }));
  } catch (const ProblemError& error) {
    throw InputError(error.what());
  }
}

PointBetween Solution::Implementation::At(const Moment& time)
{
  if (!options.keepSteps) throw InputError("no steps are kept to look up a time in");
  try {
    std::optional<CheckedRow> point;
    if (const auto states = record.StatesAt(time)) point = rows->RowBetween(time, *states);
    if (!point)
      throw InputError(
          fmt::format("t = {} is not between the start and the latest row", timeFormat.Text(time)));
    return {MakeRow(point->row), point->isVerified};
  } catch (const RowOutOfRange& row) {
    throw ends.Of(row.error, row.time);
  }
}

Value Solution::Implementation::MakeTime(const Moment& time, mpfr_prec_t bits) const
{
  Real value(bits);
  time.Evaluate(value);
  return {timeFormat.Text(time), value};
}

Step Solution::Implementation::MakeStep(int run,
                                        std::shared_ptr<const StepPolynomial> polynomial) const
{
  const StepPolynomial& step = *polynomial;
  return {run, rows->Restarts(), MakeTime(step.begin, step.bits), MakeTime(step.end, step.bits),
          std::make_shared<const Step::Data>(Step::Data{std::move(polynomial), numberFormat})};
}

void Solution::Implementation::RecordStep(std::size_t run, const DenseStep& step)
{
  const auto polynomial = std::make_shared<const StepPolynomial>(step);
  if (recordedAttempt != rows->Restarts()) record.Clear();
  recordedAttempt = rows->Restarts();
  if (options.keepSteps) record.Add(run, polynomial);
  if (options.step) options.step(MakeStep(static_cast<int>(run), polynomial));
}

}  // namespace varno::solve
