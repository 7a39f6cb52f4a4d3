#include "varno/functions/period_reduction.h"

namespace varno {

namespace {

/// Subtracts, at once, as many periods as keep a at or above the power of two below it.
///
/// mpf_sub cuts its second operand off where the limbs of its first one end and is exact otherwise.
/// While a stays between two powers of two its limbs keep their places, so that every subtraction
/// takes away the same number, `step`. A multiple of `step` below a ends no later than a's limbs
/// do: it can be taken away exactly, too. What is left is still at least one period. Returns false
/// where a subtraction leaves a as it is.
bool SkipPeriods(Mpf& a, const Mpf& period)
{
  Mpf step;
  mpf_sub(step, a, period);
  mpf_sub(step, a, step);
  if (step.Sign() == 0) return false;

  long exponent = 0;
  mpf_get_d_2exp(&exponent, a);
  Mpf power(1.0);
  mpf_mul_2exp(power, power, static_cast<mp_bitcnt_t>(exponent - 1));

  // Wide enough for the product of any two numbers of a's length; a count that division has cut off
  // would only leave more to be done.
  Mpf count, taken;
  mpf_set_prec(count, 4 * mpf_get_prec(a));
  mpf_set_prec(taken, 4 * mpf_get_prec(a));
  mpf_sub(count, a, power);
  mpf_div(count, count, step);
  mpf_trunc(count, count);
  mpf_mul(taken, count, step);
  mpf_sub(a, a, taken);
  return true;
}

}  // namespace

bool SubtractPeriods(Mpf& a, const Mpf& period)
{
  while (mpf_cmp(a, period) >= 0) {
    if (!SkipPeriods(a, period)) return false;
    mpf_sub(a, a, period);
  }
  return true;
}

}  // namespace varno
