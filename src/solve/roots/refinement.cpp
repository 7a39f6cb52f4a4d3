#include "solve/roots/refinement.h"

#include <utility>

namespace varno::solve {

namespace {

/// A root that Newton's method has not reached after so many steps is bisected.
constexpr int kMostNewtonSteps = 60;

/// One root of a function that is monotone between two places, or the place nearest to it.
class Refinement {
 public:
  Refinement(const UncertainPolynomial& polynomial, const RootInterval& interval)
      : function(polynomial), begin(interval.begin), end(interval.end), bits(polynomial.Bits())
  {
    for (int m = 1; m < interval.mostRoots; ++m) function = Derivative(function);
    slope = Derivative(function);
    signBeyond = -Evaluate(function, begin).Sign();
    if (signBeyond == 0) signBeyond = Evaluate(function, end).Sign();
  }

  UncertainValue Run()
  {
    Real place(bits), value(bits), step(bits);
    Halve(place);
    for (int i = 0; i < kMostNewtonSteps + bits; ++i) {
      const UncertainValue here = Evaluate(function, place), rise = Evaluate(slope, place);
      const int sign = here.Sign();
      if (sign == 0 || rise.Sign() == 0) break;
      // Keep the root between begin and end.
      if (sign == signBeyond) {
        end = place;
      } else {
        begin = place;
      }
      mpfr_div(step, here.value, rise.value, MPFR_RNDN);
      mpfr_sub(value, place, step, MPFR_RNDN);
      const bool isInside = mpfr_cmp(value, begin) > 0 && mpfr_cmp(value, end) < 0;
      if (!isInside || i >= kMostNewtonSteps) Halve(value);
      if (mpfr_equal_p(value, place) != 0) break;
      place = value;
    }
    return {place, ErrorAt(place)};
  }

 private:
  void Halve(mpfr_ptr place) const
  {
    mpfr_add(place, begin, end, MPFR_RNDN);
    mpfr_div_2ui(place, place, 1, MPFR_RNDN);
  }

  /// How far a root can be: what the function may be there, by its slope.
  Real ErrorAt(const Real& place) const
  {
    const UncertainValue here = Evaluate(function, place), rise = Evaluate(slope, place);
    Real error(kErrorBits);
    if (rise.Sign() == 0) {
      mpfr_sub(error, end, begin, MPFR_RNDU);
      return error;
    }
    Real steepness(kErrorBits);
    mpfr_abs(error, here.value, MPFR_RNDU);
    mpfr_add(error, error, here.error, MPFR_RNDU);
    mpfr_abs(steepness, rise.value, MPFR_RNDD);
    mpfr_sub(steepness, steepness, rise.error, MPFR_RNDD);
    mpfr_div(error, error, steepness, MPFR_RNDU);
    return error;
  }

  UncertainPolynomial function, slope;
  Real begin, end;
  mpfr_prec_t bits;
  int signBeyond;  // the root
};

}  // namespace

UncertainValue RefineRoot(const UncertainPolynomial& polynomial, const RootInterval& interval)
{
  return Refinement(polynomial, interval).Run();
}

}  // namespace varno::solve
