#include "solve/integration/defect_check.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "solve/evaluation/constant.h"
#include "solve/evaluation/domain_error.h"
#include "solve/evaluation/size.h"

namespace varno::solve {

namespace {

/// The defect allowed at order 23, in tolerances (log2); it grows with the square of the order.
const double kAllowedTolerances = std::log2(1000);
constexpr double kOrderOfAllowed = 23;
/// Of the places looked at: series are summed faster at an offset of few bits.
constexpr mpfr_prec_t kOffsetBits = 44;

std::vector<NodeId> RightHandSides(const Tape& tape)
{
  std::vector<NodeId> nodes;
  for (std::size_t i = 0; i < tape.rightHandSides.size(); ++i) nodes.push_back(tape.lines[i].node);
  return nodes;
}

/// log2 of the largest term of a line at the end of a step.
double LargestTerm(const Series& series, LineId line, double lengthLog2)
{
  double largest = -std::numeric_limits<double>::infinity();
  int k = 0;
  for (const double term : series.Logs(line)) largest = std::max(largest, term + k++ * lengthLog2);
  return largest;
}

}  // namespace

DefectCheck::DefectCheck(const Tape& tape, const RunSettings& settings, mpfr_prec_t bits,
                         Team* team)
    : tape(tape),
      allowedBits(settings.toleranceBits - kAllowedTolerances -
                  2 * std::max(0.0, std::log2(settings.raisedOrder / kOrderOfAllowed))),
      team(team),
      offset(kOffsetBits),
      time(bits),
      advance(bits),
      states(tape.rightHandSides.size(), Real(bits)),
      derivatives(states),
      derivativeSizes(states.size()),
      bits(bits)
{
  const std::vector<NodeId> nodes = RightHandSides(tape);
  const auto constants = ConstantsIn(tape.graph, nodes, bits);
  const std::size_t count = team == nullptr ? 1 : static_cast<std::size_t>(team->MemberCount());
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t first = nodes.size() * i / count, last = nodes.size() * (i + 1) / count;
    const std::vector<NodeId> some(nodes.begin() + static_cast<std::ptrdiff_t>(first),
                                   nodes.begin() + static_cast<std::ptrdiff_t>(last));
    parts.push_back({first, last, Evaluator(tape.graph, some, bits, {}, constants), true, true});
  }
  usesTime =
      std::ranges::any_of(parts, [](const Part& part) { return part.rightHandSides.UsesTime(); });
}

bool DefectCheck::Passes(const Step& step, std::span<const double> places)
{
  return std::ranges::all_of(places, [&](double place) { return PassesAt(step, place); });
}

/// The states and their derivatives by the series, at the point looked at.
void DefectCheck::Evaluate(const Step& step)
{
  step.series.SumStatesWithDerivatives(offset, states, derivatives);
  for (Real& derivative : derivatives) {
    mpfr_mul_2si(derivative, derivative, -step.scaleExponent, MPFR_RNDN);
    if (step.backwards) mpfr_neg(derivative, derivative, MPFR_RNDN);
  }
}

/// The sizes of the right-hand sides at the point looked at, of states as large as their largest
/// terms, or their own largest terms.
void DefectCheck::ComputeSizes(const Step& step)
{
  std::vector<double> stateSizes;
  for (LineId state = 0; state < states.size(); ++state)
    stateSizes.push_back(LargestTerm(step.series, state, step.lengthLog2));
  for (Part& part : parts) {
    part.rightHandSides.EvaluateSizes(stateSizes);
    for (std::size_t i = part.first; i < part.last; ++i) {
      const double terms = LargestTerm(step.series, tape.rightHandSides[i], step.lengthLog2);
      derivativeSizes[i] = std::max(part.rightHandSides.Size(i - part.first), terms);
    }
  }
}

double DefectCheck::AllowedLog2(const Step& step, std::size_t state) const
{
  const double allowed = derivativeSizes[state] - allowedBits;
  if (step.leftOut.empty()) return allowed;
  return std::max(allowed, Log2Size(step.leftOut[state]) + 1);
}

/// The time at the offset.
void DefectCheck::FindTime(const Step& step)
{
  mpfr_mul_2si(advance, offset, step.scaleExponent, MPFR_RNDN);
  step.begin.Evaluate(time);
  if (step.backwards) {
    mpfr_sub(time, time, advance, MPFR_RNDN);
  } else {
    mpfr_add(time, time, advance, MPFR_RNDN);
  }
}

/// Whether a difference is allowed beside the value of the right-hand side, which is at most its
/// size.
bool DefectCheck::IsSmall(mpfr_srcptr difference, mpfr_srcptr value) const
{
  if (mpfr_zero_p(difference) != 0) return true;
  if (mpfr_regular_p(difference) == 0 || mpfr_regular_p(value) == 0) return false;
  // Exponents bound the logarithms, which are seldom needed.
  const mpfr_exp_t room = mpfr_get_exp(value) - mpfr_get_exp(difference);
  return static_cast<double>(room - 1) >= allowedBits ||
         Log2Size(difference) <= Log2Size(value) - allowedBits;
}

/// Makes the derivatives of the states of a part what they differ from its right-hand sides by.
void DefectCheck::Compare(Part& part)
{
  part.hasValues = part.isSmall = true;
  try {
    part.rightHandSides.Evaluate(time, states);
  } catch (const DomainError&) {
    part.hasValues = false;
    return;
  }
  for (std::size_t i = part.first; i < part.last; ++i) {
    mpfr_srcptr value = part.rightHandSides[i - part.first];
    mpfr_sub(derivatives[i], derivatives[i], value, MPFR_RNDN);
    part.isSmall = part.isSmall && IsSmall(derivatives[i], value);
  }
}

bool DefectCheck::PassesAt(const Step& step, double place)
{
  const double whole = std::floor(step.lengthLog2);
  mpfr_set_d(offset, place * std::exp2(step.lengthLog2 - whole), MPFR_RNDN);
  mpfr_mul_2si(offset, offset, static_cast<long>(whole), MPFR_RNDN);
  if (usesTime) FindTime(step);
  Evaluate(step);
  ForEachStretch(team, parts.size(), [this](int member, std::size_t, std::size_t) {
    Compare(parts[static_cast<std::size_t>(member)]);
  });
  if (!std::ranges::all_of(parts, &Part::hasValues)) return false;
  if (std::ranges::all_of(parts, &Part::isSmall)) return true;
  ComputeSizes(step);
  for (std::size_t i = 0; i < states.size(); ++i) {
    if (derivatives[i].IsZero()) continue;
    if (!(Log2Size(derivatives[i]) <= AllowedLog2(step, i))) return false;
  }
  return true;
}

}  // namespace varno::solve
