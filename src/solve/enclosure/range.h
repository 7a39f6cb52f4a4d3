#pragma once

#include <mpfi.h>
#include <utility>

#include "solve/number/real.h"

namespace varno::solve {

/// A closed interval of real numbers, by MPFI: whatever is computed with it holds all values that
/// the operation takes, since both ends are rounded outwards. Ends may be infinite. A new one is
/// [0, 0]; results have the precision of the first operand.
class Range {
 public:
  explicit Range(mpfr_prec_t bits)
  {
    mpfi_init2(range, bits);
    mpfi_set_si(range, 0);
  }
  /// The number, rounded to both sides.
  Range(mpfr_prec_t bits, mpfr_srcptr value) : Range(bits) { mpfi_set_fr(range, value); }
  Range(const Range& other) : Range(other.Bits()) { mpfi_set(range, other.range); }
  Range(Range&& other) noexcept
  {
    range[0] = other.range[0];
    other.range->left._mpfr_d = nullptr;
  }
  Range& operator=(Range other) noexcept
  {
    std::swap(range[0], other.range[0]);
    return *this;
  }
  ~Range()
  {
    if (range->left._mpfr_d != nullptr) mpfi_clear(range);
  }

  operator mpfi_ptr() { return range; }
  operator mpfi_srcptr() const { return range; }

  mpfr_prec_t Bits() const { return mpfi_get_prec(range); }
  mpfr_srcptr Left() const { return &range->left; }
  mpfr_srcptr Right() const { return &range->right; }
  bool IsBounded() const { return mpfi_bounded_p(range) != 0; }
  bool HasZero() const { return mpfi_has_zero(range) > 0; }
  bool IsZero() const { return mpfi_is_zero(range) > 0; }
  bool IsPositive() const { return mpfr_sgn(&range->left) > 0; }

  /// The largest absolute value, rounded up.
  Real Magnitude() const;
  /// Widens this to hold a number.
  void Include(mpfr_srcptr value) { mpfi_put_fr(range, value); }

 private:
  mpfi_t range;
};

Range operator+(const Range& a, const Range& b);
Range operator-(const Range& a, const Range& b);
Range operator-(const Range& a);
Range operator*(const Range& a, const Range& b);
/// Unbounded where b holds 0.
Range operator/(const Range& a, const Range& b);

}  // namespace varno::solve
