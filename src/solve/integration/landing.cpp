#include "solve/integration/landing.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "solve/evaluation/size.h"

namespace varno::solve {

namespace {

/// A singularity is at a time that is so much nearer to it than the step is long (log2).
constexpr double kSamePlaceLog2 = 8;
/// Terms that vanish in turn are seen by as many of the last ones.
constexpr int kLastTerms = 8;
/// What is estimated by the last terms may be as many times more (log2).
constexpr double kMarginLog2 = 3;

/// log2 of what the terms of a line that were not computed may add up to at the branch point.
double TailLog2(const Series& series, LineId line, double offsetLog2, double exponent)
{
  const int order = series.Order();
  double largest = -std::numeric_limits<double>::infinity();
  for (int k = std::max(1, order - kLastTerms + 1); k <= order; ++k)
    largest = std::max(largest, series.Log2(line, k) + k * offsetLog2);
  return largest + std::log2(order / std::min(1.0, exponent)) + kMarginLog2;
}

/// Those of the lines that are 0 at the branch point, as far as their terms tell.
std::vector<WatchedRoot> RootsAt(const Series& series, std::span<const WatchedLine> watched,
                                 const Real& offset, double exponent)
{
  std::vector<WatchedRoot> roots;
  const double offsetLog2 = Log2Size(offset);
  Real value(offset.Bits());
  for (std::size_t i = 0; i < watched.size(); ++i) {
    const LineId line = watched[i].line;
    series.Sum(line, offset, value);
    const double tail = TailLog2(series, line, offsetLog2, exponent);
    if (!std::isfinite(tail) || Log2Size(value) > tail) continue;
    series.Term(line, 0, value);
    const int sign = mpfr_sgn(static_cast<mpfr_srcptr>(value));
    // What lies beyond has no series.
    if (sign != 0) roots.push_back({i, sign, sign, 1});
  }
  return roots;
}

}  // namespace

std::optional<Landing> FindLanding(const LandingStep& step, const Singularity& end,
                                   std::size_t stateCount, const std::optional<Moment>& watchedTime,
                                   std::span<const WatchedLine> watched)
{
  if (end.kind != SingularityKind::kBranchPoint || !end.order) return std::nullopt;
  const double exponent = end.order->get_d();
  const bool isAtTime = watchedTime && Log2Size(end.time - *watchedTime) <=
                                           Log2Size(*watchedTime - step.begin) - kSamePlaceLog2;
  const Moment& place = isAtTime ? *watchedTime : end.time;
  Landing landing{
      step.backwards ? step.begin - place : place - step.begin, Real(step.bits), {}, {}};
  landing.advance.Evaluate(landing.offset);
  mpfr_mul_2si(landing.offset, landing.offset, -step.scaleExponent, MPFR_RNDN);
  if (!(mpfr_sgn(static_cast<mpfr_srcptr>(landing.offset)) > 0)) return std::nullopt;
  if (!isAtTime) {
    landing.roots = RootsAt(step.series, watched, landing.offset, exponent);
    if (landing.roots.empty()) return std::nullopt;
  }
  const double offsetLog2 = Log2Size(landing.offset);
  for (LineId state = 0; state < stateCount; ++state)
    landing.tails.push_back(TailLog2(step.series, state, offsetLog2, exponent));
  return landing;
}

}  // namespace varno::solve
