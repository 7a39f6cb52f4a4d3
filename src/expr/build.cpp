// The constructors of Expr::Ref that build nodes: the only places where operator and function nodes
// are made, so that constants fold and simple shapes simplify everywhere alike.

#include <optional>
#include <string>

#include "config/global_data.h"
#include "expr/bin_op.h"
#include "expr/divide.h"
#include "expr/expr.h"
#include "expr/function.h"
#include "expr/multiply.h"
#include "expr/number.h"
#include "expr/sum.h"
#include "expr/un_op.h"
#include "sys/messages.h"

namespace varno {

namespace {

using Ref = Expr::Ref;

/// The constant of a Number; null for any other node.
mpf_ptr ConstantOf(const Ref& a)
{
  return a->Type() == kNumber ? static_cast<Number&>(*a).Constant() : nullptr;
}

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

/// Built directly: the operand is never a number where a shortcut needs it.
Ref Negated(const Ref& a)
{
  return Ref(new UnMinus(a));
}

/// A factor near 1 or -1 leaves the other operand, with the factor's sign.
Ref WithSignOf(mpf_srcptr factor, const Ref& a)
{
  return mpf_sgn(factor) < 0 ? Negated(a) : a;
}

/// The simpler expression for an operation with one constant operand near 0 or 1, where there is
/// one. x and y are the constants of a and b; one of them is null.
std::optional<Ref> Simplified(ExprType type, const Ref& a, mpf_srcptr x, const Ref& b, mpf_srcptr y)
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

Expr* MakeBinary(ExprType type, const Ref& a, const Ref& b)
{
  switch (type) {
    case kPlus:
      return new Plus(a, b);
    case kMinus:
      return new Minus(a, b);
    case kMultiply:
      return new Multiply(a, b);
    default:
      return new Divide(a, b);
  }
}

}  // namespace

Expr::Ref::Ref(ExprType type, const Ref& a) : Ref()
{
  const ElementaryFunction* const function = FindElementaryFunction(type);
  if (type != kUnMinus && function == nullptr) {
    // The two messages about kinds are in two languages, and people may search for either.
    Fail("Expr::Ref::Ref(ExprType, const Expr::Ref&): neznamy typ unarni operace (" +
         std::to_string(type) + ")");
  }
  if (const mpf_ptr x = ConstantOf(a)) {
    Mpf folded;
    if (type == kUnMinus) {
      mpf_neg(folded, x);
    } else {
      function->evaluate(folded, x);
    }
    *this = Ref(new Number(folded));
  } else {
    *this = type == kUnMinus ? Negated(a) : Ref(function->makeNode(a));
  }
}

Expr::Ref::Ref(ExprType type, const Ref& a, const Ref& b) : Ref()
{
  const BinaryOperator* const operation = FindBinaryOperator(type);
  if (operation == nullptr) {
    Fail(
        "Expr::Ref::Ref(ExprType, const Expr::Ref&, const Expr::Ref&): unknown binary operation (" +
        std::to_string(type) + ")");
  }
  const mpf_ptr x = ConstantOf(a);
  const mpf_ptr y = ConstantOf(b);
  if (x != nullptr && y != nullptr) {
    Mpf folded;
    operation->apply(folded, x, y);
    *this = Ref(new Number(folded));
    return;
  }
  if (Global->_SIMPLIFYSMALL && (x != nullptr || y != nullptr)) {
    if (const std::optional<Ref> simpler = Simplified(type, a, x, b, y)) {
      *this = *simpler;
      return;
    }
  }
  *this = Ref(MakeBinary(type, a, b));
}

}  // namespace varno
