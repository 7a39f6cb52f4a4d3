#include "solve/integration/root_place.h"

#include <algorithm>

#include "solve/evaluation/size.h"
#include "solve/integration/step_length.h"
#include "solve/number/simplest_rational.h"

namespace varno::solve {

namespace {

/// A root is taken for a simple fraction near it when that has no more than this part of the bits
/// that it is known to.
constexpr double kMostBitsOfFraction = 1.0 / 3;

}  // namespace

Moment TimeOfRoot(const RootAhead& root, const Moment& start, bool backwards, long scaleExponent)
{
  Rational distance, error;
  mpfr_get_q(distance.get_mpq_t(), root.place);
  mpfr_get_q(error.get_mpq_t(), root.error);
  error *= 2;
  const Moment unit = StepLength{.mantissa = 1, .exponent = scaleExponent}.ToMoment();
  const Moment ahead = unit * distance;
  Moment place = backwards ? start - ahead : start + ahead;
  const Rational around = (unit * error).RationalPart();
  if (sgn(around) == 0) return place;
  if (!place.IsRational()) {
    const bool isZero = place <= Moment(around) && place >= Moment(-around);
    return isZero ? Moment(Rational(0)) : place;
  }
  const Rational& exact = place.RationalPart();
  const Rational simple = SimplestBetween(exact - around, exact + around);
  const double known = std::max(Log2Size(place), Log2Size(ahead)) - Log2Size(Moment(around));
  const std::size_t size =
      mpz_sizeinbase(simple.get_num_mpz_t(), 2) + mpz_sizeinbase(simple.get_den_mpz_t(), 2);
  return static_cast<double>(size) <= kMostBitsOfFraction * known ? Moment(simple) : place;
}

}  // namespace varno::solve
