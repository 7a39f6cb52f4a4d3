#include "tests/support/real.h"

#include <ostream>

namespace support {

namespace {

constexpr mpfr_prec_t kBits = 2600;

template <class Operation>
Real Combine(Operation operation, const Real& a, const Real& b)
{
  Real result;
  operation(result.Get(), a.Get(), b.Get(), MPFR_RNDN);
  return result;
}

}  // namespace

Real::Real(double x)
{
  mpfr_init2(number, kBits);
  mpfr_set_d(number, x, MPFR_RNDN);
}

Real::Real(mpf_srcptr x)
{
  mpfr_init2(number, kBits);
  mpfr_set_f(number, x, MPFR_RNDN);
}

Real::Real(const Rational& x)
{
  mpfr_init2(number, kBits);
  mpfr_set_q(number, x.get_mpq_t(), MPFR_RNDN);
}

Real::Real(const Real& other) : Real()
{
  mpfr_set(number, other.number, MPFR_RNDN);
}

Real& Real::operator=(const Real& other)
{
  mpfr_set(number, other.number, MPFR_RNDN);
  return *this;
}

Real::~Real()
{
  mpfr_clear(number);
}

Real operator-(const Real& a)
{
  return Apply(mpfr_neg, a);
}

Real operator+(const Real& a, const Real& b)
{
  return Combine(mpfr_add, a, b);
}

Real operator-(const Real& a, const Real& b)
{
  return Combine(mpfr_sub, a, b);
}

Real operator*(const Real& a, const Real& b)
{
  return Combine(mpfr_mul, a, b);
}

Real operator/(const Real& a, const Real& b)
{
  return Combine(mpfr_div, a, b);
}

Real Abs(const Real& x)
{
  return Apply(mpfr_abs, x);
}

Real TwoTo(long exponent)
{
  Real power;
  mpfr_set_ui_2exp(power.Get(), 1, exponent, MPFR_RNDN);
  return power;
}

Real Apply(int (*function)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t), const Real& x)
{
  Real result;
  function(result.Get(), x.Get(), MPFR_RNDN);
  return result;
}

std::ostream& operator<<(std::ostream& out, const Real& x)
{
  char* text = nullptr;
  mpfr_asprintf(&text, "%.60Rg", x.Get());
  out << text;
  mpfr_free_str(text);
  return out;
}

testing::AssertionResult IsWithin(const Real& bound, mpf_srcptr actual, const Real& expected)
{
  const Real value(actual);
  const Real error = Abs(value - expected);
  if (mpfr_lessequal_p(error.Get(), bound.Get()) != 0) return testing::AssertionSuccess();
  return testing::AssertionFailure()
         << value << "\nis not " << expected << "\nwithin " << bound << "; error " << error;
}

}  // namespace support
