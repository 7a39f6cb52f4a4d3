#include "solve/integration/singularity.h"

#include <cmath>
#include <utility>
#include <vector>

#include "solve/integration/power_law.h"

namespace varno::solve {

namespace {

/// Distances that differ by less than this part are of the same singularity.
constexpr double kSameDistance = 1e-3;
/// An exponent closer to 0 than this is that of a logarithm.
constexpr double kLogarithm = 1e-4;

struct StateLaw {
  std::uint32_t state;
  PowerLaw law;
};

std::vector<Real> Terms(const Series& series, LineId line, mpfr_prec_t bits)
{
  std::vector<Real> terms;
  for (int k = 0; k <= series.Order(); ++k) series.Term(line, k, terms.emplace_back(bits));
  return terms;
}

/// The state that grows most at the nearest singularity.
std::optional<StateLaw> Leading(const Tape& tape, const Series& series, mpfr_prec_t bits)
{
  std::optional<StateLaw> leading;
  for (LineId state = 0; state < tape.rightHandSides.size(); ++state) {
    std::optional<PowerLaw> law = FitPowerLaw(Terms(series, state, bits));
    if (!law) continue;
    if (leading) {
      const double distance = law->distance.ToDouble() / leading->law.distance.ToDouble();
      const bool isSame = std::abs(distance - 1) < kSameDistance;
      if (isSame ? law->exponent <= leading->law.exponent : distance > 1) continue;
    }
    leading = StateLaw{state, std::move(*law)};
  }
  return leading;
}

}  // namespace

Singularity Classify(const Tape& tape, const Series& series, const Moment& begin,
                     const Rational& unit, NodeId node, mpfr_prec_t bits)
{
  Singularity result{.time = begin, .node = node, .bits = bits};
  const std::optional<StateLaw> leading = Leading(tape, series, bits);
  if (!leading) return result;
  Rational distance;
  mpfr_get_q(distance.get_mpq_t(), leading->law.distance);
  result.time = begin + Moment(distance * unit);
  result.state = leading->state;
  const double exponent = leading->law.exponent;
  if (std::abs(exponent) < kLogarithm) {
    result.kind = SingularityKind::kLogarithm;
    return result;
  }
  result.kind = exponent > 0 ? SingularityKind::kPole : SingularityKind::kBranchPoint;
  result.order = leading->law.Fraction();
  if (result.order && exponent < 0) *result.order = -*result.order;
  return result;
}

}  // namespace varno::solve
