#pragma once

#include <cstdlib>

#include <gmp.h>

#include "arith/scratch.h"

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

/// The binary exponent e of a number: 2^(e-1) <= |x| < 2^e; 0 for 0.
inline long BinaryExponent(mpf_srcptr x)
{
  if (mpf_sgn(x) == 0) return 0;
  const mp_limb_t top = x->_mp_d[std::abs(x->_mp_size) - 1];
  return x->_mp_exp * GMP_NUMB_BITS - __builtin_clzl(top);
}

/// |x| < |a b|, where the product is that of mpf_mul at the default precision in force.
inline bool IsBelowProduct(mpf_srcptr x, mpf_srcptr a, mpf_srcptr b)
{
  if (mpf_sgn(x) != 0 && mpf_sgn(a) != 0 && mpf_sgn(b) != 0) {
    // 2^(e-2) <= |a b| < 2^e: nearly always this decides, without the product.
    const long e = BinaryExponent(a) + BinaryExponent(b);
    if (BinaryExponent(x) > e) return false;
    if (BinaryExponent(x) <= e - 2) return true;
  }
  Mpf& product = Scratch();
  mpf_mul(product, a, b);
  return mpf_cmp(Magnitude(x), Magnitude(product)) < 0;
}

}  // namespace arith
