#include "solve/verification/agreement.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "solve/evaluation/size.h"

namespace varno::solve {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
const double kLog10Of2 = std::log10(2.0);
const double kLog10Of4 = std::log10(4.0);
/// A number this far below its size may be the rest of a cancellation.
constexpr double kBlurredDecimals = 3;
/// A number this far below the limit (log10) is below it, whatever the rounding of logarithms.
constexpr double kBelowTiny = 0.1;

double Log10(mpfr_srcptr x)
{
  return Log2Size(x) * kLog10Of2;
}

}  // namespace

long ZeroUnit(double size, int digits)
{
  return static_cast<long>(std::floor(size * kLog10Of2)) - (digits + kZeroGuardDigits);
}

Agreement Compare(const SizedNumber& a, const SizedNumber& b, const AgreementRule& rule)
{
  if (a.isInDoubt || b.isInDoubt) return {Verdict::kBlurred, kInfinity};
  if (!a.value && !b.value) return {Verdict::kAgree, kInfinity};
  if (!a.value || !b.value) return {Verdict::kDiffer, 0};

  Real difference(64);
  mpfr_sub(difference, *a.value, *b.value, MPFR_RNDN);
  const double size = std::max(a.size, b.size) * kLog10Of2;
  const double number = std::max(Log10(*a.value), Log10(*b.value));
  const double apart = Log10(difference);
  if (number == -kInfinity && size == -kInfinity) return {Verdict::kAgree, kInfinity};

  // The size is infinite where a function has a vertical tangent, as sqrt at 0.
  const bool isClear = size == kInfinity || number >= size - rule.clearDecimals;
  // The unit of the last digit, the smaller one where the number lies at a power of ten.
  const double unit = std::floor(Log10(*b.value) - 1e-9) + 1 - rule.digits;
  const bool isEqual = apart < unit - kLog10Of4 || (apart == -kInfinity && size == kInfinity);
  if (isClear && isEqual) return {Verdict::kAgree, kInfinity};

  if (std::max(size, number) < rule.tinyLog2 * kLog10Of2 - kBelowTiny)
    return {Verdict::kTiny, kInfinity};

  // Not a zero by its size alone: it must not exceed the unit that is printed. And what lies under
  // a large size may count by itself, as in 1e60*(sqrt(1 + 1e-60) - 1): more decimals decide.
  if (rule.mayDeclareZero && size < rule.clearDecimals &&
      number < static_cast<double>(ZeroUnit(std::max(a.size, b.size), rule.digits)))
    return {Verdict::kZero, kInfinity};
  const bool blurred = !isClear || number < size - kBlurredDecimals;
  return {blurred ? Verdict::kBlurred : Verdict::kDiffer, std::max(size, number) - apart};
}

}  // namespace varno::solve
