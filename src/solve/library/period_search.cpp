#include "solve/library/period_search.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "solve/evaluation/size.h"

namespace varno::solve {

namespace {

constexpr double kNothing = -std::numeric_limits<double>::infinity();
constexpr double kLog10Of2 = 0.30102999566398120;
/// A period may have so many maxima.
constexpr std::size_t kMostReturns = 64;
/// Values agree beyond the digits by so many.
constexpr double kGuardDecimals = 1;

}  // namespace

/// log10 of the largest difference of a variable, in units of its size.
double PeriodSearch::Log10Distance(const Return& a, const Return& b) const
{
  double distance = kNothing;
  Real difference(64);
  for (std::size_t i = 0; i < a.values.size(); ++i) {
    mpfr_sub(difference, a.values[i], b.values[i], MPFR_RNDN);
    if (!difference.IsZero())
      distance = std::max(distance, (Log2Size(difference) - log2Sizes[i]) * kLog10Of2);
  }
  return distance;
}

/// Whether everything comes back after so many returns.
bool PeriodSearch::IsPeriod(std::size_t returnsBack) const
{
  const double wanted = -digits - kGuardDecimals;
  const double now = Log10Distance(returns[0], returns[returnsBack]);
  const double before = Log10Distance(returns[1], returns[returnsBack + 1]);
  if (now > wanted) return false;
  if (now >= before) return true;  // nothing but rounding is left
  const double ratio = std::pow(10, now - before);
  return now + std::log10(ratio / (1 - ratio)) <= wanted;
}

std::optional<Moment> PeriodSearch::Add(const Moment& time, std::span<const RowNumber> variables)
{
  Return latest{time, {}};
  log2Sizes.resize(variables.size(), kNothing);
  for (std::size_t i = 0; i < variables.size(); ++i) {
    const RowNumber& number = variables[i];
    latest.values.push_back(number.value && !number.zeroUnit ? *number.value : Real(2));
    log2Sizes[i] = std::max(log2Sizes[i], Log2Size(latest.values.back()));
  }
  returns.push_front(std::move(latest));
  if (returns.size() > kMostReturns + 2) returns.pop_back();
  for (std::size_t back = 1; back + 1 < returns.size(); ++back) {
    if (!IsPeriod(back)) continue;
    const Moment period = returns[0].time - returns[back].time;
    return period.Sign() < 0 ? Moment() - period : period;
  }
  return std::nullopt;
}

}  // namespace varno::solve
