#include "tests/solve/support/comparison.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "solve/number/rational.h"

namespace varno::solve::support {

namespace {

std::string Text(mpfr_srcptr x)
{
  char* buffer = nullptr;
  mpfr_asprintf(&buffer, "%.*Re", static_cast<int>(static_cast<double>(mpfr_get_prec(x)) * 0.302),
                x);
  std::string text(buffer);
  mpfr_free_str(buffer);
  return text;
}

}  // namespace

Real FromText(const std::string& text, mpfr_prec_t bits)
{
  Real value(bits);
  if (text.find('/') != std::string::npos) {
    mpfr_set_q(value, Rational(text).get_mpq_t(), MPFR_RNDN);
  } else if (mpfr_set_str(value, text.c_str(), 10, MPFR_RNDN) != 0) {
    mpfr_set_nan(value);
  }
  return value;
}

double Log2(mpfr_srcptr x)
{
  if (mpfr_zero_p(x) != 0) return -std::numeric_limits<double>::infinity();
  if (mpfr_number_p(x) == 0) return std::numeric_limits<double>::infinity();
  long exponent = 0;
  const double mantissa = mpfr_get_d_2exp(&exponent, x, MPFR_RNDZ);
  return static_cast<double>(exponent) + std::log2(std::abs(mantissa));
}

testing::AssertionResult IsWithin(double log2, mpfr_srcptr actual, mpfr_srcptr expected)
{
  Real difference(std::max(mpfr_get_prec(actual), mpfr_get_prec(expected)));
  mpfr_sub(difference, actual, expected, MPFR_RNDA);
  if (mpfr_number_p(actual) != 0 && Log2(difference) <= log2) return testing::AssertionSuccess();
  return testing::AssertionFailure() << Text(actual) << " is not " << Text(expected) << ": error 2^"
                                     << Log2(difference) << ", allowed 2^" << log2;
}

testing::AssertionResult HasDigits(int digits, mpfr_srcptr actual, mpfr_srcptr expected)
{
  return IsWithin(Log2(expected) - digits * (std::numbers::ln10 / std::numbers::ln2), actual,
                  expected);
}

}  // namespace varno::solve::support
