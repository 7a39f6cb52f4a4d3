#pragma once

#include <vector>

#include "arith/mpf.h"
#include "tests/support/rational.h"

namespace support {

using arith::Mpf;

/// Pseudo-random numbers between low and high, with all limbs that the default precision in force
/// gives a number; the same ones in every run.
std::vector<Mpf> RandomNumbers(int count, double low, double high);

/// x at the default precision in force.
Mpf Rounded(const Rational& x);

}  // namespace support
