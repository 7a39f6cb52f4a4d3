#include "solve/integration/slow_approach.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "solve/evaluation/size.h"

namespace varno::solve {

namespace {

/// So many doublings must divide the distance by about the same factor: times are few at first, and
/// the steps before the approach are among them.
constexpr std::size_t kFalls = 4;
constexpr double kMostRise = 1.5;
/// What the factor may be: nearer to 1 the times may come to no limit, and far from it they get
/// there, as those before a pole do.
constexpr double kLeastFall = 0.1, kMostFall = 0.87;
/// The limit is known to this part (log2) of what is left of the way.
constexpr double kErrorLog2 = -2.3;
constexpr mpfr_prec_t kBits = 128;
constexpr double kLog2Of10 = 3.3219280948873626;

/// A time rounded to so many decimals.
Moment Rounded(const Moment& time, long decimals)
{
  Integer power;
  mpz_ui_pow_ui(power.get_mpz_t(), 10, static_cast<unsigned long>(std::abs(decimals)));
  const Rational scale = decimals < 0 ? Rational(1, power) : Rational(power);
  const double wholeBits = Log2Size(time) + static_cast<double>(decimals) * kLog2Of10;
  Real scaled(kBits + static_cast<mpfr_prec_t>(std::max(0.0, wholeBits)));
  (time * scale).Evaluate(scaled);
  Integer nearest;
  mpfr_get_z(nearest.get_mpz_t(), scaled, MPFR_RNDN);
  return Moment(Rational(nearest) / scale);
}

}  // namespace

std::optional<SlowApproach::Limit> SlowApproach::Add(const Moment& time)
{
  ++count;
  if ((count & (count - 1)) != 0) return std::nullopt;
  doublings.push_back(time);
  return Find();
}

/// By what part the last distances between doublings are of those before.
std::vector<double> SlowApproach::Falls() const
{
  std::vector<double> falls;
  const std::size_t last = doublings.size() - 1;
  for (std::size_t i = last - kFalls + 1; i <= last; ++i) {
    const double before = Log2Size(doublings[i - 1] - doublings[i - 2]);
    falls.push_back(std::exp2(Log2Size(doublings[i] - doublings[i - 1]) - before));
  }
  return falls;
}

std::optional<SlowApproach::Limit> SlowApproach::Find() const
{
  if (doublings.size() < kFalls + 2) return std::nullopt;
  const std::vector<double> falls = Falls();
  const auto [least, most] = std::ranges::minmax(falls);
  if (!(least > kLeastFall && most < kMostFall && most < kMostRise * least)) return std::nullopt;

  const Moment &now = doublings.back(), latest = now - doublings[doublings.size() - 2];
  // It changes by half as much with each doubling, about, as what came before the approach is left
  // behind.
  const double fall = std::min(2 * falls.back() - falls[kFalls - 2], kMostFall);
  if (!(fall > kLeastFall)) return std::nullopt;
  const double left = Log2Size(latest) + std::log2(fall / (1 - fall));
  if (!(left < Log2Size(now - start) - nearBits)) return std::nullopt;
  Real ahead(kBits);
  latest.Evaluate(ahead);
  mpfr_mul_d(ahead, ahead, fall / (1 - fall), MPFR_RNDN);
  Rational exactAhead;
  mpfr_get_q(exactAhead.get_mpq_t(), ahead);
  const Moment limit = now + Moment(exactAhead);

  const double error = left + kErrorLog2;
  const bool isBeyond = reach < start ? limit < reach : limit > reach;
  if (isBeyond && Log2Size(limit - reach) > error) return std::nullopt;
  const double decimals = std::floor(-error / kLog2Of10);
  return Limit{Rounded(limit, static_cast<long>(decimals)), -decimals * kLog2Of10};
}

}  // namespace varno::solve
