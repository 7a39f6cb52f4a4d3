#include "varno/functions/period_reduction.h"

#include <cstdlib>

#include <gtest/gtest.h>

#include "tests/support/number_samples.h"
#include "tests/support/rational.h"
#include "tests/varno/support/scoped_global.h"
#include "varno/core/global_data.h"

namespace varno {

using namespace support;
namespace {

constexpr long kLimbBits = GMP_NUMB_BITS;

/// The limbs of a number at the default precision in force.
long NumberLimbs()
{
  return static_cast<long>(mpf_get_default_prec()) / kLimbBits + 2;
}

/// a 2^(limbs * kLimbBits)
Mpf ShiftedByLimbs(const Mpf& a, long limbs)
{
  Mpf shifted;
  mpf_mul_2exp(shifted, a, static_cast<mp_bitcnt_t>(limbs * kLimbBits));
  return shifted;
}

Mpf Reduced(const Mpf& a, const Mpf& period)
{
  Mpf rest(a);
  EXPECT_TRUE(SubtractPeriods(rest, period));
  return rest;
}

/// Compares with one subtraction after the other.
testing::AssertionResult IsReducedLikeBySubtraction(const Mpf& a, const Mpf& period)
{
  Mpf rest(a);
  while (mpf_cmp(rest, period) >= 0) mpf_sub(rest, rest, period);
  return IsExactly(Exact(rest), Reduced(a, period)) << "\nreduced from " << Exact(a).get_str();
}

/// What repeated subtraction leaves, in exact fractions and by stretches: while the highest limb of
/// a is limb number `limbs`, counted from 1 for the ones, a number of `length` limbs loses the
/// period without the limbs beyond its own.
Rational ReducedByStretches(Rational a, const Rational& period, long limbs, long length)
{
  const auto limbWeight = [](long limb) {
    const Rational size = Power(2, static_cast<unsigned long>(std::abs(limb) * kLimbBits));
    return limb >= 0 ? size : 1 / size;
  };
  for (; limbs > 1; --limbs) {
    const Rational lowest = limbWeight(limbs - length);
    const Rational step = Floor(period / lowest) * lowest;
    const Rational lower = limbWeight(limbs - 1);
    if (a >= lower) a -= (Floor((a - lower) / step) + 1) * step;
  }
  return a - Floor(a / period) * period;
}

class PeriodReduction : public testing::TestWithParam<int> {
 protected:
  PeriodReduction() { mpf_set_default_prec(static_cast<mp_bitcnt_t>(GetParam())); }

  ScopedGlobal global;
};

INSTANTIATE_TEST_SUITE_P(Bits, PeriodReduction, testing::Values(53, 80, 123, 256, 1024),
                         testing::PrintToStringParamName());

TEST_P(PeriodReduction, EqualsRepeatedSubtraction)
{
  for (const double high : {7.0, 20.0, 1e3, 1e5}) {
    for (const Mpf& a : RandomNumbers(20, 0.0, high)) {
      EXPECT_TRUE(IsReducedLikeBySubtraction(a, global->_PI_2));
    }
  }
}

TEST_P(PeriodReduction, EqualsRepeatedSubtractionOfACutOffPeriod)
{
  // A period just below the weight of the next limb is cut off where a reaches into that limb.
  Mpf period;
  mpf_mul_2exp(period, global->_PI_2, kLimbBits - 3);
  for (const Mpf& a : RandomNumbers(20, 1.0, 1000.0)) {
    EXPECT_TRUE(IsReducedLikeBySubtraction(ShiftedByLimbs(a, 1), period));
  }
}

TEST_P(PeriodReduction, EqualsRepeatedSubtractionAroundMultiples)
{
  for (unsigned long multiple = 1; multiple < 40; ++multiple) {
    Mpf a, above, below, little(1.0);
    mpf_mul_ui(a, global->_PI_2, multiple);
    mpf_div_2exp(little, little, 100);
    mpf_add(above, a, little);
    mpf_sub(below, a, little);
    for (const Mpf* x : {&a, &above, &below}) {
      EXPECT_TRUE(IsReducedLikeBySubtraction(*x, global->_PI_2)) << "near multiple " << multiple;
    }
  }
}

TEST_P(PeriodReduction, LeavesAnythingLessThanThePeriodAsItIs)
{
  for (const Mpf& a : RandomNumbers(20, 0.0, 6.28)) {
    EXPECT_TRUE(IsExactly(Exact(a), Reduced(a, global->_PI_2)));
  }
}

TEST_P(PeriodReduction, ReducesNumbersThatRepeatedSubtractionTakesTooLongFor)
{
  const long length = NumberLimbs();
  for (long limbs = 1; limbs <= length; ++limbs) {
    for (const Mpf& fraction : RandomNumbers(10, 0.0, 1.0)) {
      const Mpf a = ShiftedByLimbs(fraction, limbs);
      const Rational expected = ReducedByStretches(Exact(a), Exact(global->_PI_2), limbs, length);
      EXPECT_TRUE(IsExactly(expected, Reduced(a, global->_PI_2))) << Exact(a).get_str();
    }
  }
}

TEST_P(PeriodReduction, ReportsWhereSubtractionChangesNothing)
{
  // The ones lie just below the last limb.
  Mpf a = ShiftedByLimbs(Mpf(1.0), NumberLimbs());
  EXPECT_FALSE(SubtractPeriods(a, global->_PI_2));
}

}  // namespace
}  // namespace varno
