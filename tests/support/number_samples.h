#pragma once

#include <vector>

#include "numeric/mpf.h"

namespace varno {

/// Pseudo-random numbers between low and high, with all limbs that the default precision in force
/// gives a number; the same ones in every run.
std::vector<Mpf> RandomNumbers(int count, double low, double high);

}  // namespace varno
