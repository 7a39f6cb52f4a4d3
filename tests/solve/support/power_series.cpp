#include "tests/solve/support/power_series.h"

#include <algorithm>
#include <limits>

#include "tests/solve/support/comparison.h"

namespace varno::solve::support {

PowerSeries Plus(const PowerSeries& a, const PowerSeries& b)
{
  PowerSeries sum(a.size(), Real(kReferenceBits));
  for (std::size_t k = 0; k < a.size(); ++k) mpfr_add(sum[k], a[k], b[k], MPFR_RNDN);
  return sum;
}

PowerSeries Minus(const PowerSeries& a, const PowerSeries& b)
{
  PowerSeries difference(a.size(), Real(kReferenceBits));
  for (std::size_t k = 0; k < a.size(); ++k) mpfr_sub(difference[k], a[k], b[k], MPFR_RNDN);
  return difference;
}

PowerSeries Times(const PowerSeries& a, const PowerSeries& b)
{
  PowerSeries result(a.size(), Real(kReferenceBits));
  Real product(kReferenceBits);
  for (std::size_t k = 0; k < a.size(); ++k) {
    for (std::size_t j = 0; j <= k; ++j) {
      mpfr_mul(product, a[j], b[k - j], MPFR_RNDN);
      mpfr_add(result[k], result[k], product, MPFR_RNDN);
    }
  }
  return result;
}

PowerSeries Times(const PowerSeries& a, mpfr_srcptr factor)
{
  PowerSeries result(a.size(), Real(kReferenceBits));
  for (std::size_t k = 0; k < a.size(); ++k) mpfr_mul(result[k], a[k], factor, MPFR_RNDN);
  return result;
}

PowerSeries ToThe(const PowerSeries& a, int exponent)
{
  PowerSeries result = ConstantSeries(1, a.size());
  for (int i = 0; i < exponent; ++i) result = Times(result, a);
  return result;
}

PowerSeries Derivative(const PowerSeries& a)
{
  PowerSeries result(a.size(), Real(kReferenceBits));
  for (std::size_t k = 0; k < a.size(); ++k) mpfr_mul_ui(result[k], a[k], k, MPFR_RNDN);
  return result;
}

PowerSeries ConstantSeries(mpfr_srcptr value, std::size_t size)
{
  PowerSeries result(size, Real(kReferenceBits));
  mpfr_set(result[0], value, MPFR_RNDN);
  return result;
}

PowerSeries ConstantSeries(long value, std::size_t size)
{
  Real number(64);
  mpfr_set_si(number, value, MPFR_RNDN);
  return ConstantSeries(number, size);
}

double LargestLog2(const PowerSeries& a)
{
  double largest = -std::numeric_limits<double>::infinity();
  for (const Real& term : a) largest = std::max(largest, Log2(term));
  return largest;
}

}  // namespace varno::solve::support
