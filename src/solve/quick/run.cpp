#include "solve/quick/run.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace varno::solve::quick {

namespace {

/// Steps have so many bits, so that the places between them are exact.
constexpr int kLengthBits = 12;
/// A step may be so much shorter than the longest one: beyond that there may be a singularity.
constexpr Number kLeastPart = 0x1p-12L;
constexpr int kMostHalvings = 3;
/// The first term of a divisor, or of a radicand, exceeds the sum of all others by this factor.
constexpr Number kClear = 1.1L;
/// Where the derivative of a step and the right-hand sides are compared, and what they may differ
/// by, in parts of the size of the right-hand side.
constexpr std::array<Number, 3> kTestedParts{0.3819660112501051L, 0.7320508075688773L,
                                             0.9442719099991588L};
constexpr Number kMostDefect = 0x1p-48L;
/// A step so much longer than the one before is tested at all these points.
constexpr Number kMuchLonger = 1.5L;
/// What rounding hides of a derivative, times the step, counts against the state: its size may be
/// so much larger.
constexpr Number kMostSize = 0x1p12L;
/// A disturbed state moves by 2 to 4 units of the last bit of the size of what it is made of.
constexpr Number kDisturbance = kUnit / 4;

Number Sum(std::span<const Number> terms, Number part)
{
  Number sum = 0;
  for (std::size_t k = terms.size(); k-- > 0;) sum = sum * part + terms[k];
  return sum;
}

/// The derivative by the part.
Number Slope(std::span<const Number> terms, Number part)
{
  Number sum = 0;
  for (std::size_t k = terms.size() - 1; k > 0; --k)
    sum = sum * part + static_cast<Number>(k) * terms[k];
  return sum;
}

/// The sum of the sizes of terms `first` and later.
Number SumOfSizes(std::span<const Number> terms, Number part, std::size_t first)
{
  Number sum = 0;
  for (std::size_t k = terms.size(); k-- > first;) sum = sum * part + std::fabs(terms[k]);
  return first == 0 ? sum : sum * part;
}

/// The largest number of few bits that is not above a length.
Number WithFewBits(Number length)
{
  int exponent = 0;
  const Number fraction = std::frexp(length, &exponent);
  return std::ldexp(std::floor(std::ldexp(fraction, kLengthBits)), exponent - kLengthBits);
}

/// The next of a sequence of scattered numbers: xorshift (Marsaglia 2003).
std::uint64_t Next(std::uint64_t& state)
{
  state ^= state << 13;
  state ^= state >> 7;
  state ^= state << 17;
  return state;
}

}  // namespace

Run::Run(const Program& program, const RunSettings& settings, const Way& way,
         std::vector<Number> startStates)
    : program(program),
      settings(settings),
      way(way),
      stepBound(settings.order, settings.toleranceBits),
      terms(program, settings.order),
      values(program, 0),
      scale(std::ldexp(Number(1), std::ilogb(way.length))),
      states(std::move(startStates)),
      sizes(states.size()),
      inside(states.size()),
      disturbances(0x9E3779B97F4A7C15u)
{
  for (LineId id = 0; id < program.steps.size(); ++id) {
    const Program::Step& step = program.steps[id];
    const bool isShortPolynomial = step.degree >= 0 && step.degree < settings.order;
    if (!isShortPolynomial) limiting.push_back(id);
    if (step.kind == LineKind::kQuotient || step.kind == LineKind::kIntegralOfQuotient)
      divisors.push_back(step.b);
    if (step.kind == LineKind::kSquareRoot || step.kind == LineKind::kPower)
      divisors.push_back(step.a);
  }
}

Number Run::Time(Number place) const
{
  return way.backwards ? way.start - place : way.start + place;
}

bool Run::Step()
{
  begin = end;
  if (length > 0) scale = std::ldexp(Number(1), std::ilogb(length));
  if (!terms.Begin(Time(begin), states)) return false;
  terms.FindSizes();
  terms.Extend(way.backwards ? -scale : scale);
  if (!ChooseLength() || !FindSizes() || !GoOn()) return false;
  ++steps;
  return true;
}

/// The length of the step by its terms; shorter where divisors or the defect ask for it.
bool Run::ChooseLength()
{
  if (!FindLength()) return false;
  for (int halvings = 0; halvings <= kMostHalvings; ++halvings) {
    if (length < longest * kLeastPart) return false;
    const Number part = PartOf(length);
    if (FitsDomains(part) && (settings.disturbed || PassesDefectCheck(part))) return true;
    length /= 2;
  }
  return false;
}

bool Run::FindLength()
{
  double bound = std::numeric_limits<double>::infinity();
  for (const LineId id : limiting) {
    if (!stepBound.Lower(bound, terms.Of(id))) return false;
  }
  length = WithFewBits(std::min(scale * std::exp2(static_cast<Number>(bound)), way.length));
  return length > 0;
}

/// Whether divisors and radicands have no root in the step: their first terms outweigh the others.
bool Run::FitsDomains(Number part) const
{
  return std::ranges::all_of(divisors, [&](LineId id) {
    return std::fabs(terms.Of(id)[0]) > kClear * SumOfSizes(terms.Of(id), part, 1);
  });
}

/// Whether the series are a solution, as far as points can tell: a step like the one before at one
/// of them, in turn.
bool Run::PassesDefectCheck(Number part)
{
  if (length > kMuchLonger * latestLength) {
    return std::ranges::none_of(kTestedParts,
                                [&](Number tested) { return HasDefectAt(tested * part); });
  }
  return !HasDefectAt(kTestedParts[static_cast<std::size_t>(steps) % kTestedParts.size()] * part);
}

/// By the values of all lines there, which owe nothing to the recurrences.
bool Run::HasDefectAt(Number part)
{
  for (LineId i = 0; i < inside.size(); ++i) inside[i] = Sum(terms.Of(i), part);
  if (!values.Begin(Time(begin + part * scale), inside)) return true;
  values.FindSizes();
  const Number unit = way.backwards ? -scale : scale;
  for (LineId i = 0; i < inside.size(); ++i) {
    const LineId line = program.rightHandSides[i];
    const Number defect = Slope(terms.Of(i), part) / unit - values.Of(line)[0];
    const Number size = std::max(values.Size(line), terms.Size(line));
    if (!(std::fabs(defect) <= kMostDefect * size)) return true;
  }
  return false;
}

/// The sizes of the states, which derivatives must not exceed by far: what cancels in them is lost.
bool Run::FindSizes()
{
  const Number part = PartOf(length);
  for (LineId i = 0; i < sizes.size(); ++i) {
    sizes[i] = SumOfSizes(terms.Of(i), part, 0);
    if (!(terms.Size(program.rightHandSides[i]) * length <= kMostSize * sizes[i])) return false;
  }
  return true;
}

/// Goes over to the states at the end. False where the place there is not exact.
bool Run::GoOn()
{
  const Number part = PartOf(length);
  for (LineId i = 0; i < states.size(); ++i) {
    states[i] = Sum(terms.Of(i), part);
    if (!settings.disturbed) continue;
    // Always to the same side, but not always as far: what many steps round alike adds up.
    const auto units = static_cast<Number>(8 + (Next(disturbances) >> 61));
    const Number size = std::max(sizes[i], terms.Size(program.rightHandSides[i]) * length);
    states[i] += (i % 2 == 0 ? units : -units) * kDisturbance * size;
  }
  end = begin + length;
  if (end - begin != length) return false;
  if (program.usesTime && std::fabs(Time(end) - way.start) != end) return false;
  longest = std::max(longest, length);
  latestLength = length;
  return true;
}

void StepView::StatesAt(Number place, std::span<Number> result) const
{
  const Number part = (place - begin) / scale;
  const std::size_t count = result.empty() ? 0 : terms.size() / result.size();
  for (std::size_t i = 0; i < result.size(); ++i)
    result[i] = Sum(terms.subspan(i * count, count), part);
}

}  // namespace varno::solve::quick
