#include "solve/evaluation/elementary.h"

#include <cassert>

#include "solve/fixed/sine.h"
#include "solve/number/real.h"

namespace varno::solve {

namespace {

constexpr mpfr_rnd_t kNearest = MPFR_RNDN;
constexpr mpfr_exp_t kLargestAngleExponent = 1'000'000;

void ArcCotangent(mpfr_ptr result, mpfr_srcptr a)
{
  if (mpfr_zero_p(a) != 0) {
    mpfr_const_pi(result, kNearest);
    mpfr_div_2ui(result, result, 1, kNearest);
    return;
  }
  // atan(1/a) by the angle of the point (|a|, sign a): one rounding.
  mpfr_t one, size;
  mpfr_init2(one, 2);
  mpfr_init2(size, mpfr_get_prec(a));
  mpfr_set_si(one, mpfr_sgn(a), kNearest);
  mpfr_abs(size, a, kNearest);
  mpfr_atan2(result, one, size, kNearest);
  mpfr_clear(one);
  mpfr_clear(size);
}

/// acoth a = atanh(1/a) = ln((a + 1)/(a - 1)) / 2.
void ArcHyperbolicCotangent(mpfr_ptr result, mpfr_srcptr a)
{
  mpfr_t inverse;
  mpfr_init2(inverse, mpfr_get_prec(result) + mpfr_get_prec(a) + 16);
  mpfr_ui_div(inverse, 1, a, kNearest);
  mpfr_atanh(result, inverse, kNearest);
  mpfr_clear(inverse);
}

/// A sine or a cosine. MPFR's are computed in a thousandth part of a millisecond and more; at few
/// digits that is more than all other operations of a step take.
void SineOrCosine(Operation operation, mpfr_ptr result, mpfr_srcptr a)
{
  Real other(mpfr_get_prec(result));
  const bool isSine = operation == Operation::kSin;
  if (SetSineAndCosine(isSine ? result : other, isSine ? other : result, a)) return;
  if (isSine) {
    mpfr_sin(result, a, kNearest);
  } else {
    mpfr_cos(result, a, kNearest);
  }
}

void Compute(Operation operation, mpfr_ptr result, mpfr_srcptr a, mpfr_srcptr b)
{
  switch (operation) {
    case Operation::kNegate:
      mpfr_neg(result, a, kNearest);
      return;
    case Operation::kAdd:
      mpfr_add(result, a, b, kNearest);
      return;
    case Operation::kSubtract:
      mpfr_sub(result, a, b, kNearest);
      return;
    case Operation::kMultiply:
      mpfr_mul(result, a, b, kNearest);
      return;
    case Operation::kDivide:
      mpfr_div(result, a, b, kNearest);
      return;
    case Operation::kPower:
      mpfr_pow(result, a, b, kNearest);
      return;
    case Operation::kSqrt:
      mpfr_sqrt(result, a, kNearest);
      return;
    case Operation::kCbrt:
      mpfr_cbrt(result, a, kNearest);
      return;
    case Operation::kExp:
      mpfr_exp(result, a, kNearest);
      return;
    case Operation::kLn:
      mpfr_log(result, a, kNearest);
      return;
    case Operation::kSin:
    case Operation::kCos:
      SineOrCosine(operation, result, a);
      return;
    case Operation::kTan:
      mpfr_tan(result, a, kNearest);
      return;
    case Operation::kCot:
      mpfr_cot(result, a, kNearest);
      return;
    case Operation::kAsin:
      mpfr_asin(result, a, kNearest);
      return;
    case Operation::kAcos:
      mpfr_acos(result, a, kNearest);
      return;
    case Operation::kAtan:
      mpfr_atan(result, a, kNearest);
      return;
    case Operation::kAcot:
      ArcCotangent(result, a);
      return;
    case Operation::kSinh:
      mpfr_sinh(result, a, kNearest);
      return;
    case Operation::kCosh:
      mpfr_cosh(result, a, kNearest);
      return;
    case Operation::kTanh:
      mpfr_tanh(result, a, kNearest);
      return;
    case Operation::kCoth:
      mpfr_coth(result, a, kNearest);
      return;
    case Operation::kAsinh:
      mpfr_asinh(result, a, kNearest);
      return;
    case Operation::kAcosh:
      mpfr_acosh(result, a, kNearest);
      return;
    case Operation::kAtanh:
      mpfr_atanh(result, a, kNearest);
      return;
    case Operation::kAcoth:
      ArcHyperbolicCotangent(result, a);
      return;
    case Operation::kErf:
      mpfr_erf(result, a, kNearest);
      return;
    case Operation::kAtan2:
      mpfr_atan2(result, a, b, kNearest);
      return;
    case Operation::kAbs:
      mpfr_abs(result, a, kNearest);
      return;
    case Operation::kSign:
      mpfr_set_si(result, mpfr_sgn(a), kNearest);
      return;
    case Operation::kFloor:
      mpfr_rint_floor(result, a, kNearest);
      return;
    case Operation::kCeil:
      mpfr_rint_ceil(result, a, kNearest);
      return;
    case Operation::kTrunc:
      mpfr_rint_trunc(result, a, kNearest);
      return;
    case Operation::kMin:
      mpfr_min(result, a, b, kNearest);
      return;
    case Operation::kMax:
      mpfr_max(result, a, b, kNearest);
      return;
    case Operation::kLess:
      mpfr_set_si(result, mpfr_less_p(a, b) != 0 ? 1 : 0, kNearest);
      return;
    case Operation::kLessOrEqual:
      mpfr_set_si(result, mpfr_lessequal_p(a, b) != 0 ? 1 : 0, kNearest);
      return;
    case Operation::kAnd:
      mpfr_min(result, a, b, kNearest);
      return;
    case Operation::kOr:
      mpfr_max(result, a, b, kNearest);
      return;
    case Operation::kNot:
      mpfr_si_sub(result, 1, a, kNearest);
      return;
    case Operation::kIf:
    case Operation::kNumber:
    case Operation::kPi:
    case Operation::kTime:
    case Operation::kState:
    case Operation::kParameter:
      break;
  }
  assert(false && "neither a leaf nor a choice is an operation on numbers");
}

bool TakesAngle(Operation operation)
{
  return operation == Operation::kSin || operation == Operation::kCos ||
         operation == Operation::kTan || operation == Operation::kCot;
}

bool IsOutOfRange(Operation operation, mpfr_srcptr a)
{
  return TakesAngle(operation) && mpfr_regular_p(a) != 0 && mpfr_get_exp(a) > kLargestAngleExponent;
}

/// Tells what became of a result, by MPFR's flags.
Outcome OutcomeOf(mpfr_ptr result)
{
  if (mpfr_number_p(result) == 0) {
    return mpfr_overflow_p() != 0 ? Outcome::kOutOfRange : Outcome::kUndefined;
  }
  // A zero of MPFR has a sign, which atan2 and divisions would show; ours has none.
  if (mpfr_zero_p(result) != 0) mpfr_set_zero(result, 1);
  return Outcome::kValue;
}

}  // namespace

Outcome Apply(Operation operation, mpfr_ptr result, mpfr_srcptr a, mpfr_srcptr b)
{
  if (operation == Operation::kAtan2 && mpfr_zero_p(a) != 0 && mpfr_zero_p(b) != 0) {
    return Outcome::kUndefined;
  }
  if (IsOutOfRange(operation, a)) return Outcome::kOutOfRange;
  mpfr_clear_overflow();
  Compute(operation, result, a, b);
  return OutcomeOf(result);
}

Outcome ApplyPair(Operation operation, mpfr_ptr sine, mpfr_ptr cosine, mpfr_srcptr a)
{
  if (IsOutOfRange(operation, a)) return Outcome::kOutOfRange;
  mpfr_clear_overflow();
  if (operation == Operation::kSin) {
    if (!SetSineAndCosine(sine, cosine, a)) mpfr_sin_cos(sine, cosine, a, kNearest);
  } else {
    mpfr_sinh_cosh(sine, cosine, a, kNearest);
  }
  const Outcome outcome = OutcomeOf(sine);
  return outcome == Outcome::kValue ? OutcomeOf(cosine) : outcome;
}

Outcome ApplyPower(mpfr_ptr result, mpfr_srcptr a, const Integer& exponent)
{
  mpfr_clear_overflow();
  mpfr_pow_z(result, a, exponent.get_mpz_t(), kNearest);
  return OutcomeOf(result);
}

}  // namespace varno::solve
