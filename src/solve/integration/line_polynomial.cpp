#include "solve/integration/line_polynomial.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>

#include "solve/evaluation/size.h"

namespace varno::solve {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
/// The terms of a divisor or radicand behind the first may make up this part of it: no root then.
constexpr double kMostOfFirstTerm = 0.9;
/// A term below this part of the first one counts as much (log2, and itself).
constexpr double kSmallLog2 = -20, kSmall = 0x1p-20;
/// What rounding may have done to a term, and the end of the series to a sum, is this much (log2)
/// larger than the unit of the precision, or the tolerance.
constexpr double kRoundingMarginBits = 5;
constexpr double kToleranceMarginBits = 3;

/// log2 of what rounding may have done to a term of size 1.
double UnitLog2(const RunSettings& settings)
{
  return kRoundingMarginBits - static_cast<double>(settings.bits);
}

/// 2^log2 as a bound of an error.
Real ErrorBound(double log2)
{
  Real bound(kErrorBits);
  if (log2 == -kInfinity) return bound;
  mpfr_set_si_2exp(bound, 1, static_cast<mpfr_exp_t>(std::ceil(log2)), MPFR_RNDU);
  return bound;
}

/// Leaves out the last terms as far as they are below 2^log2 together, and counts them, and what
/// the series itself leaves out, as an error of the last term that stays.
void CutTail(UncertainPolynomial& polynomial, double log2)
{
  const Real limit = ErrorBound(log2);
  Real tail(kErrorBits), longer(kErrorBits), term(kErrorBits);
  while (polynomial.coefficients.size() > 1) {
    mpfr_abs(term, polynomial.coefficients.back(), MPFR_RNDU);
    mpfr_add(longer, tail, term, MPFR_RNDU);
    if (mpfr_cmp(longer, limit) > 0) break;
    tail = longer;
    polynomial.coefficients.pop_back();
    polynomial.errors.pop_back();
  }
  Real& last = polynomial.errors.back();
  mpfr_add(last, last, tail, MPFR_RNDU);
  mpfr_add(last, last, limit, MPFR_RNDU);
}

}  // namespace

bool FirstTermOutweighs(const Series& series, LineId line, int first, double lengthLog2)
{
  const std::span<const double> terms = series.Logs(line).subspan(first);
  double others = 0;
  for (std::size_t k = 1; k < terms.size(); ++k) {
    const double log2 = terms[k] + static_cast<double>(k) * lengthLog2 - terms[0];
    // Of most terms no more needs to be known.
    others += log2 < kSmallLog2 ? kSmall : std::exp2(log2);
  }
  return others < kMostOfFirstTerm;
}

bool FirstTermStandsOut(const SeriesStep& step, LineId line, int first)
{
  const double term = step.series.Log2(line, first) + first * Log2Size(step.length);
  return term > step.sizes[line] + UnitLog2(step.settings);
}

UncertainPolynomial OverStep(const Tape& tape, const SeriesStep& step, LineId line, int first)
{
  const Series& series = step.series;
  const mpfr_prec_t bits = step.settings.bits;
  const double unit = UnitLog2(step.settings);
  UncertainPolynomial polynomial;
  Real power(bits);
  mpfr_set_ui(power, 1, MPFR_RNDN);
  // What rounding leaves open of the line follows its size, the end of its series its terms.
  double largest = step.sizes[line];
  double largestTerm = largest - static_cast<double>(bits);
  const double resolution = series.Resolution(line);
  const double length = Log2Size(step.length), rise = series.ResolutionRise() + length;
  for (int k = first; k <= series.Order(); ++k) {
    Real& coefficient = polynomial.coefficients.emplace_back(bits);
    series.Term(line, k, coefficient);
    mpfr_mul(coefficient, coefficient, power, MPFR_RNDN);
    mpfr_mul(power, power, step.length, MPFR_RNDN);
    largestTerm = std::max(largestTerm, Log2Size(coefficient));
    largest = std::max(largest, largestTerm);
    polynomial.errors.push_back(ErrorBound(std::max(largest + unit, resolution + k * rise)));
  }
  const std::int32_t degree = tape.lines[line].degree;
  if (degree < 0 || degree > series.Order())
    CutTail(polynomial, largestTerm - step.settings.toleranceBits + kToleranceMarginBits);
  return polynomial;
}

}  // namespace varno::solve
