#include "solve/verification/quick_rows.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <memory>
#include <span>
#include <utility>

#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/size.h"
#include "solve/quick/pair.h"
#include "solve/quick/rounding.h"
#include "solve/verification/column_values.h"

namespace varno::solve {

namespace {

using quick::Number;

/// With more digits too many rows would be in doubt.
constexpr int kMostDigits = 10;
/// More than the first ordinary runs take for so few digits: a limit below is theirs to tell of.
constexpr long kOrdinaryBits = 128;
/// What has more lines, or more numbers in its rows, is not worth to be computed in advance.
constexpr std::size_t kMostLines = 200;
constexpr std::size_t kMostNumbers = 20'000;
/// Columns that are definitions are computed with so many bits; the noise of the states.
constexpr mpfr_prec_t kColumnBits = 128;
constexpr double kNoiseBits = 48;
/// A number so far below its size is what cancelled.
constexpr Number kClear = 1e-3L;
/// What Log2Roughly may be off by.
constexpr double kRoughLog2 = 0.1;
constexpr double kLeastTinyLog2 = -332;  // 1e-100

bool IsOrdinary(const Dynamics& dynamics, const RowSchedule& schedule, const RowsWanted& wanted)
{
  const Tape* const tape = dynamics.SmoothTape();
  if (tape == nullptr || tape->lines.size() > kMostLines || tape->rightHandSides.empty())
    return false;
  if (!wanted.mayBeQuick || !wanted.check || wanted.digits > kMostDigits) return false;
  if (wanted.periodEvent || wanted.log2Steady || wanted.tinyLog2 > kLeastTinyLog2) return false;
  const std::size_t mostRows = kMostNumbers / std::max<std::size_t>(1, wanted.columns.size());
  return wanted.maxBits >= kOrdinaryBits && schedule.HasAtMost(mostRows) &&
         schedule.Early().empty();
}

/// The rows of one problem.
class QuickSolver {
 public:
  QuickSolver(const Model& model, const Interval& interval, const RowsWanted& wanted)
      : model(model),
        interval(interval),
        wanted(wanted),
        mostUncertain(quick::PowerOfTen(1 - wanted.digits)),
        columnValues(model.graph, wanted.columns, kColumnBits,
                     {.noiseBits = kNoiseBits,
                      .zeroBits = std::numeric_limits<double>::infinity(),
                      .mayDeclareZero = false})
  {
    for (const NodeId column : wanted.columns)
      hasDefinitions |= model.graph[column].operation != Operation::kState;
  }

  std::optional<QuickRows> Solve(const Tape& tape, RowSchedule schedule, const Poll& poll)
  {
    if (!MakePair(tape)) return std::nullopt;
    QuickRows result;
    while (const std::optional<Moment> time = schedule.NextGiven()) {
      if (!Reach(PlaceOf(*time), poll)) return std::nullopt;
      std::optional<VerifiedRow> row = MakeRow(*time);
      if (!row) return std::nullopt;
      result.rows.push_back(*std::move(row));
    }
    result.best = {pair->Best().Steps(), pair->Best().Order(), quick::kBits};
    return result;
  }

 private:
  /// False where the problem is not for the hardware.
  bool MakePair(const Tape& tape)
  {
    std::optional<quick::Program> disturbed = quick::MakeProgram(tape, true);
    std::optional<quick::Program> exact = quick::MakeProgram(tape, false);
    if (!disturbed || !exact) return false;
    Real start(quick::kBits);
    interval.start.Evaluate(start);
    if (exact->usesTime && !(interval.start.IsRational() &&
                             mpfr_cmp_q(start, interval.start.RationalPart().get_mpq_t()) == 0))
      return false;
    const quick::Way way{quick::ToNumber(start), interval.IsBackwards(), PlaceOf(interval.to)};
    if (!(way.length > 0)) return false;
    quick::Pair::Problem problem{*std::move(disturbed), *std::move(exact), {}, {}, way};
    for (const State& state : model.states) {
      problem.disturbedStart.push_back(quick::ConstantOf(model.graph, state.start, true));
      problem.start.push_back(quick::ConstantOf(model.graph, state.start, false));
    }
    pair = std::make_unique<quick::Pair>(std::move(problem), wanted.threads);
    return true;
  }

  /// Goes to a place. False where both runs together do not get there in order.
  bool Reach(Number place, const Poll& poll)
  {
    while (pair->Best().Steps() == 0 || place > pair->Reached()) {
      if (poll) poll();
      if (!pair->Step() || pair->Uncertainty(1) > mostUncertain) return false;
    }
    pair->StatesAt(place);
    isAtStart = place == 0;
    return true;
  }

  /// The size of a state: at the start nothing has cancelled.
  Number SizeOf(std::size_t state) const
  {
    const auto sizeOf = [&](std::span<const Number> states) { return std::fabs(states[state]); };
    return isAtStart ? std::max(sizeOf(pair->First()), sizeOf(pair->Second())) : pair->Size(state);
  }

  /// How far a time lies from the start.
  Number PlaceOf(const Moment& time) const
  {
    Real place(quick::kBits);
    (interval.IsBackwards() ? interval.start - time : time - interval.start).Evaluate(place);
    return quick::ToNumber(place);
  }

  std::optional<VerifiedRow> MakeRow(const Moment& time)
  {
    if (hasDefinitions && !EvaluateColumns(time)) return std::nullopt;
    VerifiedRow row{time, {}};
    for (std::size_t i = 0; i < wanted.columns.size(); ++i) {
      const Node& node = model.graph[wanted.columns[i]];
      const bool isState = node.operation == Operation::kState;
      std::optional<RowNumber> number =
          isState ? Judge(pair->First()[node.index], pair->Second()[node.index], SizeOf(node.index))
                  : Judge(first[i], second[i]);
      if (!number) return std::nullopt;
      row.numbers.push_back(*std::move(number));
    }
    return row;
  }

  /// The number, if it is beyond doubt.
  std::optional<RowNumber> Judge(Number a, Number b, Number size)
  {
    RowNumber number{.value = Real(quick::kBits), .zeroUnit = {}};
    if (a == 0 && b == 0 && size == 0) return number;
    pair->AddDifference(a - b, size);
    if (std::fabs(b) < kClear * size) return std::nullopt;
    if (!quick::IsRoundingKnown(b, pair->Uncertainty(size), wanted.digits)) return std::nullopt;
    mpfr_set_ld(*number.value, b, MPFR_RNDN);
    return number;
  }

  /// That of a definition.
  std::optional<RowNumber> Judge(const SizedNumber& a, const SizedNumber& b)
  {
    for (const SizedNumber* each : {&a, &b}) {
      if (each->isInDoubt || each->isAtJump || !each->value) return std::nullopt;
      if (std::abs(each->size) > -kLeastTinyLog2) return std::nullopt;
    }
    const auto size = static_cast<Number>(std::max(a.size, b.size));
    return Judge(quick::ToNumber(*a.value), quick::ToNumber(*b.value), std::exp2(size));
  }

  bool EvaluateColumns(const Moment& time)
  {
    try {
      first = columnValues.At(time, Sized(pair->First()));
      second = columnValues.At(time, Sized(pair->Second()));
      return true;
    } catch (const RowOutOfRange&) {
      return false;
    }
  }

  SizedStates Sized(std::span<const Number> states) const
  {
    SizedStates sized;
    for (std::size_t i = 0; i < states.size(); ++i) {
      Real& value = sized.values.emplace_back(quick::kBits);
      mpfr_set_ld(value, states[i], MPFR_RNDN);
      sized.sizes.push_back(quick::Log2Roughly(SizeOf(i)) + kRoughLog2);
    }
    return sized;
  }

  const Model& model;
  const Interval& interval;
  const RowsWanted& wanted;
  Number mostUncertain;  // in parts of a size: beyond that no row is known
  ColumnValues columnValues;
  bool hasDefinitions = false, isAtStart = false;
  std::unique_ptr<quick::Pair> pair;
  std::vector<SizedNumber> first, second;  // of the latest row
};

}  // namespace

std::optional<QuickRows> SolveQuickly(const Model& model, const Dynamics& dynamics,
                                      const Interval& interval, const RowSchedule& schedule,
                                      const RowsWanted& wanted, const Poll& poll)
{
  static const bool kHasBits = quick::HasBits();
  if (!kHasBits || !IsOrdinary(dynamics, schedule, wanted)) return std::nullopt;
  try {
    return QuickSolver(model, interval, wanted).Solve(*dynamics.SmoothTape(), schedule, poll);
  } catch (const DomainError&) {
    // Of a constant: the ordinary runs say which.
    return std::nullopt;
  }
}

}  // namespace varno::solve
