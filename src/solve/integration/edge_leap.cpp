#include "solve/integration/edge_leap.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "solve/enclosure/derivative_ranges.h"
#include "solve/evaluation/size.h"
#include "solve/integration/domains.h"
#include "solve/integration/tape_cut.h"
#include "solve/tape/operands.h"

namespace varno::solve {

namespace {

/// What the step changes lies below the tolerance by this factor (log2).
constexpr double kBelowTolerance = 4;
/// The longest step that can be bounded is looked for so far below the way ahead (log2).
constexpr double kLeastPartLog2 = -60;
/// A step is no shorter than that one by so many times the bits of the tolerance.
constexpr double kMostToleranceFactor = 4;
/// The length is found to this factor (log2).
constexpr double kLengthAccuracy = 0.1;

/// A step onto an edge is bounded to a little behind it (log2), whatever rounding does to its
/// length.
constexpr double kBeyondEnd = 1e-9;

/// The ranges of lines of the time alone over a step, and where the tape is cut in it.
struct EdgeCut {
  TapeCut cut;
  HeldLines held;
  KnownRanges known;
};

struct BoundedStep {
  Exemption exemption;
  KnownRanges ranges;  // of the lines left out
};

struct Leap {
  const Tape& tape;
  const LineRanges& lines;
  const std::vector<LineId>& zeroLines;
  bool isOnto;  // whether they are 0 at the end of the step, not at its start

  bool IsZeroLine(LineId id) const { return std::ranges::find(zeroLines, id) != zeroLines.end(); }

  /// Makes the range of a zero line end at 0; false where it is not 0 in the step, or may be so
  /// twice.
  bool EndAtZero(LineId id, std::vector<Range>& ranges, bool backwards) const
  {
    if (!ranges[id].HasZero()) return false;
    const std::vector<Range> derivatives = DerivativeRanges(tape, lines, ranges, {}, id);
    Range slope(lines.Bits());
    for (LineId line = 0; line <= id; ++line) {
      if (tape.lines[line].kind == LineKind::kTime) slope = slope + derivatives[line];
    }
    if (backwards != isOnto) slope = -slope;
    Real zero(2);
    if (slope.IsPositive()) {
      mpfi_interv_fr(ranges[id], zero, ranges[id].Right());
      return true;
    }
    if ((-slope).IsPositive()) {
      mpfi_interv_fr(ranges[id], ranges[id].Left(), zero);
      return true;
    }
    return false;
  }

  /// Where to cut the tape in a step. Lines at the edge that no cut leaves out, because they depend
  /// on states, say, have no range afterwards.
  std::optional<EdgeCut> Cut(const TubeStep& step) const
  {
    const Box box{step.time, step.start};
    std::vector<Range> ranges(tape.lines.size(), Range(lines.Bits()));
    std::vector<bool> unbounded(ranges.size()), candidates(ranges.size());
    for (LineId id = 0; id < ranges.size(); ++id) {
      const Line& line = tape.lines[id];
      if (line.dependsOnStates) continue;
      const LineId domain = DomainOf(line);
      bool isAtEdge = domain != kNone && IsZeroLine(domain);
      ForEachOperand(tape, line,
                     [&](LineId operand) { isAtEdge = isAtEdge || unbounded[operand]; });
      std::optional<Range> range = lines.UpToEdge(id, box, ranges);
      if (!range) return std::nullopt;
      ranges[id] = *std::move(range);
      if (IsZeroLine(id) && !EndAtZero(id, ranges, step.backwards)) return std::nullopt;
      unbounded[id] = !ranges[id].IsBounded();
      candidates[id] = isAtEdge && !unbounded[id];
    }
    return CutAtCandidates(ranges, std::move(candidates));
  }

  std::optional<EdgeCut> CutAtCandidates(const std::vector<Range>& ranges,
                                         std::vector<bool> candidates) const
  {
    EdgeCut found{CutAt(tape, std::move(candidates)), {}, {}};
    for (LineId id = 0; id < ranges.size(); ++id) {
      if (!found.cut.leftOut[id]) continue;
      if (!found.cut.held[id]) {
        found.known.emplace(id, Range(lines.Bits()));
        continue;
      }
      found.known.emplace(id, ranges[id]);
      mpfi_mid(found.held.try_emplace(id, lines.Bits()).first->second, ranges[id]);
    }
    return found;
  }

  /// What it changes to hold lines in a step of this length.
  std::optional<BoundedStep> Over(const ExemptionRule::Point& point, double lengthLog2) const
  {
    TubeStep step = TubeStepFrom(point, lengthLog2, lines.Bits());
    std::optional<EdgeCut> found = Cut(step);
    if (!found) return std::nullopt;
    step.known = std::move(found->known);
    auto deviation = DeviationOver(tape, lines, step, found->held);
    if (!deviation) return std::nullopt;
    return BoundedStep{
        {std::move(found->held), std::move(found->cut.leftOut), lengthLog2, *std::move(deviation)},
        std::move(step.known)};
  }
};

/// Whether what is changed is nothing beside these sizes (log2).
bool IsSmall(const Exemption& exemption, const std::vector<double>& sizes, double toleranceBits)
{
  for (std::size_t i = 0; i < sizes.size(); ++i) {
    const Real& bound = exemption.deviation.states[i];
    if (!bound.IsZero() && !(Log2Size(bound) <= sizes[i] - toleranceBits - kBelowTolerance))
      return false;
  }
  return true;
}

/// The lines of the time alone that are 0 at a time, and must not be.
std::vector<LineId> ZeroLinesAt(const Tape& tape, const LineRanges& lines, const TubeStep& step)
{
  std::vector<bool> isDomain(tape.lines.size());
  for (const Line& line : tape.lines) {
    const LineId domain = DomainOf(line);
    if (domain != kNone && !tape.lines[domain].dependsOnStates) isDomain[domain] = true;
  }
  std::vector<LineId> zeroLines;
  if (std::ranges::find(isDomain, true) == isDomain.end()) return zeroLines;
  std::vector<Range> ranges(tape.lines.size(), Range(lines.Bits()));
  std::vector<bool> hasNone(tape.lines.size());
  for (LineId id = 0; id < ranges.size(); ++id) {
    const Line& line = tape.lines[id];
    hasNone[id] = line.dependsOnStates;
    ForEachOperand(tape, line,
                   [&](LineId operand) { hasNone[id] = hasNone[id] || hasNone[operand]; });
    if (hasNone[id]) continue;
    std::optional<Range> range = lines.UpToEdge(id, {step.time, step.start}, ranges);
    hasNone[id] = !range;
    if (!range) continue;
    ranges[id] = *std::move(range);
    if (isDomain[id] && ranges[id].HasZero()) zeroLines.push_back(id);
  }
  return zeroLines;
}

/// Whether the lines that are held have ranges that become narrow in a much shorter step: those of
/// sin(1/t) do not, and no steps lead away from there.
bool HaveLimits(const BoundedStep& shortest, const BoundedStep& longest)
{
  Real narrow(kErrorBits), wide(kErrorBits);
  return std::ranges::all_of(shortest.exemption.held, [&](const auto& held) {
    mpfi_diam_abs(narrow, shortest.ranges.at(held.first));
    const auto found = longest.ranges.find(held.first);
    if (found == longest.ranges.end()) return false;
    mpfi_diam_abs(wide, found->second);
    return Log2Size(narrow) < Log2Size(wide) - 1;
  });
}

}  // namespace

std::optional<Exemption> LeapFromEdge(const Tape& tape, const LineRanges& lines,
                                      const RunSettings& settings,
                                      const ExemptionRule::Point& point,
                                      const std::vector<LineId>& zeroLines)
{
  const Leap leap{tape, lines, zeroLines, false};
  double longest = point.longestLog2;
  std::optional<BoundedStep> whole = leap.Over(point, longest);
  while (!whole && longest > point.longestLog2 + kLeastPartLog2)
    whole = leap.Over(point, longest -= 1);
  if (!whole) return std::nullopt;

  std::vector<double> sizes;
  for (std::size_t i = 0; i < point.states.size(); ++i) {
    sizes.push_back(std::max({settings.tinyLog2, Log2Size(point.states[i]),
                              Log2Size(whole->exemption.deviation.states[i])}));
  }
  double shortest = longest - kMostToleranceFactor * settings.toleranceBits;
  std::optional<BoundedStep> found = leap.Over(point, shortest);
  if (!found || !HaveLimits(*found, *whole)) return std::nullopt;
  if (!IsSmall(found->exemption, sizes, settings.toleranceBits)) return std::nullopt;
  while (longest - shortest > kLengthAccuracy) {
    const double middle = (shortest + longest) / 2;
    auto longer = leap.Over(point, middle);
    if (longer && IsSmall(longer->exemption, sizes, settings.toleranceBits)) {
      found = std::move(longer);
      shortest = middle;
    } else {
      longest = middle;
    }
  }
  found->exemption.leastSizes = std::move(sizes);
  return std::move(found->exemption);
}

std::optional<Exemption> LeapOntoEdge(const Tape& tape, const LineRanges& lines,
                                      const RunSettings& settings,
                                      const ExemptionRule::Point& point, mpfr_srcptr end)
{
  ExemptionRule::Point atEnd = point;
  atEnd.time = end;
  const double shortest = point.longestLog2 - kMostToleranceFactor * settings.toleranceBits;
  const std::vector<LineId> zeroLines =
      ZeroLinesAt(tape, lines, TubeStepFrom(atEnd, shortest, lines.Bits()));
  if (zeroLines.empty()) return std::nullopt;
  Real length(lines.Bits());
  mpfr_sub(length, end, point.time, MPFR_RNDA);
  std::vector<double> sizes;
  for (const Real& state : point.states)
    sizes.push_back(std::max(settings.tinyLog2, Log2Size(state)));
  auto found = Leap{tape, lines, zeroLines, true}.Over(point, Log2Size(length) + kBeyondEnd);
  if (!found || !IsSmall(found->exemption, sizes, settings.toleranceBits)) return std::nullopt;
  found->exemption.endsAtEdge = true;
  // No step goes beyond the time watched, and none should end just before it.
  found->exemption.longestLog2 += 1;
  return std::move(found->exemption);
}

}  // namespace varno::solve
