#include "varno/expr/simplification.h"

#include "varno/core/global_data.h"
#include "varno/expr/binary_operator.h"
#include "varno/expr/number.h"
#include "varno/expr/un_op.h"

namespace varno {

namespace {

using Ref = Expr::Ref;

/// |x| < _ACCURACY
bool IsSmall(mpf_srcptr x)
{
  if (x == nullptr) return false;
  Mpf size;
  mpf_abs(size, x);
  return mpf_cmp(size, Expr::Global->_ACCURACY) < 0;
}

/// ||x| - 1| < _ACCURACY
bool IsNearOne(mpf_srcptr x)
{
  if (x == nullptr) return false;
  Mpf distance;
  mpf_abs(distance, x);
  mpf_sub(distance, distance, Expr::Global->_ONE);
  return IsSmall(distance);
}

/// Built directly: the operand is never a number here.
Ref Negated(const Ref& a)
{
  return Ref(new UnMinus(a));
}

/// A factor near 1 or -1 leaves the other operand, with the factor's sign.
Ref WithSignOf(mpf_srcptr factor, const Ref& a)
{
  return mpf_sgn(factor) < 0 ? Negated(a) : a;
}

/// The shortcuts. x and y are the constants of a and b; one of them is null.
std::optional<Ref> Shortened(ExprType type, const Ref& a, mpf_srcptr x, const Ref& b, mpf_srcptr y)
{
  switch (type) {
    case kPlus:
      if (IsSmall(x)) return b;
      if (IsSmall(y)) return a;
      break;
    case kMinus:
      if (IsSmall(x)) return Negated(b);
      if (IsSmall(y)) return a;
      break;
    case kMultiply:
      if (IsSmall(x) || IsSmall(y)) return Ref(new Number(0.0));
      if (IsNearOne(x)) return WithSignOf(x, b);
      if (IsNearOne(y)) return WithSignOf(y, a);
      break;
    default:
      // A dividend of 0 stays.
      if (IsNearOne(y)) return WithSignOf(y, a);
  }
  return std::nullopt;
}

}  // namespace

std::optional<Ref> Simplified(ExprType type, const Ref& a, const Ref& b)
{
  const mpf_ptr x = ConstantOf(a);
  const mpf_ptr y = ConstantOf(b);
  if (x != nullptr && y != nullptr) {
    Mpf folded;
    FindBinaryOperator(type)->apply(folded, x, y);
    return Ref(new Number(folded));
  }
  if (!Expr::Global->_SIMPLIFYSMALL || (x == nullptr && y == nullptr)) return std::nullopt;
  return Shortened(type, a, x, b, y);
}

}  // namespace varno
