#include "solve/library/solution_data.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <utility>

#include <fmt/format.h>

#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/size.h"
#include "solve/model/print.h"
#include "solve/number/exponent_range.h"
#include "solve/tape/print.h"

namespace varno::solve {

namespace {

constexpr int kMostDigits = 10'000;
int CheckedDigits(int digits)
{
  if (digits >= 1 && digits <= kMostDigits) return digits;
  throw InputError(
      fmt::format("--digits {}: between 1 and {} digits can be asked for", digits, kMostDigits));
}

NumberFormat CheckedFormat(const Options& options)
{
  try {
    return NumberFormat(CheckedDigits(options.digits), options.tiny);
  } catch (const std::invalid_argument& error) {
    throw InputError(fmt::format("--tiny {}: {}", options.tiny, error.what()));
  }
}

std::vector<std::string> StateNames(const Model& model)
{
  std::vector<std::string> names;
  for (const State& state : model.states) names.push_back(state.name);
  return names;
}

}  // namespace

Solution::Implementation::Implementation(CompiledProblem problem, Options given)
    : texts(std::move(problem.sources)),
      sources(*texts),
      options(std::move(given)),
      bound(std::move(problem.bound)),
      model(bound.model),
      dynamics(model, std::move(problem.tape)),
      moments(model.graph, sources),
      numberFormat(CheckedFormat(options)),
      timeFormat(options.digits),
      stateNames(StateNames(model)),
      interval(MakeInterval()),
      schedule(MakeSchedule()),
      ends(sources, dynamics.ErrorGraph(), stateNames, options.digits)
{
  ChooseColumns();
  unbound = std::move(problem.unbound);
  rows.emplace(
      model, dynamics, interval, schedule,
      RowsWanted{columns, options.digits, Log2Size(numberFormat.Tiny()), options.check,
                 options.maxBits, Threads(), PeriodEvent(), Log2Steady(), MayBeQuick()},
      [this](std::size_t run, const DenseStep& step) { Watch(run, step); },
      [this] { EndWhereAsked(); });
  if (options.hold) heldRows.emplace(*rows);
}

void Solution::Implementation::ChooseColumns()
{
  if (options.columns.empty()) {
    for (const Column& column : model.columns) options.columns.push_back(column.name);
  }
  std::unordered_map<std::string_view, const Column*> byName;
  for (const Column& column : model.columns) byName.emplace(column.name, &column);
  for (const std::string& name : options.columns) {
    const auto found = byName.find(name);
    if (found == byName.end())
      throw InputError(fmt::format("--columns: there is no column '{}'", name));
    names.push_back(name);
    columns.push_back(found->second->value);
  }
  if (!options.period) return;
  periodSearch.emplace(options.digits);
  columns.insert(columns.end(), bound.constants.variables.begin(), bound.constants.variables.end());
}

Interval Solution::Implementation::MakeInterval()
{
  std::optional<Moment> start;
  if (model.startPoint) start = moments(*model.startPoint);
  const auto& given = bound.constants.from;
  const Moment from = given ? moments(*given) : start.value_or(Moment(Rational(0)));
  return {start.value_or(from), from, moments(bound.constants.to)};
}

RowSchedule Solution::Implementation::MakeSchedule()
{
  const Moment &from = interval.from, &to = interval.to;
  std::string option;
  try {
    if (bound.constants.every) {
      option = "--every";
      return {interval, RowTimes::Every(from, to, moments(*bound.constants.every))};
    }
    if (const auto* points = std::get_if<RowsPoints>(&options.rows)) {
      option = "--points";
      return {interval, RowTimes::Points(from, to, points->count)};
    }
    if (std::holds_alternative<RowsAt>(options.rows)) {
      option = "--at";
      std::vector<Moment> times;
      for (const NodeId time : bound.constants.at) times.push_back(moments(time));
      return {interval, RowTimes::At(from, to, std::move(times))};
    }
  } catch (const std::invalid_argument& error) {
    throw InputError(fmt::format("{}: {}", option, error.what()));
  }
  if (std::holds_alternative<RowsAtSteps>(options.rows)) return RowSchedule::AtSteps(interval);
  return {interval, RowTimes::Last(to)};
}

/// The number of the event by which a period is looked for: it comes last.
std::optional<std::uint32_t> Solution::Implementation::PeriodEvent() const
{
  if (!options.period) return std::nullopt;
  return static_cast<std::uint32_t>(model.events.size() - 1);
}

/// log2 of the tolerance within which the solution counts as resting.
std::optional<double> Solution::Implementation::Log2Steady()
{
  if (!bound.constants.steady) return std::nullopt;
  const Moment tolerance = moments(*bound.constants.steady);
  if (tolerance.Sign() <= 0)
    throw InputError(fmt::format("--steady {}: must be greater than 0", *options.steady));
  return Log2Size(tolerance);
}

double Solution::Implementation::SecondsSinceBegin() const
{
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

int Solution::Implementation::Threads() const
{
  if (options.jobs > 0) return options.jobs;
  return static_cast<int>(std::max(1U, std::thread::hardware_concurrency()));
}

/// Without steps there is nothing to keep, to count or to show.
bool Solution::Implementation::MayBeQuick() const
{
  return !options.keepSteps && !options.step && !options.maxSteps;
}

/// How far the best run of the present attempt is.
Moment Solution::Implementation::Reached() const
{
  const Path* const path = rows->Integration();
  return path == nullptr ? interval.start : path->Best().End();
}

/// The time of the last row given, if that lies beyond a time that an attempt has come to: one that
/// began again may not be there yet.
std::optional<Moment> Solution::Implementation::RowsBeyond(const Moment& time) const
{
  const std::optional<Moment> last = rows ? rows->LastGiven() : std::nullopt;
  if (!last) return std::nullopt;
  const bool isBeyond = interval.IsBackwards() ? *last < time : *last > time;
  return isBeyond ? last : std::nullopt;
}

RunEnded Solution::Implementation::AtLimit(const std::string& limit, const Moment& time) const
{
  return ends.AtLimit(limit, time, RowsBeyond(time));
}

/// Within steps, and at each row with its time: interruption, and the limit of time.
void Solution::Implementation::EndWhereAsked(const Moment* rowTime) const
{
  const bool isInterrupted = options.interrupted && options.interrupted();
  const bool isLate = options.maxSeconds && SecondsSinceBegin() >= *options.maxSeconds;
  if (!isInterrupted && !isLate) return;
  const Moment time = rowTime != nullptr ? *rowTime : Reached();
  if (isInterrupted) throw ends.Interrupted(time, RowsBeyond(time));
  throw AtLimit(fmt::format("--max-seconds {}", *options.maxSeconds), time);
}

/// After each step: limits, interruption, stiffness, progress.
void Solution::Implementation::Watch(std::size_t run, const DenseStep& step)
{
  const std::int64_t steps = step.Steps();
  EndWhereAsked();
  if (options.maxSteps && steps >= *options.maxSteps)
    throw AtLimit(fmt::format("--max-steps {}", *options.maxSteps), step.End());
  if (options.keepSteps || options.step) RecordStep(run, step);
  const double seconds = SecondsSinceBegin();
  const auto notice = stiffness.After(step, interval.to, options.check ? 2 : 1, seconds);
  if (notice && options.notice) options.notice(*notice);
  if (!options.progress || seconds < options.progressFrom) return;
  const double way = (interval.to - interval.from).ToDouble(),
               done = (step.End() - interval.from).ToDouble();
  options.progress({.time = step.End().ToDouble(),
                    .fraction = way == 0 ? 1 : std::clamp(done / way, 0.0, 1.0),
                    .steps = steps,
                    .step = std::abs((step.End() - step.Begin()).ToDouble()),
                    .seconds = seconds,
                    .stepsAhead = StepsAhead(step, interval.to)});
}

std::optional<Row> Solution::Implementation::Next()
{
  const ScopedExponentRange range;
  if (begin == std::chrono::steady_clock::time_point()) begin = std::chrono::steady_clock::now();
  const bool hasGiven = rows->LastGiven().has_value();
  try {
    while (const std::optional<VerifiedRow> row = heldRows ? heldRows->Next() : rows->Next()) {
      // A step may have any number of rows. The first takes no step, and what was held none.
      if (hasGiven && !heldRows) EndWhereAsked(&row->time);
      for (const RowNumber& number : row->numbers) numbersAtJumps += number.isAtJump ? 1 : 0;
      if (!row->event || row->event != PeriodEvent()) return MakeRow(*row);
      if (std::optional<Row> found = AddReturn(*row)) return found;
    }
    return std::nullopt;
  } catch (const DomainError& error) {
    throw ends.Of(error, Reached());
  } catch (const RowOutOfRange& row) {
    throw ends.Of(row.error, row.time);
  } catch (const Singularity& singularity) {
    throw ends.Of(singularity);
  } catch (const PrecisionExhausted& exhausted) {
    throw AtLimit(fmt::format("{} digits need more than --max-bits {}; limit", options.digits,
                              options.maxBits),
                  exhausted.time);
  } catch (const WrongRow& wrong) {
    throw WrongRowEnd(wrong.time);
  }
}

RunEnded Solution::Implementation::WrongRowEnd(const Moment& time) const
{
  return {EndReason::kWrongRow,
          fmt::format("the row at t = {} was wrong: a more exact attempt gives other digits",
                      timeFormat.Text(time))};
}

Value Solution::Implementation::MakeValue(const RowNumber& number) const
{
  Real nan(2);
  mpfr_set_nan(nan);
  const mpfr_srcptr value = number.value ? *number.value : nan;
  if (number.zeroUnit) return {NumberFormat::ZeroText(*number.zeroUnit), value};
  return {numberFormat.Text(value), value};
}

Row Solution::Implementation::MakeRow(const VerifiedRow& row) const
{
  Row result{MakeTime(row.time, rows->BestRun().bits), {}};
  for (const RowNumber& number : std::span(row.numbers).first(names.size()))
    result.values.push_back(MakeValue(number));
  if (row.event) result.event = model.events[*row.event].name;
  return result;
}

/// The period, if it is known by this return.
std::optional<Row> Solution::Implementation::AddReturn(const VerifiedRow& row)
{
  if (!periodSearch) return std::nullopt;
  const auto variables = std::span(row.numbers).subspan(names.size());
  const std::optional<Moment> found = periodSearch->Add(row.time, variables);
  if (!found) return std::nullopt;
  Real value(rows->Integration()->Best().Bits());
  found->Evaluate(value);
  period = numberFormat.Text(value);
  periodSearch.reset();
  return Row{MakeTime(row.time, value.Bits()), {}, {}, period};
}

Summary Solution::Implementation::Summarise() const
{
  Summary summary;
  summary.digits = options.digits;
  summary.rows = rows->RowsGiven();
  summary.verified = options.check;
  const RunStatistics best = rows->BestRun();
  summary.steps = best.steps;
  summary.order = best.order;
  summary.bits = best.bits;
  if (begin != std::chrono::steady_clock::time_point()) summary.seconds = SecondsSinceBegin();
  if (rows->Restarts() > 0) {
    const double lost = rows->DecimalsLost();
    if (lost >= 1) summary.remark = fmt::format("the problem cost {:.0f} digits, ", lost);
    summary.remark += fmt::format("computed with {:.0f} more than asked for, restarts: {}",
                                  rows->SpareDecimals(), rows->Restarts());
  }
  const auto remark = [&summary](const std::string& text) {
    summary.remark += (summary.remark.empty() ? "" : "; ") + text;
  };
  if (numbersAtJumps > 0)
    remark(fmt::format("numbers on a jump as far as can be told: {}", numbersAtJumps));
  if (stiffness.WasGiven()) remark("stiff: steps held down by stability");
  if (!period.empty()) {
    remark(fmt::format("period of {}: {}", *options.period, period));
  } else if (options.period) {
    remark(fmt::format("no period of {} found", *options.period));
  }
  if (rows->IsSteady()) remark("steady: " + *options.steady);
  return summary;
}

std::string Solution::Implementation::Explain() const
{
  try {
    if (const Tape* const tape = dynamics.SmoothTape())
      return PrintModel(model) + "\nOperations after sharing:\n" + ExplainTape(*tape);
    return PrintModel(model) + "\nOperations after sharing, as they are at the start:\n" +
           ExplainTape(dynamics.PieceAtStart(interval.start)->tape);
  } catch (const DomainError& error) {
    throw InputError(ends.Of(error, interval.start).what());
  }
}

std::string Solution::Implementation::ExplainTape(const Tape& tape) const
{
  const RunSettings settings = rows->Settings().back();
  const std::size_t termCount = tape.lines.size() * static_cast<std::size_t>(settings.order + 1);
  const double mebibytes =
      static_cast<double>(termCount) * (static_cast<double>(settings.bits) / 8 + 32) / (1 << 20);
  return fmt::format("{}\nOrder {}, {} bits, tolerance 1e-{:.0f}, about {:.1f} MiB of terms\n",
                     Print(tape, stateNames), settings.order, settings.bits,
                     settings.toleranceBits * 0.30103, mebibytes);
}

}  // namespace varno::solve
