#include "solve/number/simplest_rational.h"

#include <vector>

namespace varno::solve {

namespace {

Integer Ceiling(const Rational& value)
{
  Integer result;
  mpz_cdiv_q(result.get_mpz_t(), value.get_num_mpz_t(), value.get_den_mpz_t());
  return result;
}

/// For 0 < low <= high, by the continued fraction that both have in common.
Rational SimplestPositive(Rational low, Rational high)
{
  std::vector<Integer> common;
  for (;;) {
    const Integer whole = Ceiling(low);
    if (whole <= high) {
      Rational result(whole);
      for (auto quotient = common.rbegin(); quotient != common.rend(); ++quotient)
        result = *quotient + 1 / result;
      return result;
    }
    // No whole number between them: both lie above the same one, at least one of them strictly.
    common.push_back(whole - 1);
    const Rational fraction = 1 / (high - common.back());
    high = 1 / (low - common.back());
    low = fraction;
  }
}

}  // namespace

Rational SimplestBetween(const Rational& low, const Rational& high)
{
  if (sgn(low) > 0) return SimplestPositive(low, high);
  if (sgn(high) < 0) return -SimplestPositive(-high, -low);
  return 0;
}

}  // namespace varno::solve
