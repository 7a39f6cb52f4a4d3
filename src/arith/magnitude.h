#pragma once

#include <cstdlib>

#include <gmp.h>

#include "arith/scratch.h"
#include "arith/wide_integer.h"

namespace arith {

/// The absolute value of a number, by reference: a view of its digits without the sign, for
/// comparisons. It must not outlive the number.
class Magnitude {
 public:
  explicit Magnitude(mpf_srcptr x) : view{*x} { view->_mp_size = std::abs(view->_mp_size); }
  operator mpf_srcptr() const { return view; }

 private:
  mpf_t view;
};

/// The bits above the highest one of the top limb; x is not 0.
inline int LeadingZeros(mpf_srcptr x)
{
  return __builtin_clzl(x->_mp_d[std::abs(x->_mp_size) - 1]);
}

/// The binary exponent e of a number: 2^(e-1) <= |x| < 2^e; 0 for 0.
inline WideInteger BinaryExponent(mpf_srcptr x)
{
  if (mpf_sgn(x) == 0) return 0;
  return WideInteger{x->_mp_exp} * GMP_NUMB_BITS - LeadingZeros(x);
}

/// |x| < |a b|, where the product is that of mpf_mul at the default precision in force.
inline bool IsBelowProduct(mpf_srcptr x, mpf_srcptr a, mpf_srcptr b)
{
  if (mpf_sgn(x) != 0 && mpf_sgn(a) != 0 && mpf_sgn(b) != 0) {
    // With the binary exponents 2^(e-2) <= |a b| < 2^e, and d is that of x less e. Nearly always
    // this decides, without the product. d itself may not fit into a long, but the limbs do.
    const long limbs = x->_mp_exp - a->_mp_exp - b->_mp_exp;
    if (limbs > 0) return false;
    if (limbs < -1) return true;
    const long d = limbs * GMP_NUMB_BITS + LeadingZeros(a) + LeadingZeros(b) - LeadingZeros(x);
    if (d > 0) return false;
    if (d <= -2) return true;
  }
  Mpf& product = Scratch();
  mpf_mul(product, a, b);
  return mpf_cmp(Magnitude(x), Magnitude(product)) < 0;
}

}  // namespace arith
