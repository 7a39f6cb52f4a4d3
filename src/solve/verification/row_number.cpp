#include "solve/verification/row_number.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "solve/evaluation/size.h"
#include "solve/verification/agreement.h"

namespace varno::solve {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLog10OfHalf = -0.30102999566398120;

double Log10(mpfr_srcptr x)
{
  return Log2Size(x) / kLog2Of10;
}

/// log10 of what the printed number may be off by.
double Allowed(const RowNumber& number, int digits)
{
  if (number.zeroUnit) return static_cast<double>(*number.zeroUnit);
  const double unit = std::floor(Log10(*number.value) - 1e-9) + 1 - digits;
  return unit + kLog10OfHalf;
}

/// What stands for a number: 0 for a zero.
Real Shown(const RowNumber& number)
{
  return number.zeroUnit ? Real() : *number.value;
}

}  // namespace

bool Contradicts(const RowNumber& before, const RowNumber& now, int digits)
{
  if (!before.value || !now.value) return before.value.has_value() != now.value.has_value();
  Real difference(64);
  mpfr_sub(difference, Shown(before), Shown(now), MPFR_RNDN);
  const double unknown = now.zeroUnit ? static_cast<double>(*now.zeroUnit) : -kInfinity;
  return Log10(difference) > std::max(Allowed(before, digits), unknown);
}

}  // namespace varno::solve
