#pragma once

#include <string>

#include <gtest/gtest.h>

#include "solve/number/real.h"

namespace varno::solve::support {

/// A number from its decimal digits, or a fraction such as -3/4, to this precision.
Real FromText(const std::string& text, mpfr_prec_t bits);

/// |actual - expected| <= 10^-digits |expected|; no more than a unit in the last of so many digits.
testing::AssertionResult HasDigits(int digits, mpfr_srcptr actual, mpfr_srcptr expected);

/// |actual - expected| <= 2^log2
testing::AssertionResult IsWithin(double log2, mpfr_srcptr actual, mpfr_srcptr expected);

/// log2 |x|: -infinity for 0.
double Log2(mpfr_srcptr x);

}  // namespace varno::solve::support
