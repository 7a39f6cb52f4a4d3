#include "varno/expr/sum.h"

namespace varno {

void Plus::GetDY(int k, mpf_t& out)
{
  const mpf_srcptr a = left->Term(k);
  const mpf_srcptr b = right->Term(k);
  mpf_add(out, a, b);
}

// Braces, unlike parentheses, have the left operand's derivative built first: a message about an
// algebraic loop then names the same variable whatever the compiler.

void Plus::MakeDerivative()
{
  derivative = Ref{kPlus, left->Derivative(), right->Derivative()};
}

void Minus::GetDY(int k, mpf_t& out)
{
  const mpf_srcptr a = left->Term(k);
  const mpf_srcptr b = right->Term(k);
  mpf_sub(out, a, b);
}

void Minus::MakeDerivative()
{
  derivative = Ref{kMinus, left->Derivative(), right->Derivative()};
}

}  // namespace varno
