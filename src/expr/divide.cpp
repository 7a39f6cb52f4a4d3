#include "expr/divide.h"

#include "config/global_data.h"

namespace varno {

void Divide::GetDY(int k, mpf_t& out)
{
  // term k = (a[k] - sum over j = 0..k-1 of c[j] b[k-j]) / b[0], c[j] being this node's own terms
  Mpf sum(Global->_ZERO), b, c;
  for (int j = 0; j < k; ++j) {
    GetTerm(j, c);
    right->GetTerm(k - j, b);
    mpf_mul(c, c, b);
    mpf_add(sum, sum, c);
  }
  left->GetTerm(k, out);
  mpf_sub(out, out, sum);
  right->GetTerm(0, b);
  mpf_div(out, out, b);
}

void Divide::MakeDerivative()
{
  // (a / b)' = (a' b - a b') / (b b), with a' built first, hence the braces
  const Ref numerator{kMinus, Ref(kMultiply, left->Derivative(), right),
                      Ref(kMultiply, left, right->Derivative())};
  derivative = Ref(kDivide, numerator, Ref(kMultiply, right, right));
}

}  // namespace varno
