#include "solve/enclosure/range.h"

namespace varno::solve {

Real Range::Magnitude() const
{
  Real result(Bits());
  mpfi_mag(result, range);
  return result;
}

Range operator+(const Range& a, const Range& b)
{
  Range result(a.Bits());
  mpfi_add(result, a, b);
  return result;
}

Range operator-(const Range& a, const Range& b)
{
  Range result(a.Bits());
  mpfi_sub(result, a, b);
  return result;
}

Range operator-(const Range& a)
{
  Range result(a.Bits());
  mpfi_neg(result, a);
  return result;
}

Range operator*(const Range& a, const Range& b)
{
  Range result(a.Bits());
  mpfi_mul(result, a, b);
  return result;
}

Range operator/(const Range& a, const Range& b)
{
  Range result(a.Bits());
  mpfi_div(result, a, b);
  return result;
}

}  // namespace varno::solve
