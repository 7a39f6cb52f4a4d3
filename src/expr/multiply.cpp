#include "expr/multiply.h"

#include "config/global_data.h"

namespace varno {

void Multiply::GetDY(int k, mpf_t& out)
{
  // term k = sum over j = 0..k of a[k-j] b[j], added in this order
  Mpf a, b;
  mpf_set(out, Global->_ZERO);
  for (int j = 0; j <= k; ++j) {
    left->GetTerm(k - j, a);
    right->GetTerm(j, b);
    mpf_mul(a, a, b);
    mpf_add(out, out, a);
  }
}

void Multiply::MakeDerivative()
{
  // (a b)' = a' b + a b', with a' built first, hence the braces
  derivative = Ref{kPlus, Ref(kMultiply, left->Derivative(), right),
                   Ref(kMultiply, left, right->Derivative())};
}

void Multiply::GetInitValue(mpf_t& out)
{
  // Unlike the other operations, right before left: functions number their equations in this order.
  Mpf a, b;
  right->InitValue(b);
  left->InitValue(a);
  operation.apply(out, b, a);
}

}  // namespace varno
