#include "tests/support/rational.h"

namespace support {

Rational Exact(mpf_srcptr x)
{
  Rational value;
  mpq_set_f(value.get_mpq_t(), x);
  return value;
}

Rational Power(const Rational& base, unsigned long exponent)
{
  Rational power = base;
  mpz_pow_ui(power.get_num_mpz_t(), base.get_num_mpz_t(), exponent);
  mpz_pow_ui(power.get_den_mpz_t(), base.get_den_mpz_t(), exponent);
  return power;
}

Rational Floor(const Rational& x)
{
  mpz_class floor;
  mpz_fdiv_q(floor.get_mpz_t(), x.get_num_mpz_t(), x.get_den_mpz_t());
  return floor;
}

testing::AssertionResult IsExactly(const Rational& expected, mpf_srcptr actual)
{
  const Rational value = Exact(actual);
  if (value == expected) return testing::AssertionSuccess();
  return testing::AssertionFailure() << value.get_str() << "\nis not " << expected.get_str();
}

}  // namespace support
