#include "varno/expr/un_op.h"

#include <ostream>

#include "varno/sys/messages.h"
#include "varno/sys/stack_guard.h"

namespace varno {

void UnOp::GetDY(int, mpf_t&)
{
  Fail("virtual void UnOp::GetDY(int, __mpf_struct (&)[1]) called!");
}

void UnOp::Result(mpf_t&, bool)
{
  Fail("virtual void UnOp::Result(__mpf_struct (&)[1], bool) called!");
}

void UnMinus::GetDY(int k, mpf_t& out)
{
  mpf_neg(out, operand->Term(k));
}

void UnMinus::Result(mpf_t& out, bool)
{
  mpf_neg(out, operand->Value());
}

void UnMinus::MakeDerivative()
{
  derivative = Ref(kUnMinus, operand->Derivative());
}

void UnMinus::GetInitValue(mpf_t& out)
{
  operand->InitValue(out);
  mpf_neg(out, out);
}

Expr::Ref UnMinus::ConvertExpr()
{
  const Ref a = operand->Convert();
  if (a == operand) return Ref(this);  // as BinOp::ConvertExpr does
  return Ref(kUnMinus, a);
}

void UnMinus::Print(std::ostream& out) const
{
  CheckStack();
  out << "(-";
  operand->Print(out);
  out << ')';
}

}  // namespace varno
