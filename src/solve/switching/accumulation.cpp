#include "solve/switching/accumulation.h"

#include <algorithm>
#include <cstddef>
#include <limits>

#include "solve/evaluation/size.h"

namespace varno::solve {

namespace {

/// Distances fall if the largest of so many is less than the largest of as many before, by more
/// than the times are wrong by: log2 of the quotient.
constexpr std::size_t kGroup = 8;
constexpr double kLog2Falling = -1e-3;
/// Every so many switches are taken for the limit, so that groups of two or four do not matter.
constexpr std::size_t kStride = 4;
constexpr mpfr_prec_t kGuardBits = 64;

/// log2 of the largest distance between neighbours from the one at `first` on.
double LargestDistance(const std::deque<Moment>& times, std::size_t first)
{
  double largest = Log2Size(times[first + 1] - times[first]);
  for (std::size_t i = first + 1; i < first + kGroup; ++i)
    largest = std::max(largest, Log2Size(times[i + 1] - times[i]));
  return largest;
}

}  // namespace

std::optional<Accumulation::Limit> Accumulation::Add(const Moment& time)
{
  if (const auto slow = approach.Add(time)) return Limit{slow->time, slow->log2Error};
  times.push_back(time);
  if (times.size() <= 2 * kGroup) return std::nullopt;
  if (times.size() > 2 * kGroup + 1) times.pop_front();
  const double now = LargestDistance(times, kGroup), before = LargestDistance(times, 0);
  // No time at all is not less and less of it.
  if (now == -std::numeric_limits<double>::infinity()) return std::nullopt;
  const double way = Log2Size(time - start);
  if (now > way - placeBits || now > before + kLog2Falling) return std::nullopt;
  return Limit{GeometricLimit(), -std::numeric_limits<double>::infinity()};
}

/// c - (c - b)^2 / ((c - b) - (b - a)) of three times.
Moment Accumulation::GeometricLimit() const
{
  const std::size_t last = times.size() - 1;
  const Moment &a = times[last - 2 * kStride], &b = times[last - kStride], &c = times[last];
  const mpfr_prec_t bits = static_cast<mpfr_prec_t>(placeBits) + kGuardBits;
  Real first(bits), second(bits), change(bits);
  (b - a).Evaluate(first);
  (c - b).Evaluate(second);
  mpfr_sub(change, second, first, MPFR_RNDN);
  if (change.IsZero()) return c;
  mpfr_sqr(second, second, MPFR_RNDN);
  mpfr_div(second, second, change, MPFR_RNDN);
  Rational ahead;
  mpfr_get_q(ahead.get_mpq_t(), second);
  return c - Moment(ahead);
}

}  // namespace varno::solve
