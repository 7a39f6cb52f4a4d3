#include "solve/library/solution_data.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>

#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/evaluator.h"
#include "solve/model/binding.h"
#include "solve/model/print.h"
#include "solve/tape/compile.h"
#include "solve/tape/print.h"

namespace varno::solve {

namespace {

/// The decimals that a run computes with beyond those asked for.
constexpr double kExtraDecimals = 7;
constexpr int kMostDigits = 10'000;
/// Columns are computed from the states with this many bits more.
constexpr mpfr_prec_t kColumnGuardBits = 64;

int CheckedDigits(int digits)
{
  if (digits >= 1 && digits <= kMostDigits) return digits;
  throw InputError(fmt::format("--digits {}: between 1 and {} digits can be asked for", digits, kMostDigits));
}

NumberFormat CheckedFormat(const Options& options)
{
  try {
    return NumberFormat(CheckedDigits(options.digits), options.tiny);
  } catch (const std::invalid_argument& error) {
    throw InputError(fmt::format("--tiny {}: {}", options.tiny, error.what()));
  }
}

/// How many bits the larger of two times takes before the point.
mpfr_prec_t WholeBits(const Moment& a, const Moment& b)
{
  const double largest = std::max(std::abs(a.ToDouble()), std::abs(b.ToDouble()));
  return largest < 1 ? 0 : static_cast<mpfr_prec_t>(std::ilogb(largest)) + 1;
}

}  // namespace

Solution::Implementation::Implementation(const Problem::Implementation& problem, Options given)
    : sources(problem.sources), options(std::move(given)), model(BindParameters(problem.model)),
      tape(Compile(model)), constants(model, sources), settings(SettingsFor(options.digits + kExtraDecimals)),
      numberFormat(CheckedFormat(options)), timeFormat(options.digits), interval(ReadInterval()),
      schedule(ReadSchedule()), ends(sources, tape.graph, options.digits)
{
  ChooseColumns();
  if (settings.bits > options.maxBits) {
    throw InputError(fmt::format("--max-bits {}: {} digits need {} bits", options.maxBits, options.digits, settings.bits));
  }
}

void Solution::Implementation::ChooseColumns()
{
  if (options.columns.empty()) {
    for (const Column& column : model.columns) options.columns.push_back(column.name);
  }
  for (const std::string& name : options.columns) {
    const auto column = std::ranges::find(model.columns, name, &Column::name);
    if (column == model.columns.end()) throw InputError(fmt::format("--columns: there is no column '{}'", name));
    names.push_back(name);
    columns.push_back(column->value);
  }
}

Interval Solution::Implementation::ReadInterval()
{
  const auto start = model.startPoint ? std::optional(constants.Of(*model.startPoint)) : std::nullopt;
  const Moment from = options.from ? constants.Read("--from", *options.from) : start.value_or(Moment(Rational(0)));
  return {start.value_or(from), from, constants.Read("--to", options.to)};
}

RowSchedule Solution::Implementation::ReadSchedule()
{
  const Moment &from = interval.from, &to = interval.to;
  std::string option;
  try {
    if (const auto* every = std::get_if<RowsEvery>(&options.rows)) {
      option = "--every";
      return {interval, RowTimes::Every(from, to, constants.Read(option, every->interval))};
    }
    if (const auto* points = std::get_if<RowsPoints>(&options.rows)) {
      option = "--points";
      return {interval, RowTimes::Points(from, to, points->count)};
    }
    if (const auto* at = std::get_if<RowsAt>(&options.rows)) {
      option = "--at";
      std::vector<Moment> times;
      for (const std::string& time : at->times) times.push_back(constants.Read(option, time));
      return {interval, RowTimes::At(from, to, std::move(times))};
    }
  } catch (const std::invalid_argument& error) {
    throw InputError(fmt::format("{}: {}", option, error.what()));
  }
  if (std::holds_alternative<RowsAtSteps>(options.rows)) return RowSchedule::AtSteps(interval);
  return {interval, RowTimes::Last(to)};
}

std::vector<Real> Solution::Implementation::StartStates() const
{
  std::vector<NodeId> starts;
  for (const State& state : model.states) starts.push_back(state.start);
  Evaluator evaluator(model.graph, starts, settings.bits + kColumnGuardBits);
  evaluator.Evaluate(Real(), {});
  std::vector<Real> states;
  for (std::size_t i = 0; i < starts.size(); ++i) states.push_back(evaluator[i]);
  return states;
}

void Solution::Implementation::Begin()
{
  begin = std::chrono::steady_clock::now();
  const mpfr_prec_t columnBits = settings.bits + kColumnGuardBits + WholeBits(interval.from, interval.to);
  columnValues.emplace(model.graph, columns, columnBits);
  path.emplace(tape, settings, interval, StartStates(), schedule.Early(), [this](const Run& run) { Watch(run); });
}

double Solution::Implementation::SecondsSinceBegin() const
{
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

/// After each step: limits, interruption, progress.
void Solution::Implementation::Watch(const Run& run) const
{
  const std::int64_t steps = run.Steps();
  if (options.interrupted && options.interrupted()) throw ends.Interrupted(run.End());
  if (options.maxSteps && steps >= *options.maxSteps) {
    throw ends.AtLimit(fmt::format("--max-steps {}", *options.maxSteps), run.End());
  }
  const double seconds = SecondsSinceBegin();
  if (options.maxSeconds && seconds >= *options.maxSeconds) {
    throw ends.AtLimit(fmt::format("--max-seconds {}", *options.maxSeconds), run.End());
  }
  if (run.Bits() > options.maxBits) throw ends.AtLimit(fmt::format("--max-bits {}", options.maxBits), run.End());
  if (!options.progress) return;
  const double way = (interval.to - interval.from).ToDouble(), done = (run.End() - interval.from).ToDouble();
  options.progress({.time = run.End().ToDouble(), .fraction = way == 0 ? 1 : std::clamp(done / way, 0.0, 1.0),
                    .steps = steps, .step = std::abs((run.End() - run.Begin()).ToDouble()), .seconds = seconds});
}

std::optional<Row> Solution::Implementation::Next()
{
  if (!path) Begin();
  try {
    const std::optional<Moment> time = schedule.Next(*path);
    if (!time) return std::nullopt;
    return MakeRow(*time);
  } catch (const DomainError& error) {
    throw ends.Of(error, path->LatestRun().End());
  } catch (const Singularity& singularity) {
    throw ends.Of(singularity);
  }
}

Row Solution::Implementation::MakeRow(const Moment& time)
{
  const std::vector<Real> states = path->StatesAt(time);
  Real timeNumber(settings.bits);
  time.Evaluate(timeNumber);
  Row row{Value(timeFormat.Text(time), timeNumber), {}};
  Real undefined(2);
  mpfr_set_nan(undefined);
  for (const std::optional<Real>& value : columnValues->At(time, states)) {
    const Real& number = value ? *value : undefined;
    row.values.emplace_back(numberFormat.Text(number), number);
  }
  return row;
}

Summary Solution::Implementation::Summarise() const
{
  Summary summary{.digits = options.digits};
  if (!path) return summary;
  summary.steps = path->Steps();
  summary.order = path->LatestRun().Order();
  summary.bits = path->LatestRun().Bits();
  summary.seconds = SecondsSinceBegin();
  return summary;
}

std::string Solution::Implementation::Explain() const
{
  std::vector<std::string> stateNames;
  for (const State& state : model.states) stateNames.push_back(state.name);
  const std::size_t termCount = tape.lines.size() * static_cast<std::size_t>(settings.order + 1);
  const double mebibytes = static_cast<double>(termCount) * (static_cast<double>(settings.bits) / 8 + 32) / (1 << 20);
  return Print(model) + fmt::format("\nOperations after sharing:\n{}\nOrder {}, {} bits, tolerance 1e-{:.0f}, about {:.1f} MiB of terms\n",
                                    Print(tape, stateNames), settings.order, settings.bits,
                                    settings.toleranceBits * 0.30103, mebibytes);
}

}  // namespace varno::solve
