#pragma once

#include <iosfwd>

#include <gmp.h>
#include <gtest/gtest.h>
#include <mpfr.h>

#include "tests/support/rational.h"

namespace support {

/// A real number by MPFR, at 2600 bits: the reference for what varno computes at up to 1024 bits.
class Real {
 public:
  Real(double x = 0.0);
  explicit Real(mpf_srcptr x);
  explicit Real(const Rational& x);
  Real(const Real& other);
  Real& operator=(const Real& other);
  ~Real();

  mpfr_ptr Get() { return number; }
  mpfr_srcptr Get() const { return number; }

 private:
  mpfr_t number;
};

Real operator-(const Real& a);
Real operator+(const Real& a, const Real& b);
Real operator-(const Real& a, const Real& b);
Real operator*(const Real& a, const Real& b);
Real operator/(const Real& a, const Real& b);

Real Abs(const Real& x);
/// 2^exponent
Real TwoTo(long exponent);
/// The value of an MPFR function at x.
Real Apply(int (*function)(mpfr_ptr, mpfr_srcptr, mpfr_rnd_t), const Real& x);

std::ostream& operator<<(std::ostream& out, const Real& x);

/// |actual - expected| <= bound
testing::AssertionResult IsWithin(const Real& bound, mpf_srcptr actual, const Real& expected);

}  // namespace support
