#include "solve/enclosure/tube.h"

#include <algorithm>
#include <utility>

#include "solve/enclosure/derivative_ranges.h"

namespace varno::solve {

namespace {

/// Boxes tried, each twice as wide as the last one would have to be.
constexpr int kMostBoxes = 6;
/// How often the weights of the states are handed on to those that depend on them.
constexpr int kWeightPasses = 4;

/// Upper bounds, not below 0.
using Bounds = std::vector<Real>;
using Matrix = std::vector<std::vector<Range>>;

/// What is no number stays and becomes no bound.
void Raise(Real& most, const Real& value)
{
  if (mpfr_nan_p(static_cast<mpfr_srcptr>(most)) == 0 && mpfr_lessequal_p(value, most) == 0)
    most = value;
}

Real Right(const Range& a)
{
  Real right(a.Bits());
  mpfr_set(right, a.Right(), MPFR_RNDU);
  return right;
}

/// What right-hand sides with these derivatives by the states make of a source over a step.
struct Growth {
  const Matrix& derivatives;  // of right-hand side i by state j, in the direction of the step
  const Range& length;

  mpfr_prec_t Bits() const { return length.Bits(); }
  Range Exactly(const Real& number) const { return Range(Bits(), number); }

  /// About as large as each state gets; they need not be right. 0 where nothing reaches a state,
  /// neither the source nor other states: it stays 0.
  Bounds Weights(const Bounds& source) const
  {
    Bounds weights;
    for (const Real& part : source) weights.push_back(Right(Exactly(part) * length));
    const Bounds first = weights;
    bool reachesMore = true;
    for (int pass = 0; pass < kWeightPasses || reachesMore; ++pass) {
      reachesMore = false;
      const Bounds before = weights;
      for (std::size_t i = 0; i < weights.size(); ++i) {
        Range sum = Exactly(first[i]);
        for (std::size_t j = 0; j < weights.size(); ++j) {
          if (j != i) sum = sum + length * Exactly(Size(i, j)) * Exactly(before[j]);
        }
        weights[i] = Right(sum);
        reachesMore = reachesMore || (before[i].IsZero() && !weights[i].IsZero());
      }
    }
    return weights;
  }

  Real Size(std::size_t i, std::size_t j) const { return derivatives[i][j].Magnitude(); }

  /// The logarithmic norm for these weights.
  Real Norm(const Bounds& weights) const
  {
    Real most(Bits());
    mpfr_set_inf(most, -1);
    for (std::size_t i = 0; i < weights.size(); ++i) {
      if (weights[i].IsZero()) continue;
      Range row = derivatives[i][i];
      for (std::size_t j = 0; j < weights.size(); ++j) {
        if (j == i) continue;
        row = row + Exactly(Size(i, j)) * Exactly(weights[j]) / Exactly(weights[i]);
      }
      Raise(most, Right(row));
    }
    return most;
  }

  /// (exp(norm h) - 1) / norm, at most
  Real Factor(const Real& norm) const
  {
    if (mpfr_nan_p(static_cast<mpfr_srcptr>(norm)) != 0) return norm;
    const Range exact = Exactly(norm);
    if (mpfr_sgn(exact.Right()) > 0) {
      Range grown = exact * length;
      mpfi_expm1(grown, grown);
      return Right(grown / exact);
    }
    // at most h, and at most 1 / |norm|
    Real factor = Right(length);
    if (mpfr_sgn(exact.Right()) == 0) return factor;
    Range inverse(Bits());
    mpfi_inv(inverse, -exact);
    const Real limit = Right(inverse);
    return mpfr_less_p(limit, factor) != 0 ? limit : factor;
  }

  /// A bound of |v_i| over the step, where v begins with 0 and |v'| is at most the source beside
  /// what v itself makes of it.
  Bounds Of(const Bounds& source) const
  {
    const bool isNothing =
        std::ranges::all_of(source, [](const Real& part) { return part.IsZero(); });
    if (isNothing) return source;
    const Bounds weights = Weights(source);
    Real rate(Bits());
    for (std::size_t i = 0; i < weights.size(); ++i) {
      if (!source[i].IsZero()) Raise(rate, Right(Exactly(source[i]) / Exactly(weights[i])));
    }
    const Real norm = Norm(weights);
    Bounds grown;
    for (const Real& weight : weights)
      grown.push_back(Right(Exactly(weight) * Exactly(rate) * Exactly(Factor(norm))));
    return grown;
  }
};

/// The derivatives of the right-hand sides over a box, by the states and by held lines.
struct Derivatives {
  Matrix byStates;
  Bounds heldEffects;  // on each right-hand side
};

Derivatives DerivativesOver(const Tape& tape, const LineRanges& lines,
                            const std::vector<Range>& ranges, const HeldLines& held, bool backwards)
{
  Derivatives result;
  const std::size_t count = tape.rightHandSides.size();
  for (const LineId rightHandSide : tape.rightHandSides) {
    const std::vector<Range> all = DerivativeRanges(tape, lines, ranges, held, rightHandSide);
    std::vector<Range>& row = result.byStates.emplace_back();
    for (std::size_t j = 0; j < count; ++j) row.push_back(backwards ? -all[j] : all[j]);
    Range effect(lines.Bits());
    for (const auto& [id, constant] : held) {
      if (all[id].IsZero()) continue;
      const Range change = ranges[id] - Range(lines.Bits(), constant);
      effect = effect +
               Range(lines.Bits(), all[id].Magnitude()) * Range(lines.Bits(), change.Magnitude());
    }
    result.heldEffects.push_back(Right(effect));
  }
  return result;
}

Box BoxAbout(const TubeStep& step, const Bounds& radii)
{
  Box box{step.time, step.start};
  for (std::size_t i = 0; i < radii.size(); ++i) {
    const Range radius(step.time.Bits(), radii[i]);
    const Range lower = step.start[i] - radius, upper = step.start[i] + radius;
    mpfi_interv_fr(box.states[i], lower.Left(), upper.Right());
  }
  return box;
}

bool IsInside(const Bounds& needed, const Bounds& radii)
{
  for (std::size_t i = 0; i < needed.size(); ++i) {
    if (!needed[i].IsZero() && mpfr_less_p(needed[i], radii[i]) == 0) return false;
  }
  return true;
}

}  // namespace

std::optional<Deviation> DeviationOver(const Tape& tape, const LineRanges& lines,
                                       const TubeStep& step, const HeldLines& held)
{
  const auto atStart = lines.Over({step.time, step.start}, held, step.known);
  if (!atStart) return std::nullopt;
  Bounds speeds;
  for (const LineId rightHandSide : tape.rightHandSides)
    speeds.push_back((*atStart)[rightHandSide].Magnitude());

  Bounds radii(step.start.size(), Real(step.time.Bits()));
  for (int pass = 0; pass < kMostBoxes; ++pass) {
    const auto ranges = pass == 0 ? atStart : lines.Over(BoxAbout(step, radii), held, step.known);
    if (!ranges) return std::nullopt;
    Derivatives derivatives = DerivativesOver(tape, lines, *ranges, held, step.backwards);
    const Growth growth{derivatives.byStates, step.length};
    const Bounds moved = growth.Of(speeds);
    Bounds deviations = growth.Of(derivatives.heldEffects);

    Bounds needed(moved.size(), Real(step.time.Bits()));
    for (std::size_t i = 0; i < needed.size(); ++i)
      mpfr_add(needed[i], moved[i], deviations[i], MPFR_RNDU);
    if (IsInside(needed, radii))
      return Deviation{std::move(deviations), std::move(derivatives.heldEffects)};
    for (std::size_t i = 0; i < needed.size(); ++i) mpfr_mul_2ui(radii[i], needed[i], 1, MPFR_RNDU);
  }
  return std::nullopt;
}

}  // namespace varno::solve
