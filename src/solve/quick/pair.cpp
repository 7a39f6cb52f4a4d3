#include "solve/quick/pair.h"

#include <cmath>
#include <cstdint>
#include <utility>

namespace varno::solve::quick {

namespace {

/// The tolerance of the first run is above what it rounds by, and less than what it is moved by.
/// The orders are a third above those with the least products: most of a term is not in these.
constexpr RunSettings kFirst{.toleranceBits = 60, .order = 28, .disturbed = true};
constexpr RunSettings kSecond{.toleranceBits = 63, .order = 32, .disturbed = false};
/// The runs may be off by so many times their difference.
constexpr Number kApartFactor = 8;
/// Units of the last bit that both may be off by, at first and for each step.
constexpr Number kCommonUnits = 16, kCommonUnitsOfStep = 8;
constexpr std::int64_t kMostSteps = 5000;
/// To start a thread takes as long as some steps: it is started after so many, where as much of the
/// way is left at least, and all steps that it may make do not take too much memory.
constexpr std::int64_t kStepsBeforeThread = 8;
constexpr std::size_t kMostBytesAhead = std::size_t{1} << 26;

}  // namespace

Pair::Pair(Problem given, int threads)
    : problem(std::move(given)),
      mayUseThreads(threads > 1),
      first(problem.disturbedProgram, kFirst, problem.way, problem.disturbedStart),
      second(problem.program, kSecond, problem.way, problem.start),
      firstStates(problem.start.size()),
      secondStates(problem.start.size())
{}

bool Pair::Step()
{
  if (mayUseThreads && first.Steps() == kStepsBeforeThread) {
    mayUseThreads = false;
    if (IsWorthAThread()) first.GoAhead(kMostSteps - kStepsBeforeThread);
  }
  const bool isFirstBehind = first.Latest().end <= second.Latest().end;
  if ((isFirstBehind ? first.Steps() : second.Steps()) >= kMostSteps) return false;
  if (!(isFirstBehind ? first.Step() : second.Step())) return false;
  if (first.Steps() > 0 && second.Steps() > 0) Compare(Reached());
  return true;
}

bool Pair::IsWorthAThread() const
{
  const StepView latest = first.Latest();
  const std::size_t bytes = latest.terms.size_bytes() + latest.sizes.size_bytes();
  return 2 * latest.end < problem.way.length && bytes * kMostSteps <= kMostBytesAhead;
}

void Pair::StatesAt(Number place)
{
  first.Latest().StatesAt(place, firstStates);
  second.Latest().StatesAt(place, secondStates);
}

void Pair::Compare(Number place)
{
  StatesAt(place);
  for (std::size_t i = 0; i < firstStates.size(); ++i)
    AddDifference(firstStates[i] - secondStates[i], Size(i));
}

void Pair::AddDifference(Number difference, Number size)
{
  if (difference == 0) return;
  // Not max: what is no number counts, too.
  const Number parts = std::fabs(difference) / size;
  if (!(parts <= apart)) apart = parts;
}

Number Pair::Uncertainty(Number size) const
{
  const Number common = kCommonUnits + kCommonUnitsOfStep * static_cast<Number>(second.Steps());
  return size * (kApartFactor * apart + common * kUnit);
}

}  // namespace varno::solve::quick
