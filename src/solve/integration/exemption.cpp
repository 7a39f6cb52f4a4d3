#include "solve/integration/exemption.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <utility>

#include "solve/evaluation/size.h"
#include "solve/integration/line_effects.h"
#include "solve/integration/tape_cut.h"
#include "solve/tape/operands.h"

namespace varno::solve {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
/// What exempt lines may change in a step lies below the tolerance by this factor (log2): it comes
/// on top of what the step loses anyway.
constexpr double kBelowTolerance = 4;
/// The least factor by which a step must become longer (log2); a trial costs some steps.
constexpr double kLeastGain = 2;
/// The same where the terms of the lines that stay may be known near the present scale only.
constexpr double kLeastHope = 0.1;
/// The longest step is found to this factor (log2), in so many trials.
constexpr double kLengthAccuracy = 0.03;
constexpr int kMostTrials = 12;
/// Cuts tried, one behind the other.
constexpr int kMostCuts = 4;
/// After trials without gain up to 2^kMostBackoff steps are made before the next one.
constexpr int kMostBackoff = 6;
/// A trial costs about as many operations as states times lines: on larger tapes it is left.
constexpr std::size_t kMostStatesTimesLines = 100'000;
constexpr std::size_t kMostLines = 5'000;

/// Whether each line is one of these or is made of them, as tanh is of its derivative.
std::vector<bool> Dependents(const Tape& tape, std::vector<bool> lines)
{
  // A second pass, for lines that are made of later ones.
  for (int pass = 0; pass < 2; ++pass) {
    for (LineId id = 0; id < lines.size(); ++id) {
      ForEachOperand(tape, tape.lines[id],
                     [&](LineId operand) { lines[id] = lines[id] || lines[operand]; });
      const LineId auxiliary = AuxiliaryOf(tape, id);
      lines[id] = lines[id] || (auxiliary != kNone && lines[auxiliary]);
    }
  }
  return lines;
}

/// Only such lines are held at what they are: bounds of sums over a step are wider than the sums.
bool IsFunction(const Line& line)
{
  return line.kind == LineKind::kIntegralOfProduct || line.kind == LineKind::kIntegralOfQuotient ||
         line.kind == LineKind::kAngle;
}

}  // namespace

/// Lines that might count as constants.
struct ExemptionRule::Candidates {
  explicit Candidates(std::size_t lines) : all(lines), still(lines) {}

  std::vector<bool> all;
  std::vector<bool> still;  // those that are not small, but hardly move; not all are left in `all`
};

/// What one attempt to find exempt lines knows.
struct ExemptionRule::Trial {
  const ExemptionRule& rule;
  const Series& series;
  const StepControl& control;
  const Point& point;
  std::vector<double> lineBounds;  // of all lines, where they are needed

  double Scale() const { return static_cast<double>(point.scaleExponent); }

  /// log2 of what counts as the size of a state: itself, or where it begins at 0 what a step of
  /// this length makes of it; no less than what counts as 0 in a row.
  double StateSize(std::size_t state, double lengthLog2) const
  {
    const double size = series.Log2(static_cast<LineId>(state), 0);
    return std::max(
        rule.settings.tinyLog2,
        size > -kInfinity ? size : control.Sizes()[rule.tape.rightHandSides[state]] + lengthLog2);
  }

  double AllowedLog2() const { return -rule.settings.toleranceBits - kBelowTolerance; }

  /// Lines that would not be missed, to judge by the start of the step.
  Candidates Plausible(double lengthLog2) const
  {
    std::vector<double> weights;
    weights.reserve(point.states.size());
    for (std::size_t i = 0; i < point.states.size(); ++i)
      weights.push_back(lengthLog2 - StateSize(i, lengthLog2));
    const std::vector<double> effects = LineEffects(rule.tape, series, weights);
    const std::size_t count = rule.tape.lines.size();
    Candidates plausible(count);
    for (LineId id = static_cast<LineId>(point.states.size()); id < count; ++id) {
      if (!rule.cuttable[id]) continue;
      const double allowed = AllowedLog2() - effects[id];
      const bool isNothing = control.Sizes()[id] < allowed;
      const bool isStill = !isNothing && IsFunction(rule.tape.lines[id]) && IsStill(id, allowed);
      if (isStill) plausible.still[id] = true;
      if (isNothing || isStill) plausible.all[id] = true;
    }
    // These stay in any cut.
    for (const LineId id : rule.tape.watched) plausible.all[id] = false;
    return plausible;
  }

  /// Whether a line moves by nothing beside what counts as 0 in a row, in the step as it is.
  bool IsStill(LineId id) const { return IsStill(id, rule.settings.tinyLog2 + AllowedLog2()); }

  /// Whether each term behind the first of a line is below this (log2) in the step as it is.
  bool IsStill(LineId id, double nothing) const
  {
    const double held = control.Bound().log2;
    for (int k = 1; k <= series.Order(); ++k) {
      if (!(series.Log2(id, k) + k * held < nothing)) return false;
    }
    return true;
  }

  /// Lowers the bound of a step to that of a line; not by one that moves by nothing, since that is
  /// mostly because of what is left out.
  void Lower(double& bound, LineId id) const
  {
    if (lineBounds[id] < bound && !IsStill(id)) bound = lineBounds[id];
  }

  /// The step that the states allow, as far as their terms tell.
  double BoundOfStates() const
  {
    double bound = kInfinity;
    for (LineId id = 0; id < point.states.size(); ++id) Lower(bound, id);
    return bound;
  }

  /// The step that each line allows with all that it is made of but for what is left out.
  std::vector<double> BoundsWithOperands(const std::vector<bool>& leftOut) const
  {
    std::vector<double> bounds = lineBounds;
    for (LineId id = 0; id < bounds.size(); ++id) {
      if (leftOut[id]) bounds[id] = kInfinity;
    }
    // A second pass, for lines that are made of later ones.
    for (int pass = 0; pass < 2; ++pass) {
      for (LineId id = 0; id < bounds.size(); ++id) {
        if (leftOut[id]) continue;
        const auto lower = [&](LineId operand) {
          bounds[id] = std::min(bounds[id], bounds[operand]);
        };
        ForEachOperand(rule.tape, rule.tape.lines[id], lower);
        if (const LineId auxiliary = AuxiliaryOf(rule.tape, id); auxiliary != kNone)
          lower(auxiliary);
      }
    }
    return bounds;
  }

  /// The step that the lines of a cut allow that still move, as far as their terms tell: not sin(u)
  /// where u is left out. What a function that hardly moves is made of counts as long as it stays.
  double Bound(const TapeCut& cut, const Candidates& candidates) const
  {
    const std::vector<bool> still = StillLines(rule.tape, cut.leftOut);
    double bound = kInfinity;
    for (LineId id = 0; id < still.size(); ++id) {
      if (!still[id]) Lower(bound, id);
    }
    if (std::ranges::find(candidates.still, true) == candidates.still.end()) return bound;
    const std::vector<double> bounds = BoundsWithOperands(cut.leftOut);
    for (LineId id = 0; id < bounds.size(); ++id) {
      if (candidates.still[id]) bound = std::min(bound, bounds[id]);
    }
    return bound;
  }

  /// Of the functions at a cut that hardly move, the one that could stay in the longest step; kNone
  /// where there are none.
  LineId LeastHolding(const TapeCut& cut, const std::vector<bool>& still) const
  {
    LineId least = kNone;
    const std::vector<double> bounds =
        BoundsWithOperands(std::vector<bool>(cut.leftOut.size(), false));
    for (LineId id = 0; id < still.size(); ++id) {
      if (cut.held[id] && still[id] && (least == kNone || bounds[id] > bounds[least])) least = id;
    }
    return least;
  }

  /// A cut at some of the candidates for a step that is worth it, at no more places than it takes.
  std::optional<TapeCut> WorthwhileCut(double held, const Candidates& plausible) const
  {
    std::vector<bool> candidates = plausible.all;
    if (std::ranges::find(candidates, true) == candidates.end()) return std::nullopt;
    const double bound = Bound(CutAt(rule.tape, candidates), plausible);
    if (bound < held + kLeastGain) return std::nullopt;
    std::vector<bool> holding(candidates.size());
    for (LineId id = 0; id < holding.size(); ++id) holding[id] = lineBounds[id] < bound;
    holding = Dependents(rule.tape, std::move(holding));
    for (LineId id = 0; id < holding.size(); ++id) candidates[id] = candidates[id] && holding[id];
    TapeCut cut = CutAt(rule.tape, std::move(candidates));
    if (std::ranges::find(cut.held, true) == cut.held.end()) return std::nullopt;
    if (Bound(cut, plausible) < held + kLeastGain) return std::nullopt;
    return cut;
  }

  /// Those candidates that allow hardly longer steps than the one held.
  Candidates ThoseInTheWay(double held, Candidates candidates) const
  {
    for (LineId id = 0; id < candidates.all.size(); ++id)
      candidates.all[id] = candidates.all[id] && lineBounds[id] < held + kLeastGain;
    return candidates;
  }

  /// Whether there is a state, not 0, of which nobody sees the digits.
  bool HasTinyState() const
  {
    return std::ranges::any_of(point.states, [&](const Real& state) {
      return !state.IsZero() && Log2Size(state) < rule.settings.tinyLog2;
    });
  }

  /// What the lines at a cut count as.
  HeldLines Held(const TapeCut& cut, const std::vector<bool>& still) const
  {
    HeldLines held;
    for (LineId id = 0; id < still.size(); ++id) {
      if (!cut.held[id]) continue;
      Real& constant = held.try_emplace(id, rule.lines.Bits()).first->second;
      if (still[id]) series.Term(id, 0, constant);
    }
    return held;
  }

  /// The bounds for a step of this length, where they allow it.
  std::optional<Deviation> Allowed(const HeldLines& held, double lengthLog2) const
  {
    auto deviation = DeviationOver(rule.tape, rule.lines,
                                   TubeStepFrom(point, lengthLog2, rule.lines.Bits()), held);
    if (!deviation) return std::nullopt;
    for (std::size_t i = 0; i < deviation->states.size(); ++i) {
      if (deviation->states[i].IsZero()) continue;
      if (!(Log2Size(deviation->states[i]) <= StateSize(i, lengthLog2) + AllowedLog2()))
        return std::nullopt;
    }
    return deviation;
  }

  /// The step that a cut allows, as far as terms tell, and the way (log2).
  double LongestPossible(const TapeCut& cut, const Candidates& candidates) const
  {
    return std::min(Bound(cut, candidates) + Scale(), point.longestLog2);
  }

  /// The longest step with a cut, found between two lengths (log2), of which the first must do.
  std::optional<Exemption> Longest(const TapeCut& cut, const Candidates& candidates,
                                   double shortest, double longest) const
  {
    auto found = Longest(Held(cut, candidates.still), shortest, longest);
    if (found) found->leftOut = cut.leftOut;
    return found;
  }

  std::optional<Exemption> Longest(HeldLines held, double shortest, double longest) const
  {
    if (auto whole = Allowed(held, longest))
      return Exemption{std::move(held), {}, longest, *std::move(whole)};
    auto found = Allowed(held, shortest);
    if (!found) return std::nullopt;
    for (int trial = 0; trial < kMostTrials && longest - shortest > kLengthAccuracy; ++trial) {
      const double middle = (shortest + longest) / 2;
      if (auto longer = Allowed(held, middle)) {
        found = std::move(longer);
        shortest = middle;
      } else {
        longest = middle;
      }
    }
    return Exemption{std::move(held), {}, shortest, *std::move(found)};
  }
};

ExemptionRule::ExemptionRule(const Tape& tape, const RunSettings& settings, mpfr_prec_t bits)
    : tape(tape),
      settings(settings),
      lines(tape, bits),
      cuttable(CuttableLines(tape)),
      isTooLarge(tape.lines.size() > kMostLines ||
                 tape.rightHandSides.size() * tape.lines.size() > kMostStatesTimesLines)
{}

bool ExemptionRule::IsWorthTrying(const Series& series, const StepControl& control,
                                  const Point& point)
{
  if (isTooLarge) return false;
  const double held = control.Bound().log2;
  if (!std::isfinite(held)) return false;
  if (stepsToSkip > 0) {
    --stepsToSkip;
    return false;
  }
  Trial trial{*this, series, control, point, {}};
  if (held + trial.Scale() + kLeastGain > point.longestLog2) return false;
  const Candidates plausible = trial.Plausible(held + trial.Scale());
  if (std::ranges::find(plausible.all, true) == plausible.all.end()) return false;
  trial.lineBounds = control.LineBounds(series);
  // States stay in any cut, too.
  if (trial.BoundOfStates() <= held + kLeastHope) return false;
  return trial.Bound(CutAt(tape, plausible.all), plausible) > held + kLeastHope;
}

std::optional<Exemption> ExemptionRule::Find(const Series& series, const StepControl& control,
                                             const Point& point)
{
  const double held = control.Bound().log2;
  const Trial trial{*this, series, control, point, control.LineBounds(series)};
  const double shortest = held + trial.Scale() + kLeastGain;
  if (!std::isfinite(held) || shortest > point.longestLog2) return std::nullopt;
  const Candidates plausible = trial.Plausible(held + trial.Scale());
  Candidates candidates = plausible;
  // All that happens to a state that is tiny still may count as 0, for a while; what makes it so
  // small may do so for longer: further cuts are behind the first.
  int cuts = trial.HasTinyState() ? kMostCuts : 1;
  std::optional<Exemption> exemption;
  bool isTried = false;
  for (int i = 0; i < cuts; ++i) {
    const auto cut = trial.WorthwhileCut(held, candidates);
    if (!cut) break;
    isTried = true;
    const double longest = trial.LongestPossible(*cut, candidates);
    auto found = trial.Longest(*cut, candidates, shortest, longest);
    if (found && (!exemption || found->longestLog2 > exemption->longestLog2))
      exemption = std::move(found);
    if (exemption && exemption->longestLog2 == longest) break;
    // Without a function that soon moves, others may be held for longer.
    if (const LineId least = trial.LeastHolding(*cut, candidates.still); least != kNone) {
      candidates.all[least] = false;
      cuts = std::min(cuts + 1, kMostCuts);
      continue;
    }
    for (LineId id = 0; id < candidates.all.size(); ++id)
      candidates.all[id] = candidates.all[id] && !cut->held[id];
  }
  if (!isTried) return std::nullopt;
  // Without x^30, atan2(2, x^30) is the same whatever the 2 is; but not without both.
  if (!exemption) {
    const Candidates inTheWay = trial.ThoseInTheWay(held, plausible);
    const auto cut = trial.WorthwhileCut(held, inTheWay);
    if (cut)
      exemption = trial.Longest(*cut, inTheWay, shortest, trial.LongestPossible(*cut, inTheWay));
  }
  failures = exemption ? 0 : std::min(failures + 1, kMostBackoff);
  stepsToSkip = exemption ? 0 : (1 << failures) - 1;
  return exemption;
}

TubeStep TubeStepFrom(const ExemptionRule::Point& point, double lengthLog2, mpfr_prec_t bits)
{
  Real length(bits), first(bits), last(bits);
  mpfr_set_d(length, lengthLog2, MPFR_RNDU);
  mpfr_exp2(length, length, MPFR_RNDU);
  mpfr_set(first, point.time, MPFR_RNDN);
  last = first;
  if (point.backwards) {
    mpfr_sub(first, first, length, MPFR_RNDD);
  } else {
    mpfr_add(last, last, length, MPFR_RNDU);
  }
  mpfr_nextbelow(first);
  mpfr_nextabove(last);
  TubeStep step{Range(bits), Range(bits, length), {}, point.backwards};
  mpfi_interv_fr(step.time, first, last);
  for (const Real& state : point.states) step.start.emplace_back(bits, state);
  return step;
}

}  // namespace varno::solve
