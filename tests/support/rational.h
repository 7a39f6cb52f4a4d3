#pragma once

#include <gmpxx.h>
#include <gtest/gtest.h>

namespace support {

/// An exact fraction.
using Rational = mpq_class;

/// The value of a GMP float, every one of which is a fraction.
Rational Exact(mpf_srcptr x);

/// base^exponent
Rational Power(const Rational& base, unsigned long exponent);

/// The greatest integer that is not above x.
Rational Floor(const Rational& x);

/// actual = expected, to the last bit
testing::AssertionResult IsExactly(const Rational& expected, mpf_srcptr actual);

}  // namespace support
