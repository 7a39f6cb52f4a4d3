#include "varno/expr/bin_op.h"

#include <ostream>
#include <utility>

#include "varno/expr/simplification.h"
#include "varno/sys/stack_guard.h"

namespace varno {

BinOp::BinOp(ExprType type, Ref a, Ref b)
    : Expr(type, true),
      operation(*FindBinaryOperator(type)),
      left(std::move(a)),
      right(std::move(b))
{}

void BinOp::Result(mpf_t& out, bool)
{
  const mpf_srcptr a = left->Value();
  const mpf_srcptr b = right->Value();
  operation.apply(out, a, b);
}

void BinOp::GetInitValue(mpf_t& out)
{
  Mpf a, b;
  left->InitValue(a);
  right->InitValue(b);
  operation.apply(out, a, b);
}

Expr::Ref BinOp::ConvertExpr()
{
  // The right operand goes first: the order numbers the temporary equations.
  const Ref b = right->Convert();
  const Ref a = left->Convert();
  // A node whose operands stand for themselves does so, too, unless it simplifies. A copy would be
  // the same expression, and functions nested n deep would copy one another's derivatives n times.
  if (a == left && b == right && !Simplified(Type(), a, b)) return Ref(this);
  return Ref(Type(), a, b);
}

void BinOp::Print(std::ostream& out) const
{
  CheckStack();
  out << '(';
  left->Print(out);
  out << ' ' << operation.symbol << ' ';
  right->Print(out);
  out << ')';
}

}  // namespace varno
